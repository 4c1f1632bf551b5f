#include "DataReader.h"

#include "DataWalk.h"
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

} // namespace

DataReader::DataReader(std::function<void()> gone) : m_gone(std::move(gone)) {}

DataReader::~DataReader() = default;

void DataReader::read() {
    Collected collected = collect(TAVIK::Space::instance());
    m_items = std::move(collected.items);
    m_bonds = std::move(collected.bonds);
    Snapshot next;
    next.contents = std::make_shared<const Contents>(std::move(collected.contents));
    next.generation = m_snapshot.generation + 1;
    m_snapshot = std::move(next);
    m_isStale = false;
    readMarks();
    m_selectionChanges = TAVIK::SelectionChanges() - 1;
    readSelection();
}

void DataReader::refresh() {
    if (m_isStale || !readMarks())
        read();
    else
        readSelection();
}

// Returns false when an atom has moved, or a mesh or a line is another one.
bool DataReader::readMarks() {
    const Contents& contents = *m_snapshot.contents;
    auto marks = std::make_shared<Marks>();
    marks->colours.resize(m_items.size());
    marks->shown.resize(m_items.size());
    marks->bonds.resize(m_bonds.size());
    for (std::size_t i = 0; i != m_items.size(); ++i) {
        fetch(m_items, i);
        const Compound* const item = m_items[i];
        marks->colours[i] = item->GetColor().rgba();
        marks->shown[i] = item->IsVisible() ? 1 : 0;
        if (i < contents.atomCount() && !isSame(positionOf(item), contents.positions[i]))
            return false;
    }
    for (const Shape& shape : contents.shapes)
        if (!isAsRead(shape, m_items[shape.item]))
            return false;
    for (std::size_t i = 0; i != m_bonds.size(); ++i) {
        fetch(m_bonds, i);
        marks->bonds[i] = m_bonds[i]->IsVisible() ? 1 : 0;
    }
    if (*marks != *m_snapshot.marks)
        m_snapshot.marks = std::move(marks);
    return true;
}

void DataReader::readSelection() {
    const std::uint64_t changes = TAVIK::SelectionChanges();
    if (changes == m_selectionChanges)
        return;
    auto selection = std::make_shared<SelectionMarks>(m_items.size());
    if (TAVIK::Space::instance()->HasSelected())
        for (std::size_t i = 0; i != m_items.size(); ++i) {
            fetch(m_items, i);
            (*selection)[i] = m_items[i]->IsSelected() ? 1 : 0;
        }
    m_selectionChanges = changes;
    if (*selection != *m_snapshot.selection)
        m_snapshot.selection = std::move(selection);
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
