#include "ItemName.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <new>
#include <vector>

namespace memory_host {

namespace {

constexpr std::uint32_t none = UINT32_MAX;

struct Entry {
    std::string text;
    std::uint32_t hash = 0;
    std::uint32_t uses = 0;
    std::uint32_t next = none; ///< in the same hash bucket; or in the free list
};

// Entries are allocated in chunks, so that they keep their numbers. Unused chunks are freed.
struct Chunk {
    static constexpr std::uint32_t size = 1024;

    bool isFull() const { return used == size; }

    std::array<Entry, size> entries;
    std::uint32_t used = 0;
    std::uint32_t cut = 0; ///< entries that have ever been in use
    std::uint32_t free = none;
    std::uint32_t next = none; ///< next and previous in the list of chunks with room
    std::uint32_t previous = none;
};

class NameTable {
public:
    NameTable() : m_index(smallestIndex, none) {
        // The empty name, which is not in the index.
        addChunk();
        m_chunks.front()->cut = m_chunks.front()->used = 1;
    }

    /// The number of a text, whose reference count rises.
    std::uint32_t take(std::string_view text) {
        const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(text));
        for (std::uint32_t number = placeOf(hash); number != none; number = at(number).next) {
            Entry& entry = at(number);
            if (entry.hash == hash && entry.text == text) {
                ++entry.uses;
                return number;
            }
        }
        return enter(text, hash);
    }

    void giveBack(std::uint32_t number) noexcept {
        Entry& entry = at(number);
        if (--entry.uses > 0)
            return;
        std::uint32_t* place = &placeOf(entry.hash);
        while (*place != number)
            place = &at(*place).next;
        *place = entry.next;
        std::string().swap(entry.text);
        giveEntryBack(number);
        --m_count;
        if (m_index.size() > smallestIndex && m_count < m_index.size() / 8) {
            try {
                resizeIndex(m_index.size() / 4);
            } catch (const std::bad_alloc&) { // It stays as large as it is.
            }
        }
    }

    const std::string& text(std::uint32_t number) { return at(number).text; }
    std::size_t size() const { return m_count + 1; }

private:
    static constexpr std::size_t smallestIndex = 4096; ///< a power of two, as all sizes are

    Entry& at(std::uint32_t number) {
        return m_chunks[number / Chunk::size]->entries[number % Chunk::size];
    }
    std::uint32_t& placeOf(std::uint32_t hash) { return m_index[hash & (m_index.size() - 1)]; }

    // All that can fail comes before the first change.
    std::uint32_t enter(std::string_view text, std::uint32_t hash) {
        std::string copy(text);
        if (m_count == m_index.size())
            resizeIndex(m_index.size() * 2);
        if (m_withRoom == none)
            addChunk();
        const std::uint32_t index = m_withRoom;
        Chunk& chunk = *m_chunks[index];
        const bool isNew = chunk.free == none;
        const std::uint32_t slot = isNew ? chunk.cut++ : chunk.free;
        Entry& entry = chunk.entries[slot];
        if (!isNew)
            chunk.free = entry.next;
        if (++chunk.used == Chunk::size)
            unlink(index);
        const std::uint32_t number = index * Chunk::size + slot;
        entry.text = std::move(copy);
        entry.hash = hash;
        entry.uses = 1;
        entry.next = std::exchange(placeOf(hash), number);
        ++m_count;
        return number;
    }

    void resizeIndex(std::size_t size) {
        std::vector<std::uint32_t> before(size, none);
        before.swap(m_index);
        for (std::uint32_t number : before) {
            while (number != none) {
                Entry& entry = at(number);
                const std::uint32_t next = entry.next;
                entry.next = std::exchange(placeOf(entry.hash), number);
                number = next;
            }
        }
    }

    void addChunk() {
        const auto place = std::find(m_chunks.begin(), m_chunks.end(), nullptr);
        const auto index = static_cast<std::uint32_t>(place - m_chunks.begin());
        if (place == m_chunks.end())
            m_chunks.emplace_back();
        m_chunks[index] = std::make_unique<Chunk>();
        link(index);
    }

    void giveEntryBack(std::uint32_t number) noexcept {
        const std::uint32_t index = number / Chunk::size;
        Chunk& chunk = *m_chunks[index];
        if (chunk.isFull())
            link(index);
        at(number).next = std::exchange(chunk.free, number % Chunk::size);
        // The last chunk with room is kept: the next name is likely to come soon.
        if (--chunk.used == 0 && (chunk.next != none || chunk.previous != none)) {
            unlink(index);
            m_chunks[index].reset();
        }
    }

    void link(std::uint32_t index) noexcept {
        m_chunks[index]->next = m_withRoom;
        if (m_withRoom != none)
            m_chunks[m_withRoom]->previous = index;
        m_withRoom = index;
    }

    void unlink(std::uint32_t index) noexcept {
        Chunk& chunk = *m_chunks[index];
        (chunk.previous != none ? m_chunks[chunk.previous]->next : m_withRoom) = chunk.next;
        if (chunk.next != none)
            m_chunks[chunk.next]->previous = chunk.previous;
        chunk.next = chunk.previous = none;
    }

    std::vector<std::unique_ptr<Chunk>> m_chunks;
    std::uint32_t m_withRoom = none;
    std::vector<std::uint32_t> m_index; ///< hash buckets: the first entry of each
    std::size_t m_count = 0;            ///< names in the index
};

NameTable& table() {
    // Never destroyed: items may outlive every static object.
    static auto* const names = new NameTable;
    return *names;
}

bool cannotStandInComponent(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || byte < 0x20 || byte == 0x7f;
}

} // namespace

Name::Name(std::string_view text) : m_number(text.empty() ? 0 : table().take(text)) {}

Name Name::component(std::string_view text) {
    // Nearly all names of atoms need no replacement.
    if (std::none_of(text.begin(), text.end(), cannotStandInComponent))
        return Name(text);
    std::string component(text);
    std::replace_if(component.begin(), component.end(), cannotStandInComponent, '_');
    return Name(component);
}

const std::string& Name::text() const {
    return table().text(m_number);
}

void Name::giveBack(std::uint32_t number) noexcept {
    table().giveBack(number);
}

std::size_t nameCount() {
    return table().size();
}

} // namespace memory_host
