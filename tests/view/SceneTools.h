// What the tests of the view share: small structures by hand, and files, in the data space.
#pragma once

#include "DataMaker.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "files/Files.h"
#include "items/Building.h"

#include <QString>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace scene_tools {

using Items = std::vector<TAVIK::Compound*>;

inline TAVIK::Compound* space() {
    return TAVIK::Space::instance();
}

struct AtomSpec {
    const char* name;
    const char* element;
    std::array<float, 3> at;
    unsigned int model = 0;
};

/// An entry of one chain; residues are added to it, and bonds between atoms in any order.
struct Structure {
    explicit Structure(const std::string& name = "1abc") {
        using TAVIK::DataMaker;
        entry = memory_host::makeDetached(name, "Composite");
        chain = DataMaker::makeCore(entry, "A", "Molecule");
        groups = DataMaker::makeCore(chain, "Groups", "Composite");
        bonds = DataMaker::makeCore(chain, "Bonds", "Composite");
    }

    TAVIK::Compound* add(const std::string& residueName, const std::vector<AtomSpec>& specs) {
        TAVIK::Compound* residue = TAVIK::DataMaker::makeCore(groups, residueName, "Residue");
        for (const AtomSpec& spec : specs)
            atoms.push_back(memory_host::addAtom(
                residue,
                {spec.name, spec.element, TAVIK::Vertex(spec.at[0], spec.at[1], spec.at[2], true),
                 10.0F, spec.model}));
        residues.push_back(residue);
        return residue;
    }
    TAVIK::Compound* bond(std::size_t a, std::size_t b) {
        return memory_host::addBond(bonds, atoms[a], atoms[b]);
    }
    /// Into the data space, as its last entry.
    Structure& attach() {
        memory_host::attach(entry, space());
        return *this;
    }

    TAVIK::Compound* entry;
    TAVIK::Compound* chain;
    TAVIK::Compound* groups;
    TAVIK::Compound* bonds;
    Items residues;
    Items atoms;
};

/// A residue of a chain with its backbone from `x` on; the next one, 3.8 Å further, is linked to
/// it.
inline std::vector<AtomSpec> alanine(float x) {
    return {{"N", "N", {x, 0, 0}},
            {"CA", "C", {x + 1.3F, 0.5F, 0}},
            {"C", "C", {x + 2.5F, 0, 0}},
            {"O", "O", {x + 2.5F, -1.2F, 0}},
            {"CB", "C", {x + 1.3F, 2, 0}}};
}

} // namespace scene_tools
