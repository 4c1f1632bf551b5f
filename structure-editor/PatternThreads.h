// The ways that a match can be on: a place in a program, and the look-aheads that were met before
// it and are not decided yet. Each way has a number; without look-aheads that is the place itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace name_pattern {

class Threads {
public:
    using Index = std::int32_t;

    /// A look-ahead that is not decided yet, and the state of its own automaton.
    struct Open {
        Index lookAhead;
        Index state;
        auto operator<=>(const Open&) const = default;
    };

    /// The number of the empty set of open look-aheads.
    static constexpr Index noneOpen = 0;

    explicit Threads(Index places) : m_places(places), m_openSets(1) {}

    Index thread(Index place, Index open);
    Index place(Index thread) const {
        return thread < m_places ? thread : m_threads[thread - m_places].place;
    }
    Index open(Index thread) const {
        return thread < m_places ? noneOpen : m_threads[thread - m_places].open;
    }

    /// The number of a set, in whatever order it is given.
    Index numberOf(std::vector<Open> set);
    const std::vector<Open>& openSet(Index open) const { return m_openSets[open]; }

    /// One more than the largest number of a thread so far.
    Index end() const { return m_places + static_cast<Index>(m_threads.size()); }
    /// Bytes, about.
    std::size_t memory() const { return m_memory; }

private:
    struct Thread {
        Index place;
        Index open;
        auto operator<=>(const Thread&) const = default;
    };

    Index m_places;
    std::vector<Thread> m_threads;
    std::map<Thread, Index> m_threadNumbers;
    std::vector<std::vector<Open>> m_openSets;
    std::map<std::vector<Open>, Index> m_openNumbers;
    std::size_t m_memory = 0;
};

} // namespace name_pattern
