#include "RecoveredItems.h"

#include "Space.h"
#include "items/AtomItem.h"
#include "items/Holder.h"

#include <algorithm>

namespace memory_host {

namespace {

// Fills the items of a reading by their identifiers; counts them.
std::size_t fill(std::vector<Compound*>& items, std::uint32_t first, Compound& item) {
    HostItem& record = HostItem::of(&item);
    if (record.id < first || record.id - first >= items.size())
        return 0;
    items[record.id - first] = &item;
    std::size_t count = 1;
    if (record.isHolder())
        for (Compound** child = record.asHolder().childBegin();
             child != record.asHolder().childEnd(); ++child)
            count += fill(items, first, **child);
    return count;
}

std::uint32_t identifierOf(const Compound* item) {
    return HostItem::of(item).id;
}

std::vector<Compound*> topLevelByIdentifier() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::vector<Compound*> items(space->ChildBegin(), space->ChildEnd());
    std::ranges::sort(items, {}, identifierOf);
    return items;
}

} // namespace

RecoveredItems::RecoveredItems(const JournalContent& content)
    : m_content(content), m_readings(content.readings.size()), m_made(content.made.size()),
      m_topLevel(topLevelByIdentifier()) {
    for (std::size_t i = 0; i != m_readings.size(); ++i)
        m_readings[i].firstItem = content.readings[i].firstItem;
}

bool RecoveredItems::addReading(std::size_t number, const FileReading& opened) {
    if (opened.itemCount != m_content.readings[number].itemCount)
        return false;
    Reading& reading = m_readings[number];
    std::vector<Compound*> items(opened.itemCount);
    std::size_t found = 0;
    for (auto entry = std::ranges::lower_bound(m_topLevel, opened.firstItem, {}, identifierOf);
         entry != m_topLevel.end() && identifierOf(*entry) - opened.firstItem < items.size();
         ++entry)
        found += fill(items, opened.firstItem, **entry);
    if (found != items.size())
        return false;
    reading.shift = opened.firstItem - reading.firstItem;
    reading.areThere.resize(items.size());
    reading.items = std::move(items);
    return true;
}

void RecoveredItems::markThere() {
    for (const JournalContent::Run& run : m_content.looks) {
        const std::uint32_t runEnd = run.first + run.length;
        for (auto reading = readingFrom(m_readings, run.first);
             reading != m_readings.end() && reading->firstItem < runEnd; ++reading) {
            const auto size = static_cast<std::uint32_t>(reading->items.size());
            const std::uint32_t end = std::min(runEnd, reading->firstItem + size);
            for (std::uint32_t id = std::max(run.first, reading->firstItem); id < end; ++id)
                reading->areThere[id - reading->firstItem] = true;
        }
    }
}

bool RecoveredItems::isGoneWith(const Reading& reading, const HostItem& item, Compound& self) {
    const auto isGone = [&reading](const HostItem& other) {
        const std::uint32_t i = other.id - reading.shift - reading.firstItem;
        return i >= reading.areThere.size() || !reading.areThere[i];
    };
    if (item.parent->kind != Kind::Space && isGone(*item.parent))
        return true;
    return item.kind == Kind::Bond &&
           std::ranges::any_of(static_cast<BondItem&>(self).m_atoms, [&](const Compound* atom) {
               return atom && isGone(HostItem::of(atom));
           });
}

void RecoveredItems::settle() {
    markThere();
    for (Reading& reading : m_readings) {
        // Composites come before what is in them, and atoms before their bonds.
        for (std::size_t i = 0; i != reading.items.size(); ++i)
            if (reading.areThere[i] &&
                isGoneWith(reading, HostItem::of(reading.items[i]), *reading.items[i]))
                reading.areThere[i] = false;
    }
}

const RecoveredItems::Reading* RecoveredItems::readingWith(std::uint32_t id) const {
    const auto reading = readingFrom(m_readings, id);
    return reading != m_readings.end() && id - reading->firstItem < reading->items.size()
               ? &*reading
               : nullptr;
}

Compound* RecoveredItems::given(std::uint32_t id) const {
    const Reading* const reading = readingWith(id);
    return reading ? reading->items[id - reading->firstItem] : nullptr;
}

Compound* RecoveredItems::at(std::uint32_t id) const {
    if (const Reading* const reading = readingWith(id)) {
        const std::size_t i = id - reading->firstItem;
        return reading->areThere[i] ? reading->items[i] : nullptr;
    }
    const std::size_t i = firstMadeFrom(id);
    return i != m_made.size() && m_content.made[i].id == id ? m_made[i] : nullptr;
}

std::uint32_t RecoveredItems::identifierNow(std::uint32_t id) const {
    if (const Reading* const reading = readingWith(id))
        return id + reading->shift;
    const Compound* const item = at(id);
    return item ? item->GetId() : 0;
}

std::size_t RecoveredItems::firstMadeFrom(std::uint32_t id) const {
    const auto found = std::ranges::lower_bound(m_content.made, id, {}, &JournalContent::Made::id);
    return static_cast<std::size_t>(found - m_content.made.begin());
}

std::vector<Compound*> RecoveredItems::gone() const {
    std::vector<Compound*> bonds;
    std::vector<Compound*> others;
    for (const Reading& reading : m_readings)
        for (std::size_t i = 0; i != reading.items.size(); ++i) {
            if (reading.areThere[i])
                continue;
            const HostItem& item = HostItem::of(reading.items[i]);
            const HostItem& parent = *item.parent;
            const std::uint32_t place = parent.id - reading.shift - reading.firstItem;
            if (parent.kind == Kind::Space || reading.areThere[place])
                (item.kind == Kind::Bond ? bonds : others).push_back(reading.items[i]);
        }
    bonds.insert(bonds.end(), others.begin(), others.end());
    return bonds;
}

} // namespace memory_host
