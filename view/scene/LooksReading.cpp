#include "LooksReading.h"

#include <algorithm>
#include <bit>
#include <span>
#include <utility>

namespace view {

using TAVIK::Compound;

namespace {

bool isSame(const Point& a, const Point& b) {
    // To the bit, as NaN stands for no position.
    return std::bit_cast<std::array<std::uint32_t, 3>>(a) ==
           std::bit_cast<std::array<std::uint32_t, 3>>(b);
}

} // namespace

LooksReading::LooksReading(const Snapshot& snapshot, const std::vector<Compound*>& items,
                           const std::vector<BondRun>& bonds)
    : m_contents(snapshot.contents), m_before(snapshot.marks), m_selectedBefore(snapshot.selection),
      m_items(items), m_bonds(bonds), m_marks(std::make_shared<Marks>()),
      m_selection(std::make_shared<SelectionMarks>()) {
    m_marks->colours.reserve(items.size());
    m_marks->shown.reserve(items.size());
    m_marks->bonds.reserve(m_before->bonds.size());
    m_selection->reserve(items.size());
}

LooksReading::State LooksReading::advance(std::size_t items) {
    if (m_selection->size() != m_items.size())
        return readItems(items);
    if (m_shape != m_contents->shapes.size()) {
        const Shape& shape = m_contents->shapes[m_shape];
        switch (m_check.advance(shape, m_items[shape.item], items * bytesOfItem)) {
        case ShapeCheck::State::Due:
            return State::Due;
        case ShapeCheck::State::Other:
            return State::Outdated;
        case ShapeCheck::State::Same:
            m_marks->ownColours.push_back(showsOwnColours(m_items[shape.item]) ? 1 : 0);
            m_isOther |= m_marks->ownColours.back() != m_before->ownColours[m_shape];
            ++m_shape;
            m_check = {};
            return State::Due;
        }
    }
    return readBonds(items);
}

LooksReading::State LooksReading::readItems(std::size_t count) {
    const std::size_t begin = m_selection->size();
    const std::size_t end = std::min(m_items.size(), begin + count);
    for (std::size_t first = begin; first != end;) {
        const std::size_t some = std::min(end - first, m_looks.size());
        TAVIK::GetLooks(std::span(m_items).subspan(first, some), m_looks);
        for (std::size_t i = 0; i != some; ++i) {
            const TAVIK::ItemLook& look = m_looks[i];
            const std::size_t item = first + i;
            const std::uint8_t isShown = look.isVisible ? 1 : 0;
            const std::uint8_t isSelected = look.isSelected ? 1 : 0;
            if (item < m_contents->atomCount() &&
                !isSame(pointOf(look.place), m_contents->positions[item]))
                return State::Outdated;
            m_isOther |= look.rgba != m_before->colours[item] || isShown != m_before->shown[item];
            m_isSelectionOther |= isSelected != (*m_selectedBefore)[item];
            m_marks->colours.push_back(look.rgba);
            m_marks->shown.push_back(isShown);
            m_selection->push_back(isSelected);
        }
        first += some;
    }
    return State::Due;
}

// The bonds of a run are found where they were; other items may have come behind them.
LooksReading::State LooksReading::readBonds(std::size_t count) {
    std::vector<std::uint8_t>& shown = m_marks->bonds;
    while (count != 0 && m_run != m_bonds.size()) {
        const BondRun& run = m_bonds[m_run];
        Compound** const children = run.parent->ChildBegin();
        const auto size = static_cast<std::size_t>(run.parent->ChildEnd() - children);
        const std::size_t first = std::size_t(run.first) + m_bondInRun;
        const std::size_t some =
            std::min({std::size_t(run.count) - m_bondInRun, count, m_looks.size()});
        if (size < first + some)
            return State::Outdated;
        TAVIK::GetLooks({children + first, some}, m_looks);
        for (std::size_t i = 0; i != some; ++i) {
            if (!children[first + i])
                return State::Outdated;
            const std::uint8_t isShown = m_looks[i].isVisible ? 1 : 0;
            m_isOther |= isShown != m_before->bonds[shown.size()];
            shown.push_back(isShown);
        }
        count -= some;
        m_bondInRun += static_cast<std::uint32_t>(some);
        if (m_bondInRun == run.count) {
            ++m_run;
            m_bondInRun = 0;
        }
    }
    return m_run == m_bonds.size() ? State::Done : State::Due;
}

void LooksReading::update(Snapshot& snapshot) {
    if (m_isOther)
        snapshot.marks = std::move(m_marks);
    if (m_isSelectionOther)
        snapshot.selection = std::move(m_selection);
}

} // namespace view
