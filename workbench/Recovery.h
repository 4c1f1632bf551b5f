// Bringing back, when the program starts, what an earlier run left in its journal.
#pragma once

#include "journal/JournalFolder.h"

#include <QString>

#include <string>
#include <vector>

class QWidget;

namespace memory_host {
class JournalRecovery;
}

namespace workbench {

class CrashJournal;
class Opening;

class Recovery {
public:
    enum class Answer { Open, Discard, Later };

    Recovery(QWidget* window, Opening& opening) : m_window(window), m_opening(opening) {}

    /// Asks what to do with each journal in the folder `all` whose program has ended, opens what
    /// the user wants, and hands its journal over to `journal`. What cannot be brought back is in
    /// the log. Returns a line that says what was opened, empty for nothing. Runs event loops.
    QString run(const std::string& all, CrashJournal& journal);

private:
    /// As when the user opens them: what is not opened, as that was cancelled, is missing.
    void openFiles(memory_host::JournalRecovery& recovery);
    QString open(memory_host::JournalFolder folder, CrashJournal& journal);

    QWidget* m_window; ///< may be null
    Opening& m_opening;
};

} // namespace workbench
