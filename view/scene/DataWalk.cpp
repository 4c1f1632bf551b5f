#include "DataWalk.h"

#include "ByClass.h"
#include "Kinds.h"
#include "Shapes.h"
#include "VanDerWaals.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace view {

namespace {

using TAVIK::Compound;

// How many items before its turn one is fetched.
constexpr std::ptrdiff_t ahead = 8;

enum class Kind : std::uint8_t { Atom, Bond, Residue, Chain, Composite, Other };

Kind kindOf(const Compound* item) {
    if (dynamic_cast<const TAVIK::Atom*>(item))
        return Kind::Atom;
    if (dynamic_cast<const TAVIK::Bond*>(item))
        return Kind::Bond;
    if (dynamic_cast<const TAVIK::Residue*>(item))
        return Kind::Residue;
    if (dynamic_cast<const TAVIK::Molecule*>(item))
        return Kind::Chain;
    if (dynamic_cast<const TAVIK::Composite*>(item))
        return Kind::Composite;
    return Kind::Other;
}

// The indices of atoms by the items' identifiers. These rise in the order of the data but for the
// top level, and leave gaps where other items stand.
class IndexById {
public:
    explicit IndexById(const std::vector<unsigned int>& ids) {
        if (ids.empty())
            return;
        const auto [least, greatest] = std::minmax_element(ids.begin(), ids.end());
        m_first = *least;
        const std::size_t range = std::size_t(*greatest) - m_first + 1;
        m_isDense = range / 8 <= ids.size();
        if (m_isDense)
            m_table.assign(range, noAtom);
        else
            m_sorted.reserve(ids.size());
        for (std::uint32_t i = 0; i != ids.size(); ++i) {
            if (m_isDense)
                m_table[ids[i] - m_first] = i;
            else
                m_sorted.emplace_back(ids[i], i);
        }
        std::sort(m_sorted.begin(), m_sorted.end());
    }

    std::uint32_t of(unsigned int id) const {
        if (m_isDense)
            return id >= m_first && id - m_first < m_table.size() ? m_table[id - m_first] : noAtom;
        const auto found =
            std::lower_bound(m_sorted.begin(), m_sorted.end(), std::pair(id, std::uint32_t(0)));
        return found != m_sorted.end() && found->first == id ? found->second : noAtom;
    }

private:
    unsigned int m_first = 0;
    bool m_isDense = false;
    std::vector<std::uint32_t> m_table;
    std::vector<std::pair<unsigned int, std::uint32_t>> m_sorted;
};

bool areWithin(const Point& a, const Point& b, float distance) {
    float squares = 0;
    for (std::size_t i = 0; i != 3; ++i)
        squares += (a[i] - b[i]) * (a[i] - b[i]);
    return squares <= distance * distance; // false for NaN
}

class Walk {
public:
    Collected take(Compound* root, const Contents& before) {
        reserve(before);
        if (!dynamic_cast<TAVIK::Composite*>(root))
            visit(root);
        for (Compound** entry = root->ChildBegin(); entry != root->ChildEnd(); ++entry) {
            const auto firstResidue = static_cast<std::uint32_t>(m_contents.residues.size());
            m_isInResidue = false;
            ++m_chain;
            if (*entry)
                visitChild(*entry, root, static_cast<std::uint32_t>(entry - root->ChildBegin()));
            closeResidue();
            if (m_contents.residues.size() != firstResidue)
                m_contents.entries.push_back({firstResidue});
        }
        takeBonds();
        linkResidues();
        for (Compound* item : m_others)
            takeShape(item);
        shrink();
        return std::move(m_out);
    }

private:
    void reserve(const Contents& before) {
        m_contents.positions.reserve(before.atomCount());
        m_contents.atomicNumbers.reserve(before.atomCount());
        m_contents.roles.reserve(before.atomCount());
        m_contents.residues.reserve(before.residues.size());
        m_out.items.reserve(before.itemCount());
        m_out.marks.colours.reserve(before.itemCount());
        m_out.marks.shown.reserve(before.itemCount());
        m_out.marks.bonds.reserve(before.bonds.size());
        m_ids.reserve(before.atomCount());
        m_bondIds.reserve(before.bonds.size());
    }

