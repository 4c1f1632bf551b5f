// The in-memory host, made fit for the contract's tests.
#include "HostUnderTest.h"

#include "files/Files.h"
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

std::vector<TAVIK::Compound*> openFile(const std::string& path) {
    return memory_host::openFile(path).items;
}

LockedSpace::LockedSpace() : m_lock(std::make_shared<memory_host::SpaceLock>()) {}
LockedSpace::~LockedSpace() = default;

std::vector<std::string> faults() {
    return memory_host::checkInvariants();
}

} // namespace host_under_test
