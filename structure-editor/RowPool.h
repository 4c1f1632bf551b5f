// Memory for tree rows: millions of equal pieces that come and go together.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

/// Hands out pieces of `size` bytes from large blocks, one beside the other, so that rows that are
/// made one after the other are read one after the other. All blocks are given back when the last
/// piece is. Sanitizers watch single pieces: for them each is a block of its own.
template <std::size_t size> class RowPool {
public:
    RowPool() = default;
    RowPool(const RowPool&) = delete;
    RowPool& operator=(const RowPool&) = delete;

#ifdef __SANITIZE_ADDRESS__
    void* take() {
        return ::operator new(size);
    }
    void give(void* piece) noexcept {
        ::operator delete(piece);
    }
#else
    void* take() {
        if (m_free) {
            ++m_live;
            return std::exchange(m_free, m_free->next);
        }
        if (m_next == m_end) {
            m_blocks.push_back(std::unique_ptr<std::byte[]>(new std::byte[blockBytes]));
            m_next = m_blocks.back().get();
            m_end = m_next + blockBytes;
        }
        ++m_live;
        return std::exchange(m_next, m_next + size);
    }

    void give(void* piece) noexcept {
        m_free = new (piece) Free{m_free};
        if (--m_live > 0)
            return;
        m_blocks.clear();
        m_blocks.shrink_to_fit();
        m_free = nullptr;
        m_next = m_end = nullptr;
    }

private:
    struct Free {
        Free* next;
    };
    static_assert(size >= sizeof(Free) && size % alignof(std::max_align_t) == 0);
    static constexpr std::size_t blockBytes = 1024 * size;

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    Free* m_free = nullptr;
    std::byte* m_next = nullptr;
    std::byte* m_end = nullptr;
    std::size_t m_live = 0;
#endif
};
