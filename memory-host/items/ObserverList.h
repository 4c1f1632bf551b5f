// A list of observers that may come and go while they are told.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace memory_host {

template <class Observer> class ObserverList {
public:
    void add(Observer* observer) { m_all.push_back(observer); }
    void remove(const Observer* observer) noexcept {
        const auto found = std::find(m_all.begin(), m_all.end(), observer);
        if (found == m_all.end())
            return;
        if (m_depth > 0)
            *found = nullptr;
        else
            m_all.erase(found);
    }
    /// Calls `tell(observer)`, which must not throw, for those that are there now, in the order in
    /// which they came. Ends early when it returns false.
    template <class Tell> void tellEach(const Tell& tell) noexcept {
        ++m_depth;
        for (std::size_t i = 0, count = m_all.size(); i != count; ++i)
            if (Observer* const observer = m_all[i]; observer && !tell(*observer))
                break;
        if (--m_depth == 0)
            std::erase(m_all, nullptr);
    }
    /// How many calls of tellEach() are within each other now.
    int depth() const { return m_depth; }
    void appendTo(std::vector<const void*>& addresses) const {
        for (const Observer* observer : m_all)
            if (observer)
                addresses.push_back(observer);
    }

private:
    std::vector<Observer*> m_all; ///< null: left while others were told
    int m_depth = 0;
};

/// Bounds the recursion of observers that answer what they are told with more of it.
inline constexpr int deepestTelling = 8;

} // namespace memory_host
