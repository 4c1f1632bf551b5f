#include "ShownAtoms.h"

#include "ByClass.h"
#include "Kinds.h"
#include "ManyAtoms.h"
#include "PartialCharge.h"
#include "Radii.h"
#include "ResidueWalk.h"
#include "Space.h"
#include "Traversal.h"
#include "VanDerWaals.h"
#include "Waters.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace solid {

namespace {

using TAVIK::Compound;

enum class Place { Atom, Branch, Other };

Place placeOf(const Compound* item) {
    return dynamic_cast<const TAVIK::Atom*>(item)        ? Place::Atom
           : dynamic_cast<const TAVIK::Composite*>(item) ? Place::Branch
                                                         : Place::Other;
}

class AtomSearch {
public:
    bool hasAtoms(Compound* item) {
        switch (m_places.of(item, placeOf)) {
        case Place::Atom:
            return true;
        case Place::Other:
            return false;
        case Place::Branch:
            break;
        }
        return std::any_of(item->ChildBegin(), item->ChildEnd(),
                           [this](Compound* child) { return child && hasAtoms(child); });
    }

private:
    ByClass<Place> m_places;
};

class EntryReader {
public:
    explicit EntryReader(Compound* entry) {
        m_atoms.entry = entry;
        m_atoms.name = entry->GetName();
    }

    EntryAtoms read() {
        ResidueWalk()(m_atoms.entry, [this](const ResidueAtoms& group) { take(group); });
        return std::move(m_atoms);
    }

private:
    // Residues are read whole, because of their hydrogens.
    void take(const ResidueAtoms& group) {
        const std::string_view residue = group.name;
        const std::vector<Compound*>& items = group.atoms;
        m_looks.resize(items.size());
        TAVIK::GetLooks(items, m_looks);
        const bool isWater = TAVIK::isWater(residue);
        const bool isUnited = hasUnitedAtoms(residue) && std::ranges::none_of(items, isHydrogen);
        for (std::size_t i = 0; i != items.size(); ++i) {
            const TAVIK::ItemLook& look = m_looks[i];
            if (!look.isVisible || !look.place.isValid || (isWater && !look.isSelected))
                continue;
            const std::uint8_t element = atomicNumber(items[i]->GetType());
            const std::string_view united = isUnited ? residue : std::string_view();
            m_atoms.balls.push_back({look.place.position, radiusOf(items[i], element, united)});
            m_atoms.colors.push_back(look.rgba);
            m_atoms.atoms.push_back(items[i]->GetId());
            m_atoms.elements.push_back(element);
        }
    }

    // That of the file, else of an atom with its hydrogens in a residue of that name, else of its
    // element.
    float radiusOf(const Compound* item, std::uint8_t element, std::string_view residue) {
        const auto known = TAVIK::GetPartialCharge(static_cast<const TAVIK::Atom*>(item));
        if (known.isKnown)
            return known.radius;
        const float radius = residue.empty() ? 0.0F : unitedAtomRadius(residue, item->GetName());
        m_atoms.united += radius > 0 ? 1 : 0;
        return radius > 0 ? radius : vanDerWaalsRadius(element);
    }
    static bool isHydrogen(const Compound* atom) {
        const std::string element = atom->GetType();
        return element == "H" || element == "D";
    }

    EntryAtoms m_atoms;
    std::vector<TAVIK::ItemLook> m_looks;
};

// The entries with atoms in which something is selected; where there is none, as when only a
// surface is, all of them.
std::vector<Compound*> entriesToRead() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::vector<Compound*> all(space->ChildBegin(), space->ChildEnd());
    std::erase(all, nullptr);
    std::vector<Compound*> selected;
    AtomSearch search;
    std::copy_if(all.begin(), all.end(), std::back_inserter(selected), [&search](Compound* entry) {
        return entry->HasSelected() && search.hasAtoms(entry);
    });
    return selected.empty() ? all : selected;
}

} // namespace

std::vector<EntryAtoms> readShownAtoms() {
    std::vector<EntryAtoms> all;
    for (Compound* const entry : entriesToRead()) {
        EntryAtoms atoms = EntryReader(entry).read();
        if (!atoms.balls.empty())
            all.push_back(std::move(atoms));
    }
    return all;
}

} // namespace solid
