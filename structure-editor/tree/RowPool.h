// Memory for tree rows and their lists of children: millions of small blocks that are made and
// freed together.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <unordered_set>
#include <utility>
#include <vector>

/// A pool allocator: cuts rows of `rowSize` bytes and arrays from large blocks, one after the
/// other, so that rows made in sequence are contiguous in memory. Under AddressSanitizer each row
/// and array is a heap block of its own, and dropAll() does nothing.
template <std::size_t rowSize> class RowPool {
public:
    RowPool() = default;
    RowPool(const RowPool&) = delete;
    RowPool& operator=(const RowPool&) = delete;
    ~RowPool() { dropAll(); }

#ifdef __SANITIZE_ADDRESS__
    void* takeRow() {
        return ::operator new(rowSize);
    }
    void giveRow(void* row) noexcept {
        ::operator delete(row);
    }
    void* takeArray(std::size_t bytes) {
        return ::operator new(bytes);
    }
    void giveArray(void* array, std::size_t) noexcept {
        ::operator delete(array);
    }
    bool holdsOnly(std::size_t) const {
        return false;
    }
    void dropAll() noexcept {}
    void trim() noexcept {}
#else
    void* takeRow() {
        void* const row = take(rowSize);
        ++m_rows;
        return row;
    }
    void giveRow(void* row) noexcept {
        give(row, rowSize);
        if (--m_rows == 0) {
            dropAll();
            trim();
        }
    }

    /// Memory for an array; it must be freed before the last row.
    void* takeArray(std::size_t bytes) {
        if (bytes <= largestPiece)
            return take(bytes);
        void* const array = ::operator new(bytes);
        try {
            m_large.insert(array);
        } catch (...) {
            ::operator delete(array);
            throw;
        }
        return array;
    }
    void giveArray(void* array, std::size_t bytes) noexcept {
        if (!array)
            return;
        if (bytes <= largestPiece) {
            give(array, bytes);
        } else {
            m_large.erase(array);
            ::operator delete(array);
        }
    }

    /// Whether exactly this number of rows is in use.
    bool holdsOnly(std::size_t rows) const {
        return m_rows == rows;
    }
    /// Frees everything without visiting any of it. The blocks are kept for reuse.
    void dropAll() noexcept {
        for (void* array : m_large)
            ::operator delete(array);
        m_large.clear();
        m_free = {};
        m_next = m_end = nullptr;
        m_used = 0;
        m_rows = 0;
    }
    /// Gives back the blocks that are not in use.
    void trim() noexcept {
        m_blocks.resize(m_used);
    }

private:
    struct Free {
        Free* next;
    };
    static constexpr std::size_t unit = alignof(std::max_align_t);
    static constexpr std::size_t largestPiece = 1024;
    static constexpr std::size_t blockSize = 64 * largestPiece;
    static_assert(rowSize <= largestPiece && unit >= sizeof(Free));

    static std::size_t units(std::size_t bytes) {
        return (bytes + unit - 1) / unit;
    }

    void* take(std::size_t bytes) {
        const std::size_t wanted = units(bytes);
        if (Free*& free = m_free[wanted])
            return std::exchange(free, free->next);
        if (static_cast<std::size_t>(m_end - m_next) < wanted * unit) {
            // The rest of the block stays unused.
            if (m_used == m_blocks.size())
                m_blocks.push_back(std::unique_ptr<std::byte[]>(new std::byte[blockSize]));
            m_next = m_blocks[m_used++].get();
            m_end = m_next + blockSize;
        }
        return std::exchange(m_next, m_next + wanted * unit);
    }
    void give(void* piece, std::size_t bytes) noexcept {
        Free*& free = m_free[units(bytes)];
        free = ::new (piece) Free{free};
    }

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::size_t m_used = 0; ///< blocks in use, which come first
    std::byte* m_next = nullptr;
    std::byte* m_end = nullptr;
    std::array<Free*, largestPiece / unit + 1> m_free{}; ///< by size, in units
    std::unordered_set<void*> m_large;
    std::size_t m_rows = 0;
#endif
};
