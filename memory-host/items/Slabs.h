// A slab allocator for items, which are many and of few sizes: it saves the heap's header for each
// block. For the GUI thread only.
#pragma once

#include <cstddef>

namespace memory_host {

/// What a block may have beside it: some bytes, for what is seldom read, that do not part those
/// that are often read.
enum class Annex : bool { None, Present };

/// The size of an annex; its alignment is that of a float.
inline constexpr std::size_t annexSize = 12;

/// A block of `size` bytes for an object of ordinary alignment; with an annex, a multiple of 8 and
/// at most 256 bytes. Throws std::bad_alloc.
void* takeBlock(std::size_t size, Annex annex = Annex::None);
/// Frees a block of that size. A slab without blocks in use goes back to the heap.
void giveBlock(void* block, std::size_t size, Annex annex = Annex::None) noexcept;
/// The annex of a block that was taken with one.
void* annexOf(const void* block);

/// Prefetches what lies some blocks after `block`, to be changed: blocks that were taken one after
/// another lie so in memory, and walks over many of them wait for memory most of the time.
inline void prefetchAfter(const void* block) {
    constexpr std::size_t ahead = 1024;
    __builtin_prefetch(static_cast<const char*>(block) + ahead, 1);
}

} // namespace memory_host
