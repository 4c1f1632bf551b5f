// An array that grows without being moved: what a million items add to it costs the same for each.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace view {

template <class T> class InParts {
public:
    void push_back(const T& value) {
        if (m_parts.empty() || m_parts.back().size() == part) {
            m_parts.emplace_back();
            m_parts.back().reserve(part);
        }
        m_parts.back().push_back(value);
        ++m_size;
    }
    void pop_back() {
        m_parts.back().pop_back();
        --m_size;
        if (m_parts.back().empty())
            m_parts.pop_back();
    }
    T& back() { return m_parts.back().back(); }
    bool empty() const { return m_size == 0; }
    std::size_t size() const { return m_size; }

    /// All of it as one array of that very size; empty from then on.
    std::vector<T> join() {
        std::vector<T> all;
        all.reserve(m_size);
        for (std::vector<T>& values : m_parts) {
            all.insert(all.end(), values.begin(), values.end());
            values = {};
        }
        m_parts.clear();
        m_size = 0;
        return all;
    }

private:
    static constexpr std::size_t part = 1 << 14;

    std::vector<std::vector<T>> m_parts;
    std::size_t m_size = 0;
};

} // namespace view
