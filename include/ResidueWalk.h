// The atoms of an entry, residue by residue.
#pragma once

#include "ByClass.h"
#include "Kinds.h"
#include "Traversal.h"

#include <string>
#include <string_view>
#include <vector>

/// Atoms that stand together, in the order of the data.
struct ResidueAtoms {
    TAVIK::Compound* residue = nullptr; ///< null for atoms between residues
    TAVIK::Compound* chain = nullptr;   ///< null for atoms in none
    std::string name;                   ///< the residue's without its number: "MET"; or empty
    std::vector<TAVIK::Compound*> atoms;
};

/// Gathers all atoms below an item, whatever is shown or selected.
class ResidueWalk {
public:
    /// Calls `take` with the atoms of each residue, all of its models, and with those between them.
    template <class Take> void operator()(TAVIK::Compound* item, const Take& take) {
        walk(item, take);
        give(take);
    }

private:
    enum class Place { Atom, Residue, Chain, Branch, Other };

    static Place placeOf(const TAVIK::Compound* item) {
        return dynamic_cast<const TAVIK::Residue*>(item)     ? Place::Residue
               : dynamic_cast<const TAVIK::Atom*>(item)      ? Place::Atom
               : dynamic_cast<const TAVIK::Molecule*>(item)  ? Place::Chain
               : dynamic_cast<const TAVIK::Composite*>(item) ? Place::Branch
                                                             : Place::Other;
    }

    template <class Take> void walk(TAVIK::Compound* item, const Take& take) {
        switch (m_places.of(item, placeOf)) {
        case Place::Residue: {
            give(take);
            TAVIK::GetAtoms(item, m_group.atoms, true);
            m_group.residue = item;
            const std::string name = item->GetName();
            m_group.name = name.substr(0, name.find(' '));
            give(take);
            break;
        }
        case Place::Atom:
            m_group.atoms.push_back(item);
            break;
        case Place::Chain:
            give(take);
            m_group.chain = item;
            walkChildren(item, take);
            give(take);
            m_group.chain = nullptr;
            break;
        case Place::Branch:
            walkChildren(item, take);
            break;
        case Place::Other:
            break;
        }
    }
    template <class Take> void walkChildren(TAVIK::Compound* item, const Take& take) {
        TAVIK::Compound** const last = item->ChildEnd();
        for (TAVIK::Compound** child = item->ChildBegin(); child != last; ++child)
            if (*child)
                walk(*child, take);
    }
    template <class Take> void give(const Take& take) {
        if (!m_group.atoms.empty())
            take(m_group);
        m_group.atoms.clear();
        m_group.residue = nullptr;
        m_group.name.clear();
    }

    TAVIK::detail::ByClass<Place> m_places;
    ResidueAtoms m_group;
};
