// Saves entries for real, as the workbench does, and reads what was saved: by the host when the
// file is opened, and by gemmi at once.
#include "Driver.h"
#include "SavedRows.h"

#include "DataLines.h"
#include "ItemOrigin.h"
#include "Kinds.h"
#include "Saving.h"
#include "Space.h"
#include "TestSupport.h"

#include <QFile>

#include <algorithm>
#include <unordered_set>

namespace random_use {

using memory_host::SaveError;
using memory_host::SaveOptions;
using TAVIK::Compound;

namespace {

using Entries = std::vector<Compound*>;

Entries topLevel() {
    Compound* const space = TAVIK::Space::instance();
    return {space->ChildBegin(), space->ChildEnd()};
}

bool isMap(const Compound* entry) {
    return dynamic_cast<const TAVIK::Grid*>(entry);
}

QString reasonOf(const SaveError& error) {
    if (error.reason() == SaveError::Reason::ChangedByOthers)
        return QStringLiteral("changed by others");
    if (error.reason() == SaveError::Reason::LosesClosed)
        return QStringLiteral("loses closed entries");
    const std::string line = error.what();
    for (const char* const part : refusedTexts)
        if (line.find(part) != std::string::npos)
            return QString::fromLatin1(part);
    return QString::fromStdString(line);
}

// Two models of a structure with alternative locations.
void writeModels(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("%s cannot be written", qPrintable(path));
    for (int model = 1; model != 3; ++model) {
        file.write("MODEL     " + QByteArray::number(model).rightJustified(4) + '\n');
        file.write(
            "ATOM      1  N   SER A   5       1.000   2.000   3.000  1.00 11.50           N  \n"
            "ATOM      2  CA  SER A   5       2.458   2.000   3.000  1.00 12.25           C  \n"
            "ATOM      3  CB ASER A   5       3.009   3.420   3.000  0.60 13.00           C  \n"
            "ATOM      4  CB BSER A   5       3.009   0.580   3.000  0.40 13.00           C  \n"
            "HETATM    5 CU    CU B  -1A     -9.000  -9.000  -9.000  1.00 20.00          CU2+\n"
            "ENDMDL\n");
    }
    file.write("END\n");
}

} // namespace

std::string Driver::pathOf(const std::string& name) const {
    return m_folder.filePath(QString::fromStdString(name)).toStdString();
}

// Of the files of real structures the session has copies, which it may change.
void Driver::fetch(const std::string& name) const {
    const QString to = QString::fromStdString(pathOf(name));
    if (name == missingFile || QFile::exists(to))
        return;
    const QString file = QString::fromStdString(name);
    if (name == modelsFile)
        return writeModels(to);
    QFile::copy(name == sampleFile ? QStringLiteral(SOURCE_DIR "/data/") + file
                                   : test_support::TestCase::structure(file),
                to);
    QFile::setPermissions(to, QFile::ReadOwner | QFile::WriteOwner);
}

void Driver::enterFile(const std::string& name, unsigned int first) {
    const Entries all = topLevel();
    const Entries opened(all.begin() + first, all.end());
    Items entered;
    for (const Compound* entry : opened)
        entered.push_back(m_model.host.find(entry->GetId()));
    m_model.files.opened(name, entered);
    if (const FileContent* const content = m_model.files.at(name))
        m_said.messages << differenceFrom(*content, rowsOf(opened));
    m_said.messages << m_savedBonds.differenceFrom(name, opened);
}

void Driver::saveAs(const std::vector<Compound*>& entries, const std::string& path,
                    SaveOptions options, const Step& step) {
    for (;;) {
        try {
            const std::vector<std::string> lines = memory_host::saveFile(entries, path, options);
            const std::string name = nameOf(path).toStdString();
            if (options.onlySelected || options.onlyActiveModels)
                m_savedBonds.forget(name);
            else
                m_savedBonds.saved(name, entries, lines);
            m_said.asked << QStringLiteral("saved as ") + nameOf(path);
            m_saved.push_back(path);
            return;
        } catch (const SaveError& error) {
            m_said.asked << reasonOf(error);
            if (error.reason() == SaveError::Reason::Other || step.answer == Answer::Cancel)
                return;
            (error.reason() == SaveError::Reason::ChangedByOthers ? options.replaceChanged
                                                                  : options.dropClosed) = true;
        }
    }
}

QString Driver::nameOf(const std::string& path) const {
    return QString::fromStdString(path).mid(m_folder.path().size() + 1);
}

std::string Driver::fileOf(const Compound* entry) const {
    const std::string path = TAVIK::OriginOf(entry).toStdString();
    return path.empty() ? path : nameOf(path).toStdString();
}

void Driver::save(const Step& step) {
    const Entries all = topLevel();
    const auto origin = [](const Compound* entry) { return TAVIK::OriginOf(entry).toStdString(); };
    const Saving what = savingOf(step);
    if (what == Saving::All) {
        std::unordered_set<const Compound*> seen;
        for (Compound* const entry : workbench::unsavedEntries()) {
            if (seen.contains(entry) || origin(entry).empty() || isMap(entry))
                continue;
            const Entries together = memory_host::entriesOfFile(entry);
            seen.insert(together.begin(), together.end());
            saveAs(together, origin(entry), {}, step);
        }
    } else if (what == Saving::SelectionAs) {
        Entries entries;
        std::copy_if(all.begin(), all.end(), std::back_inserter(entries), [](Compound* entry) {
            return entry->HasSelected() && workbench::canBeSaved(entry) && !isMap(entry);
        });
        SaveOptions options;
        options.onlySelected = true;
        if (!entries.empty())
            saveAs(entries, pathOf(step.name), options, step);
    } else if (const int at = countedRound(step.target, all.size()); at >= 0) {
        Compound* const entry = all[std::size_t(at)];
        if (!workbench::canBeSaved(entry))
            return;
        const bool asks = what != Saving::File || origin(entry).empty() || isMap(entry);
        SaveOptions options;
        options.onlyActiveModels = what == Saving::ShownAs;
        saveAs(memory_host::entriesOfFile(entry), asks ? pathOf(step.name) : origin(entry), options,
               step);
    }
}

void Driver::readSaved() {
    for (const std::string& path : std::exchange(m_saved, {}))
        if (const FileContent* const content = m_model.files.at(nameOf(path).toStdString()))
            m_said.messages << differenceByGemmi(*content, path);
}

} // namespace random_use
