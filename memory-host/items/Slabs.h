// Memory for items, which are many and of few sizes: blocks are cut from slabs, without the bytes
// that the heap keeps beside each of its own. For the GUI thread only.
#pragma once

#include <cstddef>

namespace memory_host {

/// A block of `size` bytes for an object of ordinary alignment. Throws std::bad_alloc.
void* takeBlock(std::size_t size);
/// Gives a block of that size back. A slab whose blocks have all come back goes back to the heap.
void giveBlock(void* block, std::size_t size) noexcept;

} // namespace memory_host
