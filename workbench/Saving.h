// Saving entries as the user meets it: which file, the questions, a progress window, and a line
// that says what was saved.
#pragma once

#include "SaveDialogs.h"

#include "files/Saving.h"

#include <QString>

#include <functional>
#include <vector>

class QWidget;

namespace workbench {

/// Whether saving writes anything of a top-level item.
bool canBeSaved(const TAVIK::Compound* entry);
/// Whether something of a top-level item's file is not saved, or there is no file yet.
bool isUnsaved(TAVIK::Compound* entry);
/// The top-level item with this identifier; null where it is gone.
TAVIK::Compound* entryWith(unsigned int id);
/// The top-level items with atoms or bonds that are not as in their file, or are in none.
std::vector<TAVIK::Compound*> unsavedEntries();

class Saving {
public:
    /// Hears of each file that was saved.
    using Saved = std::function<void(const QString& file)>;

    /// The dialogs belong to `window`, which outlives this.
    Saving(QWidget* window, Saved saved);

    // These return whether everything was saved. What goes wrong is in the log, and what the user
    // cancels leaves the old file as it was. All of them may run an event loop.

    /// Saves the file of an entry, with all entries that are in it; asks for a file where there is
    /// none yet, or where its format is not written.
    bool save(TAVIK::Compound* entry);
    bool saveAs(TAVIK::Compound* entry);
    /// The selected atoms of all entries, as one file.
    bool saveSelectionAs();
    /// Each file with unsaved changes.
    bool saveAll();
    /// Whether the unsaved changes of these entries may be forgotten: there are none, they were
    /// saved, or the user does not want them. Asks once for all.
    bool mayForget(const std::vector<TAVIK::Compound*>& entries);

private:
    /// Top-level items by their identifiers, as they may be gone when a dialog is closed.
    using Ids = std::vector<unsigned int>;
    enum class Outcome { Saved, NotSaved, ChangedByOthers, LosesClosed };

    static Ids idsOf(const std::vector<TAVIK::Compound*>& entries);
    static std::vector<TAVIK::Compound*> entriesOf(const Ids& ids);

    bool saveFiles(const std::vector<TAVIK::Compound*>& entries);
    bool askAndWrite(const Ids& ids, const QString& title, const QString& proposed, Kept kept,
                     memory_host::SaveOptions options);
    bool write(const Ids& ids, const SaveTarget& target, memory_host::SaveOptions options);
    Outcome writeOnce(const std::vector<TAVIK::Compound*>& entries, const QString& file,
                      const memory_host::SaveOptions& options);

    QWidget* m_window;
    Saved m_saved;
};

} // namespace workbench
