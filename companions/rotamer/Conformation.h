// A residue of the data as its rotamers need it: the atoms of one conformation, and what the others
// look like.
#pragma once

#include "Kinds.h"
#include "sidechain/SideChain.h"

#include <map>
#include <string>
#include <vector>

namespace rotamer {

/// An atom of the conformation.
struct ConformationAtom {
    TAVIK::Atom* item = nullptr;
    std::string name;
    std::string element;
    unsigned int model = 0; ///< 0: shared by all alternative models
    Point position{};
};

/// The conformation that rotamers are made of: the atoms that all alternative models of a residue
/// share, and those of the first model. Valid until the data change.
struct Conformation {
    /// The places of a model's own atoms by their names.
    using Places = std::map<std::string, Point, std::less<>>;

    std::string type;                     ///< the residue's name without the number: "MET"
    std::vector<ConformationAtom> atoms;  ///< at least one, if there is no fault
    unsigned int firstModel = 1;          ///< the number of the first model; 1 without models
    std::map<unsigned int, Places> later; ///< the models after the first one
    std::string fault;                    ///< why there are no rotamers of it; else empty

    /// The largest number of a model; 1 without models.
    unsigned int lastModel() const { return later.empty() ? firstModel : later.rbegin()->first; }
};

/// The model that an atom belongs to; 0: to all.
unsigned int modelOf(const TAVIK::Atom& atom);

/// The residue that an item is or hangs in; null where there is none.
const TAVIK::Compound* residueOf(const TAVIK::Compound* item);

Conformation readConformation(TAVIK::Compound* residue);

/// The side chain; it refers to names in `conformation`.
SideChain sideChainOf(const Conformation& conformation);

} // namespace rotamer
