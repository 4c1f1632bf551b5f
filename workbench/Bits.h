// A set of numbers from 0 to below its size, a bit each.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

class Bits {
public:
    Bits() = default;
    /// None of `size` numbers, or all of them.
    explicit Bits(std::size_t size, bool all = false)
        : m_size(size), m_words((size + 63) / 64, all ? ~std::uint64_t{0} : 0) {
        clearBeyond();
    }

    std::size_t size() const { return m_size; }
    bool has(std::size_t i) const { return m_words[i / 64] >> (i % 64) & 1; }
    void add(std::size_t i) { m_words[i / 64] |= std::uint64_t{1} << (i % 64); }
    /// Adds `begin` up to, not including, `end`.
    void add(std::size_t begin, std::size_t end) {
        for (; begin != end && begin % 64 != 0; ++begin)
            add(begin);
        for (; begin + 64 <= end; begin += 64)
            m_words[begin / 64] = ~std::uint64_t{0};
        for (; begin != end; ++begin)
            add(begin);
    }
    std::size_t count() const {
        std::size_t sum = 0;
        for (const std::uint64_t word : m_words)
            sum += static_cast<std::size_t>(std::popcount(word));
        return sum;
    }
    /// The first of the set that is not below `i`; size() if there is none.
    std::size_t next(std::size_t i) const {
        if (i >= m_size)
            return m_size;
        std::size_t word = i / 64;
        std::uint64_t rest = m_words[word] & ~std::uint64_t{0} << (i % 64);
        while (rest == 0) {
            if (++word == m_words.size())
                return m_size;
            rest = m_words[word];
        }
        return word * 64 + static_cast<std::size_t>(std::countr_zero(rest));
    }

    // Both sides of the same size.
    Bits& operator&=(const Bits& other) {
        for (std::size_t i = 0; i != m_words.size(); ++i)
            m_words[i] &= other.m_words[i];
        return *this;
    }
    Bits& operator|=(const Bits& other) {
        for (std::size_t i = 0; i != m_words.size(); ++i)
            m_words[i] |= other.m_words[i];
        return *this;
    }
    void invert() {
        for (std::uint64_t& word : m_words)
            word = ~word;
        clearBeyond();
    }
    bool operator==(const Bits&) const = default;

private:
    void clearBeyond() {
        if (m_size % 64 != 0)
            m_words.back() &= (std::uint64_t{1} << (m_size % 64)) - 1;
    }

    std::size_t m_size = 0;
    std::vector<std::uint64_t> m_words;
};

} // namespace workbench
