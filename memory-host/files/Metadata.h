// What a file says beside its atoms, written in another format by gemmi: cell, symmetry, title,
// sequences, secondary structure, connections; as far as it holds for the atoms that are saved.
#pragma once

#include "SourceFacts.h"

#include <set>

namespace gemmi::cif {
struct Block;
}

namespace memory_host {

/// mmCIF's identifiers of a residue; empty where it has none.
struct ResidueIds {
    std::string chain;  ///< label_asym_id
    std::string number; ///< label_seq_id
    std::string entity; ///< label_entity_id
    bool endsPolymer = false;
};

class Metadata {
public:
    /// `written` has the atoms of the structure's first model. Takes the metadata out of `facts`.
    Metadata(const SavedModel& model, std::size_t models, const SavedContent& content,
             SourceFacts& facts, const std::vector<WrittenAtom>& written);

    /// The records before the atoms of a PDB file.
    std::string pdbHeaders();
    /// How many of the kept rows are of no bonds, as of hydrogen bonds: PDB files have no record of
    /// them.
    std::size_t otherTypes() const { return m_otherTypes; }
    /// Those of types that gemmi does not know, which data blocks do not have either.
    std::size_t unknownTypes() const { return m_unknownTypes; }
    /// The bonds that SSBOND records of these connections list, too, by atoms of the model: the
    /// records are about all alternative locations.
    std::vector<SavedBond> joinedByDisulfides() const;
    /// A data block of this name, without its atoms.
    std::string mmcifBlock(const std::string& name);
    /// The bonds that no connection says, by atoms of the model.
    const std::vector<SavedBond>& otherBonds() const { return m_otherBonds; }
    /// Those of them that the data block lacks, as the names of an atom are those of others, too.
    const std::vector<SavedBond>& ambiguousBonds() const { return m_ambiguousBonds; }
    /// By number of the residues that start among a model's written atoms. Those of further models
    /// are as in the first.
    std::vector<ResidueIds> residuesOf(const SavedModel& model, const SavedContent& content,
                                       const std::vector<WrittenAtom>& written) const;

private:
    using BondPair = std::pair<std::uint32_t, std::uint32_t>;
    struct Place {
        std::size_t chain;
        std::size_t residue;
    };

    std::vector<ResidueIds> residues() const;
    void nameBlankChains();
    void build(const SavedContent& content, const std::vector<WrittenAtom>& written);
    void addResidue(const SavedContent& content, const WrittenAtom& atom);
    void keepCisBonds(const std::set<std::string>& cis);
    void keepConnections();
    bool isKept(const gemmi::Connection& connection, const BondPair& pair,
                const std::set<BondPair>& lost) const;
    std::vector<bool> ambiguousAtoms() const;
    void addConnections(gemmi::cif::Block& block);

    const SavedModel& m_model;
    gemmi::Structure m_structure;
    std::vector<Place> m_places;         ///< by residue that starts
    std::vector<std::uint32_t> m_starts; ///< by atom: the residue that it is in
    std::vector<char> m_letters;         ///< by atom: of its alternative location, or 0
    std::size_t m_otherTypes = 0;
    std::size_t m_unknownTypes = 0;
    std::vector<SavedBond> m_otherBonds;
    std::vector<SavedBond> m_ambiguousBonds;
};

} // namespace memory_host
