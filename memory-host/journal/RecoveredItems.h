// The items that a journal names, among those of files that were opened again.
#pragma once

#include "JournalContent.h"
#include "files/EntrySource.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace memory_host {

class RecoveredItems {
public:
    /// When all files are opened. The content must outlive this.
    explicit RecoveredItems(const JournalContent& content);

    /// Finds the items that a file gave which was opened again; false if it gives others than it
    /// did.
    bool addReading(std::size_t reading, const FileReading& opened);
    /// When all are added: what was gone is known to be gone, with all in it and with the bonds of
    /// atoms.
    void settle();
    /// Adds an item that was made again, by its place in the content.
    void addMade(std::size_t made, Compound* item) { m_made[made] = item; }

    /// The item that had an identifier; null if it is gone, or was not brought back.
    Compound* at(std::uint32_t id) const;
    /// The item of a file that was opened, also if it is gone; null for other items.
    Compound* given(std::uint32_t id) const;
    /// The identifier that it has now, also if it is gone; 0 where that is not known.
    std::uint32_t identifierNow(std::uint32_t id) const;
    /// What is gone and stands in an item that is not; bonds, which go with atoms, come first.
    std::vector<Compound*> gone() const;
    /// Calls `use(item)` for each item that is there, of those from `first` on.
    template <class Use>
    void forEach(std::uint32_t first, std::uint32_t length, const Use& use) const;
    /// Calls `use(item, id)` for all.
    template <class Use> void forAll(const Use& use) const;

private:
    struct Reading {
        std::uint32_t firstItem = 0; ///< as the journal has it
        std::uint32_t shift = 0;     ///< of the identifiers now
        std::vector<Compound*> items;
        std::vector<bool> areThere;
    };

    void markThere();
    /// The reading that an identifier is of; null if none is.
    const Reading* readingWith(std::uint32_t id) const;
    /// The reading that an identifier is of, or else the first one behind it.
    static auto readingFrom(auto& readings, std::uint32_t id) {
        auto after = std::ranges::upper_bound(readings, id, {}, &Reading::firstItem);
        return after == readings.begin() ? after : std::prev(after);
    }
    static bool isGoneWith(const Reading& reading, const HostItem& item, Compound& self);
    std::size_t firstMadeFrom(std::uint32_t id) const;

    const JournalContent& m_content;
    std::vector<Reading> m_readings; ///< as those of the content; empty where none was opened
    std::vector<Compound*> m_made;
    std::vector<Compound*> m_topLevel; ///< before anything is made again; ascending by identifier
};

template <class Use>
void RecoveredItems::forEach(std::uint32_t first, std::uint32_t length, const Use& use) const {
    const std::uint32_t end = first + length;
    for (auto reading = readingFrom(m_readings, first);
         reading != m_readings.end() && reading->firstItem < end; ++reading) {
        const auto size = static_cast<std::uint32_t>(reading->items.size());
        const std::uint32_t to = std::min(end, reading->firstItem + size);
        for (std::uint32_t id = std::max(first, reading->firstItem); id < to; ++id)
            if (const std::size_t i = id - reading->firstItem; reading->areThere[i])
                use(*reading->items[i]);
    }
    for (std::size_t i = firstMadeFrom(first); i != m_made.size() && m_content.made[i].id < end;
         ++i)
        if (m_made[i])
            use(*m_made[i]);
}

template <class Use> void RecoveredItems::forAll(const Use& use) const {
    for (const Reading& reading : m_readings)
        for (std::size_t i = 0; i != reading.items.size(); ++i)
            if (reading.areThere[i])
                use(*reading.items[i], reading.firstItem + static_cast<std::uint32_t>(i));
    for (std::size_t i = 0; i != m_made.size(); ++i)
        if (m_made[i])
            use(*m_made[i], m_content.made[i].id);
}

} // namespace memory_host
