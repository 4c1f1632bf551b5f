// The bytes of a journal: numbers of few bytes where they are small, one after another.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

/// Grows in pieces: nothing is moved, so that no call takes long.
class JournalBytes {
public:
    void byte(std::uint8_t value) {
        if (m_left == 0)
            grow();
        m_pieces.back()[pieceSize - m_left--] = static_cast<char>(value);
        ++m_size;
    }
    /// Seven bits a byte, the lowest first.
    void number(std::uint64_t value) {
        for (; value >= 0x80; value >>= 7U)
            byte(static_cast<std::uint8_t>(value | 0x80U));
        byte(static_cast<std::uint8_t>(value));
    }
    void difference(std::int64_t value) {
        number(static_cast<std::uint64_t>(value) << 1U ^ static_cast<std::uint64_t>(value >> 63U));
    }
    void four(std::uint32_t value) {
        for (unsigned shift = 0; shift != 32; shift += 8)
            byte(static_cast<std::uint8_t>(value >> shift));
    }
    void real(float value) { four(std::bit_cast<std::uint32_t>(value)); }
    void real(double value) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        four(static_cast<std::uint32_t>(bits));
        four(static_cast<std::uint32_t>(bits >> 32U));
    }
    void bytes(std::string_view text);
    /// With its length.
    void text(std::string_view text) {
        number(text.size());
        bytes(text);
    }

    std::size_t size() const { return m_size; }
    void appendTo(std::string& all) const;

private:
    static constexpr std::size_t pieceSize = std::size_t{1} << 16;

    void grow() {
        m_pieces.push_back(std::make_unique_for_overwrite<char[]>(pieceSize)); // NOLINT
        m_left = pieceSize;
    }

    std::vector<std::unique_ptr<char[]>> m_pieces; // NOLINT: an array without its size
    std::size_t m_left = 0;                        ///< in the last piece
    std::size_t m_size = 0;
};

/// Thrown where a journal ends early, or says what cannot be.
struct JournalDamage {};

/// Reads what JournalBytes wrote. Throws JournalDamage.
class JournalReader {
public:
    explicit JournalReader(std::string_view bytes) : m_bytes(bytes) {}

    bool isAtEnd() const { return m_bytes.empty(); }
    std::size_t left() const { return m_bytes.size(); }
    std::uint8_t byte() { return static_cast<std::uint8_t>(take(1).front()); }
    std::uint64_t number() {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 7) {
            const std::uint8_t next = byte();
            value |= std::uint64_t{next & 0x7fU} << shift;
            if (next < 0x80)
                return value;
        }
        refuse();
    }
    /// A number that fits, and is not larger than `most`.
    template <std::unsigned_integral Value>
    Value number(Value most = std::numeric_limits<Value>::max()) {
        const std::uint64_t value = number();
        if (value > most)
            refuse();
        return static_cast<Value>(value);
    }
    /// How many records follow, of at least `each` bytes.
    std::size_t count(std::size_t each = 1) { return number<std::size_t>(left() / each); }
    std::int64_t difference() {
        const std::uint64_t value = number();
        return static_cast<std::int64_t>(value >> 1U ^ (~(value & 1U) + 1U));
    }
    std::uint32_t four() {
        const std::string_view all = take(4);
        std::uint32_t value = 0;
        for (unsigned i = 0; i != 4; ++i)
            value |= std::uint32_t{static_cast<std::uint8_t>(all[i])} << 8U * i;
        return value;
    }
    float real() { return std::bit_cast<float>(four()); }
    double realOfDouble() {
        const std::uint64_t low = four();
        return std::bit_cast<double>(std::uint64_t{four()} << 32U | low);
    }
    std::string_view take(std::size_t count) {
        if (count > m_bytes.size())
            refuse();
        const std::string_view taken = m_bytes.substr(0, count);
        m_bytes.remove_prefix(count);
        return taken;
    }
    std::string_view text() { return take(count()); }

    [[noreturn]] static void refuse() { throw JournalDamage(); }

private:
    std::string_view m_bytes;
};

} // namespace memory_host
