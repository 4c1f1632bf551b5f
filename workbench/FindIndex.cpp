#include "FindIndex.h"

#include "AtomDetails.h"
#include "ByClass.h"
#include "Kinds.h"
#include "ManyAtoms.h"
#include "Space.h"
#include "Traversal.h"
#include "Waters.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

namespace workbench {

namespace {

using TAVIK::Compound;

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

class IndexWalk : public TAVIK::AtomNameVisitor {
public:
    explicit IndexWalk(FindIndex& index) : m_index(index) {}

    bool Enter(Compound* composite, std::string_view part) override {
        m_levels.push_back({m_path.size(), m_chain});
        m_path += part;
        if (m_residueLevel != 0)
            return true;
        const Role role = m_roles.of(composite, &roleOf);
        if (role == Role::Residue) {
            m_residueLevel = m_levels.size();
            beginResidue(composite, part.substr(0, part.size() - 1));
        } else {
            m_place = none;
            if (role == Role::Chain) {
                m_chain = static_cast<std::uint32_t>(m_index.chains.size());
                m_index.chains.emplace_back(part.substr(0, part.size() - 1));
            }
        }
        return true;
    }
    void Leave() override {
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
    void Visit(Compound* atom, std::string_view name) override {
        if (m_residueLevel == 0)
            beginLoose();
        m_index.atoms.push_back(atom);
        m_index.atomNames.push_back(m_index.names.add(name));
        m_index.residues.back().end = static_cast<std::uint32_t>(m_index.atoms.size());
    }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    struct Level {
        std::size_t length;
        std::uint32_t chain;
    };

    enum class Role { Residue, Chain, Group, Other };
    static Role roleOf(const Compound* item) {
        return dynamic_cast<const TAVIK::Residue*>(item)    ? Role::Residue
               : dynamic_cast<const TAVIK::Molecule*>(item) ? Role::Chain
               : dynamic_cast<const TAVIK::Group*>(item)    ? Role::Group
                                                            : Role::Other;
    }

    std::uint32_t placeOf(std::string_view path) {
        if (m_place == none) {
            m_place = static_cast<std::uint32_t>(m_index.places.size());
            m_index.places.emplace_back(path.substr(0, path.empty() ? 0 : path.size() - 1));
        }
        return m_place;
    }
    FindIndex::Residue& add(Compound* item, std::string_view place, std::string_view label) {
        FindIndex::Residue residue{};
        residue.item = item;
        residue.begin = residue.end = static_cast<std::uint32_t>(m_index.atoms.size());
        residue.place = placeOf(place);
        residue.label = static_cast<std::uint32_t>(m_index.labels.size());
        residue.chain = m_chain;
        residue.insertion = ' ';
        m_index.labels.insert(m_index.labels.end(), label.begin(), label.end());
        m_index.labels.push_back('\0');
        return m_index.residues.emplace_back(residue);
    }
    void beginResidue(Compound* item, std::string_view label) {
        FindIndex::Residue& residue =
            add(item, std::string_view(m_path).substr(0, m_path.size() - label.size() - 1), label);
        std::string_view name = label;
        if (const std::size_t blank = label.rfind(' '); blank != std::string_view::npos) {
            const char* const end = label.data() + label.size();
            const auto [rest, error] =
                std::from_chars(label.data() + blank + 1, end, residue.number);
            if (error == std::errc() && end - rest <= 1) {
                residue.hasNumber = true;
                residue.insertion = rest == end ? ' ' : *rest;
                name = label.substr(0, blank);
            }
        }
        residue.name = m_index.names.add(name);
        residue.kind = kindOf(item, name);
    }
    // The atoms of amino acids and nucleotides stand in groups, those of other residues do not.
    FindIndex::Kind kindOf(Compound* item, std::string_view name) {
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
    // A single atom is an ion, in whatever number of alternative locations.
    void endResidue() {
        FindIndex::Residue& residue = m_index.residues.back();
        const auto begin = m_index.atomNames.begin() + residue.begin;
        if (residue.kind == FindIndex::Kind::Ligand && residue.begin != residue.end &&
            std::all_of(begin, m_index.atomNames.end(),
                        [first = *begin](NameKeys::Key name) { return name == first; }))
            residue.kind = FindIndex::Kind::Ion;
    }
    void beginLoose() {
        if (!m_index.residues.empty() && !m_index.residues.back().item && m_place != none &&
            m_index.residues.back().place == m_place)
            return;
        FindIndex::Residue& residue = add(nullptr, m_path, {});
        residue.name = NameKeys::none;
        residue.kind = FindIndex::Kind::Ligand;
    }

    FindIndex& m_index;
    ByClass<Role> m_roles;
    std::string m_path;
    std::vector<Level> m_levels;
    std::uint32_t m_chain = none;
    std::uint32_t m_place = none;
    std::size_t m_residueLevel = 0; ///< of the residue around, from 1; 0 for none
};

/// The places of atoms that are visited, in that order.
class PlaceList : public TAVIK::AtomPlaceVisitor {
public:
    FindValues::Positions positions;

    PlaceList(bool selected, std::size_t expected) {
        positions.reserve(expected);
        TAVIK::VisitAtomPlaces(TAVIK::Space::instance(), selected, *this);
    }
    void Visit(std::span<Compound* const>, std::span<const TAVIK::AtomPlace> places) override {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        for (const TAVIK::AtomPlace& place : places)
            positions.push_back(place.isValid ? place.position : NearSearch::Point{nan, nan, nan});
    }
};

/// The positions of all atoms, in the order of GetAtoms(); `expected` is about their number.
FindValues::Positions readPlaces(std::size_t expected) {
    PlaceList selected(true, 0);
    PlaceList others(false, expected);
    if (selected.positions.empty())
        return std::move(others.positions);
    if (others.positions.empty())
        return std::move(selected.positions);
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, true);
    FindValues::Positions all;
    all.reserve(atoms.size());
    auto nextSelected = selected.positions.begin();
    auto nextOther = others.positions.begin();
    for (const Compound* const atom : atoms)
        all.push_back(atom->IsSelected() ? *nextSelected++ : *nextOther++);
    return all;
}

} // namespace

std::uint32_t FindIndex::residueOf(std::uint32_t atom) const {
    const auto after =
        std::upper_bound(residues.begin(), residues.end(), atom,
                         [](std::uint32_t a, const Residue& residue) { return a < residue.begin; });
    auto found = after - 1;
    // Residues without atoms begin where the next one does.
    while (found->end <= atom)
        --found;
    return static_cast<std::uint32_t>(found - residues.begin());
}

std::shared_ptr<const FindIndex> FindIndex::read(std::size_t atomCount) {
    if (atomCount == 0) {
        // Counted first, which is quick: then nothing has to be moved while it grows.
        std::vector<Compound*> counted;
        TAVIK::GetAtoms(TAVIK::Space::instance(), counted, true);
        atomCount = counted.size();
    }
    auto index = std::make_shared<FindIndex>();
    index->atoms.reserve(atomCount);
    index->atomNames.reserve(atomCount);
    IndexWalk walk(*index);
    TAVIK::VisitAtomNames(TAVIK::Space::instance(), true, walk);
    return index;
}

char alternateOf(const Compound* atom) {
    const char letter = TAVIK::GetAtomDetails(static_cast<const TAVIK::Atom*>(atom)).alternative;
    return letter == '\0' ? ' ' : letter;
}

bool FindValues::has(Part part) const {
    switch (part) {
    case Part::Positions:
        return positions && !m_areOld;
    case Part::Alternates:
        return alternates != nullptr;
    case Part::Elements:
        return elements != nullptr;
    case Part::Selected:
        return selected != nullptr;
    case Part::Hidden:
        return hidden != nullptr;
    }
    return true;
}

void FindValues::read(const FindIndex& index, Part part) {
    const auto make = [&index](auto& values, auto value) {
        auto made = std::make_shared<std::vector<decltype(value(index.atoms.front()))>>();
        made->reserve(index.atoms.size());
        for (Compound* const atom : index.atoms)
            made->push_back(value(atom));
        values = std::move(made);
    };
    const auto mark = [&index](std::shared_ptr<const Bits>& bits, auto holds) {
        auto made = std::make_shared<Bits>(index.atoms.size());
        for (std::size_t i = 0; i != index.atoms.size(); ++i)
            if (holds(index.atoms[i]))
                made->add(i);
        bits = std::move(made);
    };
    if (has(part))
        return;
    switch (part) {
    case Part::Positions:
        readPositions();
        break;
    case Part::Alternates:
        make(alternates, [](Compound* atom) { return alternateOf(atom); });
        break;
    case Part::Elements:
        make(elements,
             [&names = index.names](Compound* atom) { return names.find(atom->GetType()); });
        break;
    case Part::Selected:
        mark(selected, [](Compound* atom) { return atom->IsSelected(); });
        break;
    case Part::Hidden:
        mark(hidden, [](Compound* atom) { return !atom->IsVisible(); });
        break;
    }
}

// What was prepared of positions is kept while these are the same.
void FindValues::readPositions() {
    auto made = std::make_shared<const Positions>(readPlaces(m_expected));
    m_expected = made->size() + made->size() / 16;
    m_areOld = false;
    // By their bits, as NaN is no number.
    if (positions && positions->size() == made->size() &&
        (made->empty() || std::memcmp(positions->data(), made->data(),
                                      made->size() * sizeof(NearSearch::Point)) == 0))
        return;
    positions = std::move(made);
    near = std::async(std::launch::deferred,
                      [from = positions] { return std::make_shared<const NearSearch>(*from); });
}

void FindValues::read(const FindIndex& index, const FindExpression& expression) {
    if (expression.has(FindStep::Kind::Within))
        read(index, Part::Positions);
    if (expression.has(FindTerm::Kind::Element))
        read(index, Part::Elements);
    if (expression.has(FindTerm::Kind::Alternate))
        read(index, Part::Alternates);
    if (expression.has(FindTerm::Kind::Selected))
        read(index, Part::Selected);
    if (expression.has(FindTerm::Kind::Hidden))
        read(index, Part::Hidden);
}

void FindValues::forgetItems() {
    forgetState();
    alternates.reset();
    elements.reset();
}

void FindValues::forgetOldPositions() {
    if (!m_areOld)
        return;
    positions.reset();
    near = {};
}

void FindValues::forgetState() {
    m_areOld = true;
    selected.reset();
    hidden.reset();
}

} // namespace workbench
