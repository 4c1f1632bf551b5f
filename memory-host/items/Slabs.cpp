#include "Slabs.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace memory_host {

namespace {

// AddressSanitizer checks only blocks of its own heap, so that each block must come from there.
#ifdef __SANITIZE_ADDRESS__
constexpr bool isUsed = false;
#else
constexpr bool isUsed = true;
#endif

// A slab is aligned to this, so that masking a block's address gives its slab.
constexpr std::size_t slabAlignment = 32768;
// A little less than the alignment: with the heap's header, slabs still fit side by side.
constexpr std::size_t slabSize = slabAlignment - 64;
constexpr std::size_t unit = 8;
constexpr std::size_t largestBlock = 256;

struct FreeBlock {
    FreeBlock* next;
};

struct Slab {
    Slab* next = nullptr; ///< next and previous in the list of slabs with room
    Slab* previous = nullptr;
    FreeBlock* free = nullptr; ///< freed blocks
    std::uint32_t used = 0;    ///< blocks in use
    std::uint32_t cut = 0;     ///< bytes after this record that have ever been part of a block

    char* memory() { return reinterpret_cast<char*>(this + 1); }
};

// The slabs for blocks of one size.
class Slabs {
public:
    void* take(std::size_t size) {
        if (!m_withRoom)
            link(newSlab());
        Slab& slab = *m_withRoom;
        void* block = slab.free;
        if (block) {
            slab.free = slab.free->next;
        } else {
            block = slab.memory() + slab.cut;
            slab.cut += static_cast<std::uint32_t>(size);
        }
        ++slab.used;
        if (isFull(slab, size))
            unlink(slab);
        return block;
    }

    void give(void* block, std::size_t size) noexcept {
        Slab& slab = *reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(block) &
                                              ~(slabAlignment - 1));
        if (isFull(slab, size))
            link(&slab);
        slab.free = ::new (block) FreeBlock{slab.free};
        // The last slab with room is kept: the next block is likely to be asked for soon.
        if (--slab.used == 0 && (slab.next || slab.previous)) {
            unlink(slab);
            std::free(&slab);
        }
    }

private:
    static Slab* newSlab() {
        // Aligned operator new would round the size up, and leave a hole behind every slab.
        void* memory = nullptr;
        if (posix_memalign(&memory, slabAlignment, slabSize) != 0)
            throw std::bad_alloc();
        return ::new (memory) Slab;
    }

    static bool isFull(const Slab& slab, std::size_t size) {
        return !slab.free && slab.cut + size > slabSize - sizeof(Slab);
    }

    void link(Slab* slab) {
        slab->next = m_withRoom;
        if (m_withRoom)
            m_withRoom->previous = slab;
        m_withRoom = slab;
    }

    void unlink(Slab& slab) {
        (slab.previous ? slab.previous->next : m_withRoom) = slab.next;
        if (slab.next)
            slab.next->previous = slab.previous;
        slab.next = slab.previous = nullptr;
    }

    Slab* m_withRoom = nullptr;
};

// Never destroyed, and usable before any constructor has run: items may live as long as static
// objects.
constinit std::array<Slabs, largestBlock / unit + 1> slabs{};

bool isFromSlab(std::size_t size) {
    return isUsed && size <= largestBlock && size % unit == 0;
}

} // namespace

void* takeBlock(std::size_t size) {
    return isFromSlab(size) ? slabs[size / unit].take(size) : ::operator new(size);
}

void giveBlock(void* block, std::size_t size) noexcept {
    if (isFromSlab(size))
        slabs[size / unit].give(block, size);
    else
        ::operator delete(block, size);
}

} // namespace memory_host
