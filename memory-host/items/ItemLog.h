// The items that a step's writes are about.
#pragma once

#include "Chunks.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace memory_host {

/// A sequence of addresses, appended to at its end and read from either end. Writes mostly go from
/// an item to its neighbour in memory: an address takes one byte then, as the difference from the
/// one before it, and ten bytes otherwise.
class ItemLog {
public:
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    /// Bytes of memory.
    std::size_t bytes() const { return m_bytes.bytes() + m_addresses.bytes(); }

    bool hasRoomFor(std::size_t more) const {
        return m_bytes.hasRoomFor(more * wideSize) &&
               (!keepsAddresses || m_addresses.hasRoomFor(more));
    }
    /// Makes room for that many more. Throws std::bad_alloc, and the log stays as it is.
    void reserve(std::size_t more) {
        m_bytes.reserve(more * wideSize);
        if constexpr (keepsAddresses)
            m_addresses.reserve(more);
    }
    /// Frees what is unused, as nothing follows. Throws std::bad_alloc; the log is the same then.
    void shrink() {
        m_bytes.shrink();
        if constexpr (keepsAddresses)
            m_addresses.shrink();
    }

    /// There must be room.
    void push_back(void* item) {
        ++m_size;
        const auto address = reinterpret_cast<std::uintptr_t>(item);
        const auto difference = static_cast<std::intptr_t>(address - m_last);
        m_last = address;
        const std::intptr_t grains = difference / grain;
        if (grains > wide && grains <= std::numeric_limits<std::int8_t>::max() &&
            difference % grain == 0)
            m_bytes.push_back(static_cast<std::int8_t>(grains));
        else
            addWide(static_cast<std::uintptr_t>(difference));
        if constexpr (keepsAddresses)
            m_addresses.push_back(item);
    }

    /// Reads a log from one end to the other.
    class Reader {
    public:
        Reader(const ItemLog& log, bool fromEnd) : m_log(log) {
            if (!fromEnd)
                return;
            m_at = log.m_bytes.size();
            m_last = log.m_last;
        }
        void* next() {
            const std::int8_t byte = m_log.m_bytes[m_at++];
            m_last += byte == wide ? wideBehind() : distance(byte);
            return reinterpret_cast<void*>(m_last);
        }
        void* previous() {
            auto* const found = reinterpret_cast<void*>(m_last);
            const std::int8_t byte = m_log.m_bytes[--m_at];
            m_last -= byte == wide ? wideBefore() : distance(byte);
            return found;
        }

    private:
        static std::uintptr_t distance(std::int8_t grains) {
            return static_cast<std::uintptr_t>(std::intptr_t{grains} * grain);
        }
        std::uintptr_t wideBehind() {
            const std::uintptr_t difference = wideAt(m_at);
            m_at += wideSize - 1;
            return difference;
        }
        std::uintptr_t wideBefore() {
            m_at -= wideSize - 1;
            return wideAt(m_at + 1);
        }
        std::uintptr_t wideAt(std::size_t at) const {
            std::uintptr_t difference = 0;
            for (std::size_t i = 0; i != sizeof difference; ++i)
                difference |= std::uintptr_t{static_cast<std::uint8_t>(m_log.m_bytes[at + i])}
                              << (8 * i);
            return difference;
        }

        const ItemLog& m_log;
        std::size_t m_at = 0;
        std::uintptr_t m_last = 0;
    };

private:
    // Addresses are multiples of this.
    static constexpr std::intptr_t grain = 8;
    // Stands before and behind a difference that does not fit a byte, so that it can be read from
    // either side.
    static constexpr std::int8_t wide = -128;
    static constexpr std::size_t wideSize = sizeof(std::uintptr_t) + 2;
    // LeakSanitizer takes for lost what only differences of addresses lead to.
#ifdef __SANITIZE_ADDRESS__
    static constexpr bool keepsAddresses = true;
#else
    static constexpr bool keepsAddresses = false;
#endif

    void addWide(std::uintptr_t difference) {
        m_bytes.push_back(wide);
        for (std::size_t i = 0; i != sizeof difference; ++i)
            m_bytes.push_back(static_cast<std::int8_t>(difference >> (8 * i)));
        m_bytes.push_back(wide);
    }

    Chunks<std::int8_t> m_bytes;
    Chunks<void*> m_addresses;
    std::uintptr_t m_last = 0;
    std::size_t m_size = 0;
};

} // namespace memory_host
