#include "DataWalk.h"

#include "ByClass.h"
#include "InParts.h"
#include "Kinds.h"
#include "ResidueLinks.h"
#include "Shapes.h"
#include "VanDerWaals.h"

#include <algorithm>
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
constexpr std::size_t ahead = 8;

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

} // namespace

class DataWalk::Walk {
public:
    explicit Walk(Compound* root) {
        if (dynamic_cast<TAVIK::Composite*>(root))
            m_levels.push_back({root, 0, Kind::Composite});
        else if (root && kindOf(root) != Kind::Bond) // whose atoms are not below it
            visit(root, root, 0);
    }

    bool advance(std::size_t items) {
        while (items != 0 && !m_levels.empty())
            items -= std::min(items, visitChildren(items));
        while (items != 0 && m_levels.empty() && m_shapes != m_others.size())
            items -= std::min(items, takeShape(m_others[m_shapes], items));
        return !m_levels.empty() || m_shapes != m_others.size();
    }

    std::size_t size() const { return m_items.size(); }

    Collected finish() {
        Collected out;
        Contents& contents = out.contents;
        contents.positions = m_positions.join();
        contents.atomicNumbers = m_atomicNumbers.join();
        contents.roles = m_roles.join();
        contents.residues = m_residues.join();
        contents.entries = std::move(m_entries);
        contents.shapes = std::move(m_collectedShapes);
        out.items = m_items.join();
        out.marks.colours = m_colours.join();
        out.marks.shown = m_shown.join();
        out.marks.ownColours = std::move(m_ownColours);
        out.selection = m_selected.join();
        takeBonds(out);
        linkResidues(contents); // by the bonds, too
        return out;
    }

private:
    /// A composite whose children are being visited. Its vector may be another one in each piece.
    struct Level {
        Compound* item;
        std::uint32_t next; ///< index of a child
        Kind kind;
    };

    // Visits at most so many children of the innermost level, and returns how many it visited, and
    // 1 for the end of the level.
    std::size_t visitChildren(std::size_t most) {
        const std::size_t level = m_levels.size() - 1;
        Compound* const item = m_levels[level].item;
        Compound** const children = item->ChildBegin();
        const auto count = static_cast<std::size_t>(item->ChildEnd() - children);
        std::size_t i = m_levels[level].next;
        const std::size_t first = i;
        const std::size_t end = std::min(count, i + most);
        for (std::size_t near = i; near < std::min(count, i + ahead); ++near)
            __builtin_prefetch(children[near]);
        while (i < end && m_levels.size() == level + 1) {
            if (i + ahead < count)
                __builtin_prefetch(children[i + ahead]);
            Compound* const child = children[i];
            if (level == 0)
                beginEntry();
            if (child)
                visit(child, item, static_cast<std::uint32_t>(i));
            ++i;
        }
        m_levels[level].next = static_cast<std::uint32_t>(i);
        if (i >= count && m_levels.size() == level + 1)
            leave();
        return i - first + 1;
    }

    void leave() {
        const Kind kind = m_levels.back().kind;
        m_levels.pop_back();
        if (kind == Kind::Chain)
            ++m_chain;
        if (kind == Kind::Chain || kind == Kind::Residue)
            m_isInResidue = false;
        if (m_levels.empty())
            endEntry();
    }

    // The entries are the children of the root.
    void beginEntry() {
        endEntry();
        m_isInResidue = false;
        ++m_chain;
    }
    void endEntry() {
        closeResidue();
        if (m_residues.size() != m_firstResidue)
            m_entries.push_back({m_firstResidue});
        m_firstResidue = static_cast<std::uint32_t>(m_residues.size());
    }

    void visit(Compound* item, Compound* parent, std::uint32_t place) {
        const Kind kind = m_kinds.of(item, kindOf);
        switch (kind) {
        case Kind::Atom:
            takeAtom(item);
            return;
        case Kind::Bond:
            takeBond(item, parent, place);
            return;
        case Kind::Other:
            m_others.push_back(item);
            return;
        case Kind::Residue:
            startResidue(item->GetName(), true);
            break;
        case Kind::Chain:
            ++m_chain;
            m_isInResidue = false;
            break;
        case Kind::Composite:
            break;
        }
        m_levels.push_back({item, 0, kind});
    }

    // Items lie scattered in memory: what is asked of one later, too, is asked while it is at hand.
    TAVIK::AtomPlace takeItem(Compound* item) {
        TAVIK::ItemLook look;
        TAVIK::GetLooks({&item, 1}, {&look, 1});
        m_items.push_back(item);
        m_colours.push_back(look.rgba);
        m_shown.push_back(look.isVisible ? 1 : 0);
        m_selected.push_back(look.isSelected ? 1 : 0);
        return look.place;
    }

