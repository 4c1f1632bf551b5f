// A small structure as a file reader builds it, for tests that need one.
#pragma once

#include "DataMaker.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "items/Building.h"
#include "items/Invariants.h"

#include <QString>

#include <string>
#include <vector>

using Items = std::vector<TAVIK::Compound*>;

inline TAVIK::Compound* space() {
    return TAVIK::Space::instance();
}

inline TAVIK::Compound* make(TAVIK::Compound* parent, const std::string& kind,
                             const std::string& name = "item") {
    return TAVIK::DataMaker::makeCore(parent, name, kind);
}

inline TAVIK::Compound* makeAtom(TAVIK::Compound* parent, unsigned int model = 0,
                                 const char* name = "CA", const char* type = "C") {
    return memory_host::addAtom(parent, {name, type, TAVIK::Vertex(1, 2, 3, true), 15.0F, model});
}

inline Items childrenOf(TAVIK::Compound* item) {
    return {item->ChildBegin(), item->ChildEnd()};
}

inline Items partsOf(TAVIK::Compound* item) {
    return {item->PartBegin(), item->PartEnd()};
}

/// What the host finds wrong with itself, for QCOMPARE with an empty text.
inline QString faults() {
    QString lines;
    for (const std::string& fault : memory_host::checkInvariants())
        lines += QString::fromStdString(fault) + u'\n';
    return lines;
}

/// The entry "1abc" with the chain "A": residues "ALA 1", "ALA 2" ... in "Groups", with the groups
/// "Backbone" (N, CA, C) and "Side chain" (CB), and a composite "Bonds" with the bonds N-CA, CA-C,
/// CA-CB of each and C-N to the next.
struct Sample {
    explicit Sample(int count = 2) {
        using namespace memory_host;
        entry = makeDetached("1abc", "Composite");
        chain = make(entry, "Molecule", "A");
        groupsBox = make(chain, "Composite", "Groups");
        bondsBox = make(chain, "Composite", "Bonds");
        for (int i = 0; i != count; ++i) {
            residues.push_back(make(groupsBox, "Residue", "ALA " + std::to_string(i + 1)));
            groups.push_back(make(residues.back(), "Group", "Backbone"));
            const std::size_t first = atoms.size();
            atoms.push_back(makeAtom(groups.back(), 0, "N", "N"));
            atoms.push_back(makeAtom(groups.back(), 0, "CA"));
            atoms.push_back(makeAtom(groups.back(), 0, "C"));
            groups.push_back(make(residues.back(), "Group", "Side chain"));
            atoms.push_back(makeAtom(groups.back(), 0, "CB"));
            const auto bond = [&](std::size_t a, std::size_t b) {
                bonds.push_back(addBond(bondsBox, atoms[a], atoms[b]));
            };
            if (first > 0)
                bond(first - 2, first);
            bond(first, first + 1);
            bond(first + 1, first + 2);
            bond(first + 1, first + 3);
        }
        attach(entry, space());
    }

    TAVIK::Compound* entry;
    TAVIK::Compound* chain;
    TAVIK::Compound* groupsBox;
    TAVIK::Compound* bondsBox;
    Items residues;
    Items groups; ///< two for each residue
    Items atoms;  ///< four for each residue
    Items bonds;
};
