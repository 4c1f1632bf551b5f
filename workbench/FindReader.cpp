#include "FindReader.h"

#include "InPieces.h"
#include "ManyAtoms.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace workbench {

using TAVIK::Compound;

namespace {

// In a step, which takes far less than a millisecond.
constexpr std::size_t itemsAStep = 512;

template <class T> std::shared_ptr<std::vector<T>> withRoomFor(std::size_t count) {
    auto values = std::make_shared<std::vector<T>>();
    values->reserve(count);
    return values;
}

} // namespace

bool FindReader::has(Part part) const {
    switch (part) {
    case FindValues::Positions:
        return m_values.positions && !m_areOld;
    case FindValues::Alternates:
        return m_values.alternates != nullptr;
    case FindValues::Elements:
        return m_values.elements != nullptr;
    case FindValues::Selected:
        return m_values.selected != nullptr;
    case FindValues::Hidden:
        return m_values.hidden != nullptr;
    }
    return true;
}

bool FindReader::has(FindParts parts) const {
    for (std::size_t part = 0; part != parts.size(); ++part)
        if (parts[part] && !has(static_cast<Part>(part)))
            return false;
    return m_index != nullptr;
}

bool FindReader::advance(FindParts parts, std::chrono::microseconds time) {
    return !forAbout(time, [&] { return step(parts); });
}

void FindReader::finish(FindParts parts) {
    while (step(parts)) {
    }
}

// Reads some more; returns whether that was not all.
bool FindReader::step(FindParts parts) {
    try {
        if (!m_index) {
            stepIndex(parts[FindValues::Positions]);
            return !has(parts);
        }
        for (std::size_t i = 0; i != parts.size(); ++i)
            if (const auto part = static_cast<Part>(i); parts[i] && !has(part)) {
                stepPart(part);
                return !has(parts);
            }
        return false;
    } catch (...) {
        giveUp();
        throw;
    }
}

void FindReader::stepIndex(bool withPositions) {
    if (!m_reading)
        m_reading.emplace(m_atomCount, m_residueCount, withPositions ? &m_values : nullptr);
    else if (!m_reading->advance(itemsAStep))
        endIndex();
}

void FindReader::endIndex() {
    if (m_reading->positions()) {
        m_reading->positions()->finish(m_values);
        m_areOld = false;
    }
    m_index = m_reading->take();
    m_reading.reset();
    m_atomCount = m_index->atoms.size();
    m_residueCount = m_index->residues.size();
}

void FindReader::stepPart(Part part) {
    if (m_part != part)
        beginPart(part);
    readPart(std::min(m_index->atoms.size(), m_next + itemsAStep));
    if (m_next == m_index->atoms.size())
        endPart();
}

void FindReader::beginPart(Part part) {
    giveUpPart();
    const std::size_t count = m_index->atoms.size();
    switch (part) {
    case FindValues::Positions:
        m_positions.emplace(m_values, count);
        break;
    case FindValues::Alternates:
        m_alternates = withRoomFor<char>(count);
        break;
    case FindValues::Elements:
        m_elements = withRoomFor<NameKeys::Key>(count);
        break;
    case FindValues::Selected:
    case FindValues::Hidden:
        m_marks = std::make_shared<Bits>(count);
        break;
    }
    m_part = part;
}

void FindReader::readPart(std::size_t end) {
    std::array<TAVIK::ItemLook, 256> looks;
    while (m_next != end) {
        const std::size_t count = std::min(end - m_next, looks.size());
        const auto atoms = std::span<Compound* const>(m_index->atoms).subspan(m_next, count);
        if (m_positions || m_marks)
            TAVIK::GetLooks(atoms, {looks.data(), count});
        if (m_positions)
            m_positions->take({looks.data(), count});
        for (std::size_t i = 0; m_marks && i != count; ++i)
            if (m_part == FindValues::Selected ? looks[i].isSelected : !looks[i].isVisible)
                m_marks->add(m_next + i);
        for (const Compound* const atom : atoms) {
            if (m_alternates)
                m_alternates->push_back(alternateOf(atom));
            else if (m_elements)
                m_elements->push_back(m_index->names.find(atom->GetType()));
        }
        m_next += count;
    }
}

void FindReader::endPart() {
    switch (*m_part) {
    case FindValues::Positions:
        m_positions->finish(m_values);
        m_areOld = false;
        break;
    case FindValues::Alternates:
        m_values.alternates = std::move(m_alternates);
        break;
    case FindValues::Elements:
        m_values.elements = std::move(m_elements);
        break;
    case FindValues::Selected:
        m_values.selected = std::move(m_marks);
        break;
    case FindValues::Hidden:
        m_values.hidden = std::move(m_marks);
        break;
    }
    giveUpPart();
}

void FindReader::giveUpPart() {
    m_part.reset();
    m_next = 0;
    m_positions.reset();
    m_alternates.reset();
    m_elements.reset();
    m_marks.reset();
}

void FindReader::giveUp() {
    giveUpPart();
    m_reading.reset();
}

void FindReader::forgetItems() {
    giveUp();
    forgetState();
    m_index.reset();
    m_values.alternates.reset();
    m_values.elements.reset();
}

void FindReader::forgetOldPositions() {
    if (!m_areOld)
        return;
    if (m_positions || m_reading)
        giveUp(); // it compares with those
    m_values.positions.reset();
    m_values.near = {};
}

void FindReader::forgetState() {
    m_areOld = true;
    m_values.selected.reset();
    m_values.hidden.reset();
    if (m_positions || m_marks)
        giveUpPart();
    if (m_reading)
        m_reading->dropPositions();
}

} // namespace workbench