    void visit(Compound* item) {
        switch (m_kinds.of(item, kindOf)) {
        case Kind::Atom:
            takeAtom(item);
            break;
        case Kind::Bond:
            break; // the root, whose atoms are not below it
        case Kind::Residue:
            startResidue(item->GetName(), true);
            visitChildren(item);
            m_isInResidue = false;
            break;
        case Kind::Chain:
            ++m_chain;
            m_isInResidue = false;
            visitChildren(item);
            ++m_chain;
            m_isInResidue = false;
            break;
        case Kind::Composite:
            visitChildren(item);
            break;
        case Kind::Other:
            m_others.push_back(item);
            break;
        }
    }

    void visitChildren(Compound* item) {
        Compound** const begin = item->ChildBegin();
        Compound** const end = item->ChildEnd();
        for (Compound** child = begin; child != end && child != begin + ahead; ++child)
            __builtin_prefetch(*child);
        for (Compound** child = begin; child != end; ++child) {
            if (end - child > ahead)
                __builtin_prefetch(child[ahead]);
            if (*child)
                visitChild(*child, item, static_cast<std::uint32_t>(child - begin));
        }
    }

    void visitChild(Compound* child, Compound* parent, std::uint32_t place) {
        if (m_kinds.of(child, kindOf) == Kind::Bond)
            takeBond(child, parent, place);
        else
            visit(child);
    }

    // Items lie scattered in memory: what is asked of one later, too, is asked while it is at hand.
    void takeItem(Compound* item) {
        m_out.items.push_back(item);
        m_out.marks.colours.push_back(item->GetColor().rgba());
        m_out.marks.shown.push_back(item->IsVisible() ? 1 : 0);
    }

    void takeBond(Compound* bond, Compound* parent, std::uint32_t place) {
        Compound* const* const parts = bond->PartBegin();
        if (bond->PartEnd() - parts != 2)
            return;
        m_bondIds.push_back({parts[0]->GetId(), parts[1]->GetId()});
        m_out.marks.bonds.push_back(bond->IsVisible() ? 1 : 0);
        addToRuns(m_out.bonds, parent, place);
    }
    static void addToRuns(std::vector<BondRun>& runs, Compound* parent, std::uint32_t place) {
        if (!runs.empty() && runs.back().parent == parent &&
            runs.back().first + runs.back().count == place)
            ++runs.back().count;
        else
            runs.push_back({parent, place, 1});
    }

    void startResidue(const std::string& name, bool isResidue) {
        closeResidue();
        m_name = isResidue ? name.substr(0, name.find(' ')) : std::string();
        m_atoms = {};
        m_isInResidue = true;
        m_contents.residues.push_back({static_cast<std::uint32_t>(m_contents.positions.size()),
                                       m_chain, ResidueKind::Other, false});
    }

    // Once its atoms are known; a residue without any is none to the view.
    void closeResidue() {
        if (m_contents.residues.empty())
            return;
        ResidueEntry& residue = m_contents.residues.back();
        if (residue.firstAtom == m_contents.positions.size()) {
            m_contents.residues.pop_back();
        } else if (!m_name.empty()) {
            residue.kind = residueKind(m_name, m_atoms);
            residue.isStandard = isStandard(m_name);
            residue.isProline = m_name == "PRO";
        }
        m_name.clear();
    }

    void takeAtom(Compound* atom) {
        if (!m_isInResidue)
            startResidue({}, false);
        const std::uint8_t number = atomicNumber(atom->GetType());
        const Role role = m_name.empty() ? Role::None : roleOf(atom->GetName(), number);
        m_atoms.add(role, number);
        m_contents.positions.push_back(positionOf(atom));
        m_contents.atomicNumbers.push_back(number);
        m_contents.roles.push_back(role);
        m_ids.push_back(atom->GetId());
        takeItem(atom);
    }

    // Bonds to atoms that are not among those that were collected are left out.
    void takeBonds() {
        const IndexById indices(m_ids);
        m_ids = {};
        std::vector<BondRun> kept;
        std::size_t bond = 0;
        std::size_t last = 0;
        for (const BondRun& run : m_out.bonds) {
            for (std::uint32_t i = 0; i != run.count; ++i) {
                const std::uint8_t isShown = m_out.marks.bonds[bond];
                const Segment& ids = m_bondIds[bond++];
                const Segment segment{indices.of(ids.from), indices.of(ids.to)};
                if (segment.from == noAtom || segment.to == noAtom)
                    continue;
                m_out.marks.bonds[last] = isShown;
                m_bondIds[last++] = segment;
                addToRuns(kept, run.parent, run.first + i);
            }
        }
        m_bondIds.resize(last);
        m_out.marks.bonds.resize(last);
        m_contents.bonds = std::move(m_bondIds);
        m_out.bonds = std::move(kept);
    }

