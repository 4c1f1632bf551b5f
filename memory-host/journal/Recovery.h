// Bringing back what a journal holds: its files are opened again, and then changed as they were.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace memory_host {

class HOST_EXPORT JournalRecovery {
public:
    /// Reads the journal in a folder; on any thread. Throws FileError; std::bad_alloc if there is
    /// not even memory for its line.
    explicit JournalRecovery(const std::string& folder);
    JournalRecovery(const JournalRecovery&) = delete;
    JournalRecovery& operator=(const JournalRecovery&) = delete;
    ~JournalRecovery();

    /// What was open: the paths of files, each once, and the names of entries that are in none.
    std::vector<std::string> entries() const;

    /// How many files are to be opened again.
    std::size_t fileCount() const;
    /// The file as the user knows it, and where its content is now: there, or in the journal. Empty
    /// if someone changed the file, and the journal has none.
    std::string path(std::size_t file) const;
    std::string contentPath(std::size_t file) const;
    /// Keeps that a file was opened last.
    void setOpened(std::size_t file);

    struct Outcome {
        bool isDone = false;
        bool isWhole = false;           ///< and nothing is missing
        bool hasEntries = false;        ///< and something of what was open is there
        std::vector<std::string> lines; ///< what could not be brought back, and what to know
    };
    /// Changes what was opened, as one change that can be taken back; on the GUI thread. Files that
    /// were not opened are missing. When it is not done, nothing has changed.
    Outcome apply();

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace memory_host