    void takeBond(Compound* bond, Compound* parent, std::uint32_t place) {
        Compound* const* const parts = bond->PartBegin();
        if (bond->PartEnd() - parts != 2)
            return;
        m_bondIds.push_back({parts[0]->GetId(), parts[1]->GetId()});
        m_bondsShown.push_back(bond->IsVisible() ? 1 : 0);
        addToRuns(m_runs, parent, place);
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
        m_residues.push_back(
            {static_cast<std::uint32_t>(m_positions.size()), m_chain, ResidueKind::Other, false});
    }

    // Once its atoms are known; a residue without any is none to the view.
    void closeResidue() {
        if (m_residues.empty())
            return;
        ResidueEntry& residue = m_residues.back();
        if (residue.firstAtom == m_positions.size()) {
            m_residues.pop_back();
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
        m_positions.push_back(pointOf(takeItem(atom)));
        m_atomicNumbers.push_back(number);
        m_roles.push_back(role);
        m_ids.push_back(atom->GetId());
    }

    // Of the next one, for what takes about as long as `items`; returns how many that was.
    std::size_t takeShape(Compound* item, std::size_t items) {
        if (!m_shape)
            m_shape.emplace(item, m_items.size());
        constexpr std::size_t most = 1U << 24;
        const std::size_t some = std::min(items, most);
        if (m_shape->advance(some * bytesOfItem))
            return some;
        if (std::optional<Shape> shape = m_shape->take()) {
            m_collectedShapes.push_back(std::move(*shape));
            m_ownColours.push_back(showsOwnColours(item) ? 1 : 0);
            takeItem(item);
        }
        m_shape.reset();
        ++m_shapes;
        return 1;
    }

    // Bonds to atoms that are not among those that were collected are left out.
    void takeBonds(Collected& out) {
        const IndexById indices(m_ids.join());
        std::vector<Segment> bonds = m_bondIds.join();
        out.marks.bonds = m_bondsShown.join();
        std::size_t bond = 0;
        std::size_t last = 0;
        for (const BondRun& run : m_runs) {
            for (std::uint32_t i = 0; i != run.count; ++i) {
                const std::uint8_t isShown = out.marks.bonds[bond];
                const Segment& ids = bonds[bond++];
                const Segment segment{indices.of(ids.from), indices.of(ids.to)};
                if (segment.from == noAtom || segment.to == noAtom)
                    continue;
                out.marks.bonds[last] = isShown;
                bonds[last++] = segment;
                addToRuns(out.bonds, run.parent, run.first + i);
            }
        }
        bonds.resize(last);
        out.marks.bonds.resize(last);
        bonds.shrink_to_fit();
        out.marks.bonds.shrink_to_fit();
        out.bonds.shrink_to_fit();
        out.contents.bonds = std::move(bonds);
    }

    ByClass<Kind> m_kinds;
    std::vector<Level> m_levels;
    std::vector<Compound*> m_others;
    std::size_t m_shapes = 0;            ///< how many of the others were asked for a shape
    std::optional<ShapeReading> m_shape; ///< of the next of them
    std::uint32_t m_chain = 0;
    std::uint32_t m_firstResidue = 0; ///< of the entry
    bool m_isInResidue = false;
    std::string m_name; ///< of the residue whose atoms are being taken
    ResidueAtoms m_atoms;

    // As Collected has them.
    InParts<Point> m_positions;
    InParts<std::uint8_t> m_atomicNumbers;
    InParts<Role> m_roles;
    InParts<ResidueEntry> m_residues;
    InParts<Compound*> m_items;
    InParts<Colour> m_colours;
    InParts<std::uint8_t> m_shown;
    InParts<std::uint8_t> m_selected;
    InParts<std::uint8_t> m_bondsShown;
    std::vector<BondRun> m_runs;
    std::vector<Entry> m_entries;
    std::vector<Shape> m_collectedShapes;
    std::vector<std::uint8_t> m_ownColours;
    InParts<unsigned int> m_ids; ///< of the atoms
    InParts<Segment> m_bondIds;  ///< of the bonds' atoms
};

DataWalk::DataWalk(Compound* root) : m_walk(std::make_unique<Walk>(root)) {}
DataWalk::~DataWalk() = default;

bool DataWalk::advance(std::size_t items) {
    return m_walk->advance(items);
}

std::size_t DataWalk::size() const {
    return m_walk->size();
}

Collected DataWalk::finish() {
    return m_walk->finish();
}

Point pointOf(const TAVIK::AtomPlace& place) {
    constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
    return place.isValid ? place.position : Point{nowhere, nowhere, nowhere};
}

Collected collect(Compound* root) {
    DataWalk walk(root);
    while (walk.advance(std::numeric_limits<std::size_t>::max())) {
    }
    return walk.finish();
}

} // namespace view
