// The in-memory host, made fit for the contract's tests.
#include "HostUnderTest.h"

#include "DataMaker.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "services/DataFolder.h"
#include "services/Log.h"
#include "services/Settings.h"

#include <QFile>
#include <QTemporaryDir>

namespace host_under_test {

void start(const QString& dataFolder) {
    memory_host::setLogFile(QString());
    memory_host::setDataFolder(dataFolder);
}

void hearLog(std::function<void(const std::string&)> hear) {
    memory_host::setLogSink(std::move(hear));
}

void setOnlySetting(const std::string& section, const std::string& key, const std::string& value) {
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("settings.ini")));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    file.write(("[" + section + "]\n" + key + " = " + value + "\n").c_str());
    file.close();
    memory_host::setSettingsFile(file.fileName());
    memory_host::setDefaultSettingsFile(QString());
}

TAVIK::Compound* addAtom(TAVIK::Compound* parent, const AtomValues& values) {
    return memory_host::addAtom(parent, {values.name, values.type, values.position,
                                         values.temperature, values.alternative, values.partial});
}

TAVIK::Compound* addBond(TAVIK::Compound* parent, TAVIK::Compound* a, TAVIK::Compound* b) {
    return memory_host::addBond(parent, a, b);
}

TAVIK::Grid* addGrid(TAVIK::Compound* parent, const std::string& name, const GridShape& shape) {
    TAVIK::GridValues values;
    values.points = shape.points;
    for (const std::size_t axis : {0, 1, 2}) {
        values.origin[axis] = shape.origin[axis];
        for (const std::size_t k : {0, 1, 2})
            values.steps[axis][k] = shape.steps[axis][k];
    }
    const auto count = static_cast<std::size_t>(shape.points[0]) *
                       static_cast<std::size_t>(shape.points[1]) *
                       static_cast<std::size_t>(shape.points[2]);
    values.values.resize(count);
    return TAVIK::DataMaker::makeGrid(parent, name, std::move(values));
}

std::vector<TAVIK::Compound*> openFile(const std::string& path) {
    return memory_host::openFile(path).items;
}

LockedSpace::LockedSpace() : m_lock(std::make_shared<memory_host::SpaceLock>()) {}
LockedSpace::~LockedSpace() = default;

std::vector<std::string> faults() {
    return memory_host::checkInvariants();
}

} // namespace host_under_test
