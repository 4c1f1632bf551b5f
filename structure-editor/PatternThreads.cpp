#include "PatternThreads.h"

#include <algorithm>

namespace name_pattern {

namespace {
constexpr std::size_t entry = 100; // of a map, with what it stands for
}

Threads::Index Threads::thread(Index place, Index open) {
    if (open == noneOpen)
        return place;
    const auto [found, isNew] = m_threadNumbers.try_emplace(Thread{place, open}, end());
    if (isNew) {
        m_threads.push_back(found->first);
        m_memory += entry;
    }
    return found->second;
}

Threads::Index Threads::numberOf(std::vector<Open> set) {
    if (set.empty())
        return noneOpen;
    std::sort(set.begin(), set.end());
    set.erase(std::unique(set.begin(), set.end()), set.end());
    const auto [found, isNew] =
        m_openNumbers.try_emplace(std::move(set), static_cast<Index>(m_openSets.size()));
    if (isNew) {
        m_openSets.push_back(found->first);
        m_memory += entry + 2 * found->first.size() * sizeof(Open);
    }
    return found->second;
}

} // namespace name_pattern
