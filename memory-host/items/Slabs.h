// A slab allocator for items, which are many and of few sizes: it saves the heap's header for each
// block. For the GUI thread only.
#pragma once

#include <cstddef>

namespace memory_host {

/// A block of `size` bytes for an object of ordinary alignment. Throws std::bad_alloc.
void* takeBlock(std::size_t size);
/// Frees a block of that size. A slab without blocks in use goes back to the heap.
void giveBlock(void* block, std::size_t size) noexcept;

} // namespace memory_host