    // An atom of that role in a residue; its first position where there are alternatives.
    const Point* find(std::size_t residue, Role role) const {
        for (std::uint32_t i = m_contents.residues[residue].firstAtom;
             i != m_contents.atomEnd(residue); ++i)
            if (m_contents.roles[i] == role)
                return &m_contents.positions[i];
        return nullptr;
    }
    bool areNear(std::size_t one, Role role, std::size_t other, Role otherRole,
                 float distance) const {
        const Point* const a = find(one, role);
        const Point* const b = find(other, otherRole);
        return a && b && areWithin(*a, *b, distance);
    }
    bool has(std::size_t residue, Role role) const { return find(residue, role) != nullptr; }

    // The bond between residues is 1.3 to 1.6 Å long; alpha carbons are 3.8 Å apart, and phosphorus
    // atoms at most 7.5 Å. The limits leave room for poor models, and none for a missing residue.
    bool areLinked(std::size_t one, std::size_t next) const {
        constexpr float bond = 2.5F;
        constexpr float alphaCarbons = 4.6F;
        constexpr float phosphates = 8.0F;
        const ResidueKind kind = m_contents.residues[one].kind;
        if (kind == ResidueKind::AminoAcid) {
            if (has(one, Role::C) && has(next, Role::N))
                return areNear(one, Role::C, next, Role::N, bond);
            return areNear(one, Role::CA, next, Role::CA, alphaCarbons);
        }
        if (has(one, Role::O3Sugar) && has(next, Role::P))
            return areNear(one, Role::O3Sugar, next, Role::P, bond);
        return areNear(one, Role::P, next, Role::P, phosphates);
    }

    void linkResidues() {
        std::vector<ResidueEntry>& residues = m_contents.residues;
        for (std::size_t i = 1; i < residues.size(); ++i) {
            ResidueEntry& before = residues[i - 1];
            ResidueEntry& residue = residues[i];
            if (before.chain != residue.chain || before.kind != residue.kind ||
                (residue.kind != ResidueKind::AminoAcid &&
                 residue.kind != ResidueKind::Nucleotide) ||
                !areLinked(i - 1, i))
                continue;
            residue.isLinkedToPrevious = true;
            residue.isPolymer = true;
            before.isPolymer = true;
        }
    }

    void takeShape(Compound* item) {
        if (std::optional<Shape> shape = shapeOf(item, m_out.items.size())) {
            m_contents.shapes.push_back(std::move(*shape));
            takeItem(item);
        }
    }

    void shrink() {
        m_contents.positions.shrink_to_fit();
        m_contents.atomicNumbers.shrink_to_fit();
        m_contents.roles.shrink_to_fit();
        m_contents.residues.shrink_to_fit();
        m_contents.bonds.shrink_to_fit();
        m_out.items.shrink_to_fit();
        m_out.marks.colours.shrink_to_fit();
        m_out.marks.shown.shrink_to_fit();
        m_out.marks.bonds.shrink_to_fit();
        m_out.bonds.shrink_to_fit();
    }

    Collected m_out;
    Contents& m_contents = m_out.contents;
    ByClass<Kind> m_kinds;
    std::vector<Compound*> m_others;
    std::vector<unsigned int> m_ids; ///< of the atoms
    std::vector<Segment> m_bondIds;  ///< of the bonds' atoms
    std::uint32_t m_chain = 0;
    bool m_isInResidue = false;
    std::string m_name; ///< of the residue whose atoms are being taken
    ResidueAtoms m_atoms;
};

} // namespace

Point positionOf(const Compound* atom) {
    const TAVIK::Vertex at = atom->GetPosition();
    constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
    return at.isValid() ? Point{at[0], at[1], at[2]} : Point{nowhere, nowhere, nowhere};
}

Collected collect(Compound* root, const Contents& before) {
    return Walk().take(root, before);
}

} // namespace view
