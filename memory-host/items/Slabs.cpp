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
constexpr std::size_t cacheLine = 64;
// Before a block that comes from the heap itself there is its annex.
constexpr std::size_t heapAnnex = 16;
static_assert(heapAnnex >= annexSize);

struct FreeBlock {
    FreeBlock* next;
};

// The blocks follow this record; a block that is a multiple of a cache line long begins with one.
// The annexes stand at the slab's end, the first block's the last.
struct alignas(cacheLine) Slab {
    static Slab& of(const void* block) {
        return *reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(block) &
                                        ~(slabAlignment - 1));
    }

    char* memory() { return reinterpret_cast<char*>(this + 1); }
    char* end() { return reinterpret_cast<char*>(this) + slabSize; }
    bool isFull() const { return !free && cut == blocks; }

    Slab* next = nullptr; ///< next and previous in the list of slabs with room
    Slab* previous = nullptr;
    FreeBlock* free = nullptr; ///< freed blocks
    std::uint16_t size;        ///< of a block
    std::uint16_t blocks;      ///< how many have room
    std::uint16_t used = 0;    ///< blocks in use
    std::uint16_t cut = 0;     ///< blocks that have ever been in use
};

// The slabs for blocks of one size, all with an annex or all without.
class Slabs {
public:
    void* take(std::size_t size, Annex annex) {
        if (!m_withRoom)
            link(newSlab(size, annex));
        Slab& slab = *m_withRoom;
        void* block = slab.free;
        if (block)
            slab.free = slab.free->next;
        else
            block = slab.memory() + size * slab.cut++;
        ++slab.used;
        if (slab.isFull())
            unlink(slab);
        return block;
    }

    void give(void* block) noexcept {
        Slab& slab = Slab::of(block);
        if (slab.isFull())
            link(&slab);
        slab.free = ::new (block) FreeBlock{slab.free};
        // The last slab with room is kept: the next block is likely to be asked for soon.
        if (--slab.used == 0 && (slab.next || slab.previous)) {
            unlink(slab);
            std::free(&slab);
        }
    }

private:
    static Slab* newSlab(std::size_t size, Annex annex) {
        // Aligned operator new would round the size up, and leave a hole behind every slab.
        void* memory = nullptr;
        if (posix_memalign(&memory, slabAlignment, slabSize) != 0)
            throw std::bad_alloc();
        Slab* const slab = ::new (memory) Slab;
        const std::size_t each = annex == Annex::Present ? size + annexSize : size;
        slab->size = static_cast<std::uint16_t>(size);
        slab->blocks = static_cast<std::uint16_t>((slabSize - sizeof(Slab)) / each);
        return slab;
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
constinit std::array<std::array<Slabs, 2>, largestBlock / unit + 1> slabs{};

Slabs& slabsFor(std::size_t size, Annex annex) {
    return slabs[size / unit][static_cast<std::size_t>(annex)];
}

bool isFromSlab(std::size_t size) {
    return isUsed && size <= largestBlock && size % unit == 0;
}

} // namespace

void* takeBlock(std::size_t size, Annex annex) {
    if (isFromSlab(size))
        return slabsFor(size, annex).take(size, annex);
    if (annex == Annex::None)
        return ::operator new(size);
    return static_cast<char*>(::operator new(heapAnnex + size)) + heapAnnex;
}

void giveBlock(void* block, std::size_t size, Annex annex) noexcept {
    if (isFromSlab(size))
        slabsFor(size, annex).give(block);
    else if (annex == Annex::None)
        ::operator delete(block, size);
    else
        ::operator delete(static_cast<char*>(block) - heapAnnex, heapAnnex + size);
}

void* annexOf(const void* block) {
    if constexpr (!isUsed)
        return static_cast<char*>(const_cast<void*>(block)) - heapAnnex;
    Slab& slab = Slab::of(block);
    const auto place = static_cast<std::size_t>(static_cast<const char*>(block) - slab.memory());
    return slab.end() - annexSize * (place / slab.size + 1);
}

} // namespace memory_host
