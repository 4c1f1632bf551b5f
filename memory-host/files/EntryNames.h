// Names of new entries: no two top-level items that are read from files are called the same.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace memory_host {

/// The names in use: those of the top-level items, and those that take() has returned.
class HOST_EXPORT EntryNames {
public:
    EntryNames();
    /// Others are in use.
    explicit EntryNames(const std::unordered_set<std::string>& names);

    /// The names of an entry, of which each model is a top-level item: `name` with each of
    /// `endings`, which are empty, or a point and what has none. If one of these is taken, all of
    /// them get the first number from 2 on with which none is, and that comes after those that this
    /// object has given to the name: "1ubq-2", or "1d3z-2.1" and "1d3z-2.2". A number after a
    /// hyphen means itself in a name pattern, as a bracket would not.
    std::vector<std::string> take(const std::string& name, const std::vector<std::string>& endings);
    /// Number of look-ups, which is the cost of all names.
    std::size_t lookUps() const { return m_lookUps; }

private:
    void setTaken(const std::string& name);
    bool isTaken(const std::unordered_set<std::string>& names, const std::string& name) {
        ++m_lookUps;
        return names.contains(name);
    }

    std::unordered_set<std::string> m_taken;
    std::unordered_set<std::string> m_takenStems; ///< for names with a point: the part before it
    /// By name: the next number to try. Each number is tried once, however many entries have the
    /// name.
    std::unordered_map<std::string, std::size_t> m_next;
    std::size_t m_lookUps = 0;
};

} // namespace memory_host
