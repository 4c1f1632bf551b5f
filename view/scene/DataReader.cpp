#include "DataReader.h"

#include "SelectionChanges.h"
#include "Shapes.h"
#include "Space.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace view {

using TAVIK::Compound;

namespace {

// Items lie scattered in memory: the one that comes soon is fetched while this one is read.
constexpr std::size_t ahead = 12;
void fetch(const std::vector<Compound*>& items, std::size_t i) {
    if (i + ahead < items.size())
        __builtin_prefetch(items[i + ahead]);
}

bool isSame(const Point& a, const Point& b) {
    // To the bit, as NaN stands for no position.
    return std::bit_cast<std::array<std::uint32_t, 3>>(a) ==
           std::bit_cast<std::array<std::uint32_t, 3>>(b);
}

// Whether each bond is shown; false when one is not where it was.
bool readBonds(const std::vector<BondRun>& runs, std::vector<std::uint8_t>& shown) {
    for (const BondRun& run : runs) {
        Compound** const children = run.parent->ChildBegin();
        const auto end = std::size_t(run.first) + run.count;
        if (static_cast<std::size_t>(run.parent->ChildEnd() - children) < end)
            return false;
        for (std::size_t i = run.first; i != end; ++i) {
            if (i + ahead < end)
                __builtin_prefetch(children[i + ahead]);
            if (!children[i])
                return false;
            shown.push_back(children[i]->IsVisible() ? 1 : 0);
        }
    }
    return true;
}

// Null when an atom has moved, a mesh or a line is another one, or a bond is not where it was.
std::shared_ptr<const Marks> marksOf(const Contents& contents, const std::vector<Compound*>& items,
                                     const std::vector<BondRun>& bonds) {
    auto marks = std::make_shared<Marks>();
    marks->colours.resize(items.size());
    marks->shown.resize(items.size());
    marks->bonds.reserve(contents.bonds.size());
    for (std::size_t i = 0; i != items.size(); ++i) {
        fetch(items, i);
        const Compound* const item = items[i];
        marks->colours[i] = item->GetColor().rgba();
        marks->shown[i] = item->IsVisible() ? 1 : 0;
        if (i < contents.atomCount() && !isSame(positionOf(item), contents.positions[i]))
            return nullptr;
    }
    for (const Shape& shape : contents.shapes)
        if (!isAsRead(shape, items[shape.item]))
            return nullptr;
    if (!readBonds(bonds, marks->bonds))
        return nullptr;
    return marks;
}

std::shared_ptr<const SelectionMarks> selectionOf(const std::vector<Compound*>& items) {
    auto selection = std::make_shared<SelectionMarks>(items.size());
    if (TAVIK::Space::instance()->HasSelected())
        for (std::size_t i = 0; i != items.size(); ++i) {
            fetch(items, i);
            (*selection)[i] = items[i]->IsSelected() ? 1 : 0;
        }
    return selection;
}

} // namespace

DataReader::DataReader(std::function<void()> gone) : m_gone(std::move(gone)) {}

DataReader::~DataReader() = default;

void DataReader::read() {
    Collected collected = collect(TAVIK::Space::instance(), *m_snapshot.contents);
    Snapshot next;
    next.contents = std::make_shared<const Contents>(std::move(collected.contents));
    next.marks = std::make_shared<const Marks>(std::move(collected.marks));
    next.generation = m_snapshot.generation + 1;
    const std::uint64_t changes = TAVIK::SelectionChanges();
    next.selection = selectionOf(collected.items);
    // Nothing fails from here on: arrays of different readings would not fit each other.
    m_items = std::move(collected.items);
    m_bonds = std::move(collected.bonds);
    m_snapshot = std::move(next);
    m_selectionChanges = changes;
    m_isStale = false;
}

void DataReader::refresh() {
    std::shared_ptr<const Marks> marks;
    if (!m_isStale)
        marks = marksOf(*m_snapshot.contents, m_items, m_bonds);
    if (!marks) {
        read();
        return;
    }
    if (*marks != *m_snapshot.marks)
        m_snapshot.marks = std::move(marks);
    const std::uint64_t changes = TAVIK::SelectionChanges();
    if (changes == m_selectionChanges)
        return;
    auto selection = selectionOf(m_items);
    if (*selection != *m_snapshot.selection)
        m_snapshot.selection = std::move(selection);
    m_selectionChanges = changes;
}

Compound* DataReader::item(Id id, std::uint64_t generation) const {
    return id != noId && generation == m_snapshot.generation && itemOf(id) < m_items.size()
               ? m_items[itemOf(id)]
               : nullptr;
}

Id DataReader::id(const Compound* item) const {
    const auto found = std::find(m_items.begin(), m_items.end(), item);
    return item && found != m_items.end() ? idOf(static_cast<std::size_t>(found - m_items.begin()))
                                          : noId;
}

void DataReader::aboutToDestroy(Compound*) {
    if (m_isStale)
        return;
    m_isStale = true;
    m_items = {};
    m_bonds = {};
    if (m_gone)
        m_gone();
}

} // namespace view
