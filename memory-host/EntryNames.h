// Names of new entries: no two top-level items that are read from files are called the same.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace memory_host {

/// The names that are taken: those of the top-level items, and those that it has given.
class EntryNames {
public:
    EntryNames();

    /// The names of an entry, of which each model is a top-level item: `name` with each of
    /// `endings`. If one of these is taken, all of them get the first number from 2 on with which
    /// none is: "1ubq-2", or "1d3z-2.1" and "1d3z-2.2". A number after a hyphen means itself in a
    /// name pattern, as a bracket would not.
    std::vector<std::string> take(const std::string& name, const std::vector<std::string>& endings);

private:
    std::unordered_set<std::string> m_taken;
};

} // namespace memory_host
