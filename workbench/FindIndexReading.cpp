#include "FindIndexReading.h"

#include "Kinds.h"
#include "ManyAtoms.h"
#include "Space.h"
#include "Waters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

namespace workbench {

using TAVIK::Compound;

namespace {

/// Few enough to be in the processor's cache still.
constexpr std::size_t atOnce = 256;

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

FindIndexReading::Role FindIndexReading::roleOf(const Compound* item) {
    return dynamic_cast<const TAVIK::Residue*>(item)    ? Role::Residue
           : dynamic_cast<const TAVIK::Molecule*>(item) ? Role::Chain
           : dynamic_cast<const TAVIK::Group*>(item)    ? Role::Group
                                                        : Role::Other;
}

FindIndexReading::FindIndexReading(std::size_t atoms, std::size_t residues,
                                   const FindValues* values)
    : m_index(std::make_shared<FindIndex>()), m_walk(TAVIK::Space::instance(), true, *this) {
    const auto aFewMore = [](std::size_t count) { return count + count / 16; };
    // Arrays that have to grow shall not do so at the same time.
    m_index->atoms.reserve(aFewMore(std::max<std::size_t>(atoms, 40'000)));
    m_index->atomNames.reserve(aFewMore(std::max<std::size_t>(atoms, 50'000)));
    m_index->residues.reserve(aFewMore(residues));
    if (values)
        m_positions.emplace(*values, aFewMore(std::max<std::size_t>(atoms, 60'000)));
}

bool FindIndexReading::advance(std::size_t items) {
    const bool isMore = m_walk.advance(items);
    takePositions();
    return isMore;
}

// Those of atoms that were visited.
void FindIndexReading::takePositions() {
    if (!m_positions)
        return;
    std::array<TAVIK::ItemLook, atOnce> looks;
    while (m_positions->size() != m_index->atoms.size()) {
        const std::size_t first = m_positions->size();
        const std::size_t count = std::min(looks.size(), m_index->atoms.size() - first);
        TAVIK::GetLooks({m_index->atoms.data() + first, count}, looks);
        m_positions->take({looks.data(), count});
    }
}

bool FindIndexReading::Enter(Compound* composite, std::string_view part) {
    m_levels.push_back({m_path.size(), m_chain});
    m_path += part;
    if (m_residueLevel != 0)
        return true;
    const std::string_view name = part.substr(0, part.size() - 1);
    const Role role = m_roles.of(composite, &roleOf);
    if (role == Role::Residue) {
        m_residueLevel = m_levels.size();
        beginResidue(composite, name);
        return true;
    }
    m_place = none;
    if (role == Role::Chain) {
        m_chain = static_cast<std::uint32_t>(m_index->chains.size());
        m_index->chains.emplace_back(name);
    }
    return true;
}

void FindIndexReading::Leave() {
    if (m_residueLevel == 0)
        m_place = none;
    if (m_residueLevel == m_levels.size()) {
        endResidue();
        m_residueLevel = 0;
    }
    m_path.resize(m_levels.back().length);
    m_chain = m_levels.back().chain;
    m_levels.pop_back();
}

void FindIndexReading::Visit(Compound* atom, std::string_view name) {
    if (m_residueLevel == 0)
        beginLoose();
    m_index->atoms.push_back(atom);
    m_index->atomNames.push_back(m_index->names.add(name));
    m_index->residues.back().end = static_cast<std::uint32_t>(m_index->atoms.size());
}

std::uint32_t FindIndexReading::placeOf(std::string_view path) {
    if (m_place == none) {
        m_place = static_cast<std::uint32_t>(m_index->places.size());
        m_index->places.emplace_back(path.substr(0, path.empty() ? 0 : path.size() - 1));
    }
    return m_place;
}

FindIndex::Residue& FindIndexReading::add(Compound* item, std::string_view place,
                                          std::string_view label) {
    FindIndex::Residue residue{};
    residue.item = item;
    residue.begin = residue.end = static_cast<std::uint32_t>(m_index->atomNames.size());
    residue.place = placeOf(place);
    residue.label = static_cast<std::uint32_t>(m_index->labels.size());
    residue.chain = m_chain;
    residue.insertion = ' ';
    m_index->labels.insert(m_index->labels.end(), label.begin(), label.end());
    m_index->labels.push_back('\0');
    return m_index->residues.emplace_back(residue);
}

void FindIndexReading::beginResidue(Compound* item, std::string_view label) {
    FindIndex::Residue& residue =
        add(item, std::string_view(m_path).substr(0, m_path.size() - label.size() - 1), label);
    std::string_view name = label;
    if (const std::size_t blank = label.rfind(' '); blank != std::string_view::npos) {
        const char* const end = label.data() + label.size();
        const auto [rest, error] = std::from_chars(label.data() + blank + 1, end, residue.number);
        if (error == std::errc() && end - rest <= 1) {
            residue.hasNumber = true;
            residue.insertion = rest == end ? ' ' : *rest;
            name = label.substr(0, blank);
        }
    }
    residue.name = m_index->names.add(name);
    residue.kind = kindOf(item, name);
}

// The atoms of amino acids and nucleotides stand in groups, those of other residues do not.
FindIndex::Kind FindIndexReading::kindOf(Compound* item, std::string_view name) {
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child) {
        if (!*child || m_roles.of(*child, &roleOf) != Role::Group)
            continue;
        const std::string group = (*child)->GetName();
        if (isOneOf(group, {"Backbone", "Side chain"}))
            return FindIndex::Kind::Protein;
        if (isOneOf(group, {"Phosphate", "Sugar", "Base"}))
            return FindIndex::Kind::Nucleic;
    }
    return TAVIK::isWater(name) ? FindIndex::Kind::Water : FindIndex::Kind::Ligand;
}

void FindIndexReading::beginLoose() {
    if (!m_index->residues.empty() && !m_index->residues.back().item && m_place != none &&
        m_index->residues.back().place == m_place)
        return;
    FindIndex::Residue& residue = add(nullptr, m_path, {});
    residue.name = NameKeys::none;
    residue.kind = FindIndex::Kind::Ligand;
}

// A single atom is an ion, in whatever number of alternative locations.
void FindIndexReading::endResidue() {
    FindIndex::Residue& residue = m_index->residues.back();
    const auto begin = m_index->atomNames.begin() + residue.begin;
    if (residue.kind == FindIndex::Kind::Ligand && residue.begin != residue.end &&
        std::all_of(begin, m_index->atomNames.end(),
                    [first = *begin](NameKeys::Key name) { return name == first; }))
        residue.kind = FindIndex::Kind::Ion;
}

} // namespace workbench
