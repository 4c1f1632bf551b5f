#include "Saving.h"

#include "ItemOrigin.h"
#include "Kinds.h"
#include "Logger.h"
#include "Messages.h"
#include "Progress.h"
#include "Space.h"
#include "items/DataVersion.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace workbench {

namespace {

using memory_host::SaveOptions;
using TAVIK::Compound;

QString say(const char* text) {
    return QCoreApplication::translate("workbench::Saving", text);
}

QString nameOf(const Compound* entry) {
    return QString::fromLatin1(entry->GetName().c_str());
}

Kept keptOf(const Compound* entry) {
    return dynamic_cast<const TAVIK::Grid*>(entry) ? Kept::Map : Kept::Structure;
}

/// The file's name where there is one, as two entries may be of one file.
QString shownName(const Compound* entry) {
    const QString file = TAVIK::OriginOf(entry);
    return file.isEmpty() ? nameOf(entry) : QFileInfo(file).fileName();
}

/// What the user is told of: "1cbs", "20 entries".
QString subjectOf(const std::vector<Compound*>& entries, const SaveOptions& options) {
    if (options.onlySelected)
        return say("the selection");
    return entries.size() == 1 ? nameOf(entries.front()) : say("%1 entries").arg(entries.size());
}

QString savedLine(const std::vector<Compound*>& entries, const QString& file,
                  const SaveOptions& options, std::size_t atoms) {
    static const QLocale grouped(QLocale::English, QLocale::UnitedStates);
    QString line =
        say("Saved %1 as %2").arg(subjectOf(entries, options), QFileInfo(file).fileName());
    if (atoms == 1)
        line += say(": 1 atom");
    else if (atoms)
        line += say(": %1 atoms").arg(grouped.toString(static_cast<qulonglong>(atoms)));
    return line;
}

template <class Wanted> std::vector<Compound*> entriesThat(const Wanted& wanted) {
    std::vector<Compound*> entries;
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::copy_if(space->ChildBegin(), space->ChildEnd(), std::back_inserter(entries),
                 [&wanted](Compound* entry) { return entry && wanted(entry); });
    return entries;
}

} // namespace

bool canBeSaved(const Compound* entry) {
    if (!entry)
        return false;
    // All of an entry may have been deleted: that is a change, too.
    return keptOf(entry) == Kept::Map || entry->HasChildren() || memory_host::hasUnsavedData(entry);
}

bool isUnsaved(Compound* entry) {
    return TAVIK::OriginOf(entry).isEmpty() ||
           std::ranges::any_of(memory_host::entriesOfFile(entry), memory_host::isUnsaved);
}

Compound* entryWith(unsigned int id) {
    const std::vector<Compound*> found =
        entriesThat([id](const Compound* entry) { return entry->GetId() == id; });
    return found.empty() ? nullptr : found.front();
}

std::vector<Compound*> unsavedEntries() {
    return entriesThat(
        [](Compound* entry) { return memory_host::isUnsaved(entry) && canBeSaved(entry); });
}

Saving::Saving(QWidget* window, Saved saved) : m_window(window), m_saved(std::move(saved)) {}

Saving::Ids Saving::idsOf(const std::vector<Compound*>& entries) {
    Ids ids;
    for (const Compound* entry : entries)
        ids.push_back(entry->GetId());
    return ids;
}

std::vector<Compound*> Saving::entriesOf(const Ids& ids) {
    const std::unordered_set<unsigned int> wanted(ids.begin(), ids.end());
    return entriesThat(
        [&wanted](const Compound* entry) { return wanted.contains(entry->GetId()); });
}

bool Saving::save(Compound* entry) {
    const QString file = TAVIK::OriginOf(entry);
    if (file.isEmpty() || keptOf(entry) == Kept::Map || !isSavable(file, Kept::Structure))
        return saveAs(entry);
    return write(idsOf(memory_host::entriesOfFile(entry)), {file, false}, {});
}

bool Saving::saveAs(Compound* entry) {
    const QString file = TAVIK::OriginOf(entry);
    return askAndWrite(idsOf(memory_host::entriesOfFile(entry)),
                       say("Save %1 as").arg(nameOf(entry)), file.isEmpty() ? nameOf(entry) : file,
                       keptOf(entry), {});
}

bool Saving::saveSelectionAs() {
    const std::vector<Compound*> entries = entriesThat([](Compound* entry) {
        return entry->HasSelected() && canBeSaved(entry) && keptOf(entry) == Kept::Structure;
    });
    if (entries.empty()) {
        Messages::Show(say("Nothing is selected that could be saved."));
        return false;
    }
    SaveOptions options;
    options.onlySelected = true;
    const QString file = TAVIK::OriginOf(entries.front());
    const QString name = say("%1 selection").arg(nameOf(entries.front()));
    return askAndWrite(idsOf(entries), say("Save the selection as"),
                       file.isEmpty() ? name : QFileInfo(file).path() + u'/' + name,
                       Kept::Structure, options);
}

