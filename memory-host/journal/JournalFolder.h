// Where journals are: below one folder of the user's, a folder for each program that runs, with a
// lock that the system lets go when the program ends, however it does.
#pragma once

#include "Gathering.h"
#include "HostExport.h"

#include <set>
#include <string>
#include <vector>

namespace memory_host {

/// A folder and its lock, which are this program's as long as this lives. The files stay.
class HOST_EXPORT JournalFolder {
public:
    /// Makes a folder below `all`, which is made, too. Throws SaveError.
    static JournalFolder make(const std::string& all);
    /// The folders with a journal of programs that ended without removing it, the oldest first;
    /// others do not see them meanwhile. Removes those without a journal. Never throws: what cannot
    /// be looked at is left out.
    static std::vector<JournalFolder> abandoned(const std::string& all) noexcept;

    JournalFolder(JournalFolder&& other) noexcept;
    JournalFolder& operator=(JournalFolder&& other) noexcept;
    ~JournalFolder();

    const std::string& path() const { return m_path; }
    /// Whether nobody has removed it.
    bool isThere() const;
    /// When the journal was written, in seconds since 1970.
    std::int64_t time() const { return m_time; }

    /// Writes what was gathered, on any thread, but one at a time. Where reading the files gives
    /// all there is, there is no journal. What was written before stays until the new one is
    /// complete on disk. Throws SaveError, std::bad_alloc.
    void write(JournalState& state);
    /// The files beside the journal that are complete.
    const std::set<std::string>& written() const { return m_written; }

    /// Removes the folder; the lock ends.
    void remove() noexcept;

private:
    JournalFolder() = default;

    std::string journal() const { return m_path + "/journal"; }
    void removeUnneeded(const std::set<std::string>& needed);

    std::string m_path;
    int m_lock = -1; ///< an open file
    std::int64_t m_time = 0;
    std::set<std::string> m_written;
};

/// The journal in a folder.
std::string journalIn(const std::string& folder);

} // namespace memory_host
