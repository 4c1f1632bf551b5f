// A log that grows without moving what it holds, and needs no large block of memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace memory_host {

/// A sequence of values in chunks of a page, appended to at its end. Values are trivial.
template <class Value> class Chunks {
public:
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    /// Bytes of memory.
    std::size_t bytes() const { return m_room * sizeof(Value); }
    Value& operator[](std::size_t i) { return m_chunks[i / each][i % each]; }
    const Value& operator[](std::size_t i) const { return m_chunks[i / each][i % each]; }
    Value& back() { return (*this)[m_size - 1]; }

    /// Whether there is room for that many more values.
    bool hasRoomFor(std::size_t more) const { return m_room - m_size >= more; }
    /// Makes room for that many more values. Throws std::bad_alloc; there is then as much room as
    /// before, at least.
    void reserve(std::size_t more) {
        const std::size_t needed = (m_size + more + each - 1) / each;
        for (; m_chunks.size() < needed; m_room += each)
            m_chunks.push_back(std::make_unique_for_overwrite<Value[]>(each)); // NOLINT
    }
    /// Frees what is unused, as nothing follows. Throws std::bad_alloc, and changes nothing then.
    void shrink() {
        const std::size_t whole = m_size / each;
        const std::size_t rest = m_size % each;
        if (rest != 0) {
            auto last = std::make_unique_for_overwrite<Value[]>(rest); // NOLINT
            std::copy_n(m_chunks[whole].get(), rest, last.get());
            m_chunks[whole] = std::move(last);
        }
        m_chunks.resize(whole + (rest != 0 ? 1 : 0));
        m_room = m_size;
    }
    /// There must be room.
    void push_back(const Value& value) {
        if (m_size % each == 0)
            m_next = m_chunks[m_size / each].get();
        *m_next++ = value;
        ++m_size;
    }

private:
    static constexpr std::size_t each = 4096 / sizeof(Value);

    std::vector<std::unique_ptr<Value[]>> m_chunks; // NOLINT: an array without its size
    Value* m_next = nullptr;                        ///< in the last chunk, unless that is full
    std::size_t m_size = 0;
    std::size_t m_room = 0; ///< values that the chunks have room for
};

} // namespace memory_host