bool Saving::saveAll() {
    return saveFiles(unsavedEntries());
}

bool Saving::mayForget(const std::vector<Compound*>& entries) {
    std::vector<Compound*> unsaved;
    QStringList names;
    for (Compound* const entry : entries)
        if (memory_host::isUnsaved(entry) && canBeSaved(entry)) {
            unsaved.push_back(entry);
            names << shownName(entry);
        }
    if (unsaved.empty())
        return true;
    names.removeDuplicates();
    const Ids ids = idsOf(unsaved);
    switch (askForUnsaved(m_window, names)) {
    case Unsaved::Save:
        return saveFiles(entriesOf(ids));
    case Unsaved::Discard:
        return true;
    case Unsaved::Cancel:
        break;
    }
    return false;
}

bool Saving::saveFiles(const std::vector<Compound*>& entries) {
    // The first of the entries of each file, with which the others are saved.
    Ids firsts;
    std::unordered_set<const Compound*> seen;
    for (Compound* const entry : entries) {
        if (seen.contains(entry))
            continue;
        firsts.push_back(entry->GetId());
        const std::vector<Compound*> together = memory_host::entriesOfFile(entry);
        seen.insert(together.begin(), together.end());
    }
    bool areSaved = true;
    for (const unsigned int id : firsts)
        if (Compound* const entry = entryWith(id))
            areSaved = save(entry) && areSaved;
    return areSaved;
}

bool Saving::askAndWrite(const Ids& ids, const QString& title, const QString& proposed, Kept kept,
                         SaveOptions options) {
    const std::optional<SaveTarget> target = askForTarget(m_window, title, proposed, kept);
    return target && write(ids, *target, options);
}

bool Saving::write(const Ids& ids, const SaveTarget& target, SaveOptions options) {
    options.onlyActiveModels = target.asShown;
    for (;;) {
        const std::vector<Compound*> entries = entriesOf(ids);
        if (entries.empty()) {
            Messages::Show(say("%1 is not saved: what was to be saved is gone").arg(target.file));
            return false;
        }
        const Outcome outcome = writeOnce(entries, target.file, options);
        if (outcome == Outcome::Saved || outcome == Outcome::NotSaved)
            return outcome == Outcome::Saved;
        const bool isChanged = outcome == Outcome::ChangedByOthers;
        switch (askToReplace(m_window, target.file,
                             isChanged ? Losing::ChangesByOthers : Losing::ClosedEntries)) {
        case Replacing::Replace:
            (isChanged ? options.replaceChanged : options.dropClosed) = true;
            break;
        case Replacing::SaveAs:
            return askAndWrite(ids, say("Save as"), target.file, keptOf(entries.front()), options);
        case Replacing::Cancel:
            return false;
        }
    }
}

Saving::Outcome Saving::writeOnce(const std::vector<Compound*>& entries, const QString& file,
                                  const SaveOptions& options) {
    const std::string path = QFile::encodeName(file).toStdString();
    try {
        const memory_host::SavePlanPtr plan = memory_host::planSaving(entries, path, options);
        std::vector<std::string> losses;
        bool isWritten = false;
        Progress::Run(say("Saving %1").arg(QFileInfo(file).fileName()),
                      [&](ProgressReporter& reporter, const std::stop_token& stop) {
                          losses = memory_host::writePlan(
                              *plan,
                              [&reporter](const std::string& stage, double fraction) {
                                  reporter.report(QString::fromStdString(stage), fraction);
                              },
                              stop);
                          isWritten = true;
                      });
        // Who cancels when the file has just been replaced comes too late.
        if (!isWritten) {
            Messages::Show(say("%1 is not saved").arg(file));
            return Outcome::NotSaved;
        }
        memory_host::markSaved(*plan);
        Messages::Show(savedLine(entries, file, options, memory_host::atomCount(*plan)));
        for (const std::string& loss : losses)
            Logger::Write(loss);
        m_saved(file);
        return Outcome::Saved;
    } catch (const memory_host::SaveError& error) {
        using Reason = memory_host::SaveError::Reason;
        if (error.reason() == Reason::ChangedByOthers)
            return Outcome::ChangedByOthers;
        if (error.reason() == Reason::LosesClosed)
            return Outcome::LosesClosed;
        Logger::Write(error.what());
    } catch (const std::bad_alloc&) {
        Logger::Write(path + ": there is not enough memory to save it");
    }
    return Outcome::NotSaved;
}

} // namespace workbench
