// Small structures with known values, for the tests of the workbench.
#pragma once

#include "AtomDetails.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "Kinds.h"
#include "Space.h"

#include <string>
#include <vector>

namespace test_data {

/// An atom of a residue or another composite.
inline TAVIK::Atom* addAtom(TAVIK::Compound* parent, const char* name, const char* type, float x,
                            float y, float z, const TAVIK::AtomDetails& details = {}) {
    TAVIK::AtomValues values;
    values.name = name;
    values.type = type;
    values.position = TAVIK::Vertex(x, y, z, true);
    values.temperature = 10.0F;
    values.details = details;
    return TAVIK::DataMaker::makeAtom(parent, values);
}

/// The entry "made" with chains "A", "B" ..., of residues "GLY 1", "GLY 2" ... in "Groups", each
/// with the atoms N and CA in "Backbone": N of residue r of chain c at (10 c, 3 r, 0), CA 1 Å above
/// it.
class Chains {
public:
    Chains(int chains, int residues) : m_residuesEach(residues) {
        using TAVIK::DataMaker;
        TAVIK::Space* const space = TAVIK::Space::instance();
        const DataAdder<TAVIK::Space> guard(nullptr, space);
        entry = DataMaker::makeCore(space, "made", "Composite");
        for (int c = 0; c != chains; ++c) {
            m_chains.push_back(
                DataMaker::makeCore(entry, std::string(1, static_cast<char>('A' + c)), "Molecule"));
            TAVIK::Compound* const groups =
                DataMaker::makeCore(m_chains.back(), "Groups", "Composite");
            for (int r = 0; r != residues; ++r) {
                m_residues.push_back(
                    DataMaker::makeCore(groups, "GLY " + std::to_string(r + 1), "Residue"));
                TAVIK::Compound* const backbone =
                    DataMaker::makeCore(m_residues.back(), "Backbone", "Group");
                const auto x = static_cast<float>(10 * c);
                const auto y = static_cast<float>(3 * r);
                m_atoms.push_back(addAtom(backbone, "N", "N", x, y, 0.0F));
                m_atoms.push_back(addAtom(backbone, "CA", "C", x, y, 1.0F));
            }
        }
    }

    TAVIK::Compound* chain(int c) const { return m_chains[static_cast<std::size_t>(c)]; }
    TAVIK::Compound* residue(int c, int r) const {
        return m_residues[static_cast<std::size_t>(c * m_residuesEach + r)];
    }
    TAVIK::Compound* atom(int c, int r, int a) const {
        return m_atoms[static_cast<std::size_t>(2 * (c * m_residuesEach + r) + a)];
    }

    TAVIK::Compound* entry;

private:
    int m_residuesEach;
    std::vector<TAVIK::Compound*> m_chains;
    std::vector<TAVIK::Compound*> m_residues;
    std::vector<TAVIK::Compound*> m_atoms;
};

} // namespace test_data
