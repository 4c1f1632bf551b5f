// Sorts the atoms that a reader brings into models, chains and residues.
#pragma once

#include "AtomTable.h"
#include "FileReport.h"
#include "ListedBonds.h"

#include <unordered_map>
#include <unordered_set>

namespace memory_host {

/// The identity of a residue within a model, with names as numbers. `name` 0 stands for all
/// residues at the position.
struct ResidueKey {
    std::uint32_t chain = 0;
    std::uint32_t number = 0;
    std::uint32_t segment = 0;
    std::uint32_t name = 0;
    std::uint32_t part = 0; ///< number of ends of molecules before it

    ResidueKey position() const { return {chain, number, segment, 0, part}; }
    bool operator==(const ResidueKey&) const = default;
};

/// The identity of an atom within a model.
struct AtomKey {
    std::uint32_t residue = 0;
    std::uint32_t name = 0;
    std::uint16_t alternative = 0;

    bool operator==(const AtomKey&) const = default;
};

struct KeyHash {
    std::size_t operator()(const ResidueKey& key) const {
        return mix(mix(key.chain, key.number),
                   mix(std::uint64_t{key.part} << 32 | key.segment, key.name));
    }
    std::size_t operator()(const AtomKey& key) const {
        return mix(std::uint64_t{key.residue} << 16 | key.alternative, key.name);
    }

private:
    static std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
        const std::uint64_t product = (a * 0x9e3779b97f4a7c15U ^ b) * 0xbf58476d1ce4e5b9U;
        return product ^ product >> 29;
    }
};

/// Takes the atoms of one entry in the order of the file.
///
/// Atoms of one residue need not be consecutive. A position with several residue names is one
/// residue if the further names are in alternative locations, and otherwise several. When an atom
/// of a residue is repeated, a new residue of the same name starts: in files with more residues
/// than numbers, the numbers start again. Without numbers, a residue is a run of atoms with one
/// residue name; waters are separated by repeated atoms.
class TableBuilder {
public:
    /// `atomsBefore` is the number of atoms in other entries of the file.
    explicit TableBuilder(FileReport& report, std::size_t atomsBefore = 0)
        : m_report(report), m_atomsBefore(atomsBefore), m_listedBonds(*m_structure.names) {}

    /// The following atoms belong to this model; it is a new one unless a model of this number
    /// exists and `reopen` is set.
    void startModel(std::string_view number, bool reopen);
    void add(const AtomRow& row);
    /// A molecule ends here: the following atoms belong to other residues, whatever their numbers.
    void endResidues();
    std::size_t atomCount() const { return m_atomCount; }
    /// The bonds that the file lists, before, between or after its atoms.
    ListedBonds& listedBonds() { return m_listedBonds; }
    /// Sorts what came, and finds the bonds; the entry is called `name`.
    StructureTable finish(std::string name);

private:
    struct Model {
        ModelTable table;
        std::unordered_map<std::uint32_t, std::uint32_t> chains;
        std::unordered_map<ResidueKey, std::uint32_t, KeyHash> residues;
        /// Atoms of residues that may be repeated: repeated residues, and waters without numbers.
        std::unordered_set<AtomKey, KeyHash> seenAtoms;
        std::vector<bool> isWatched;       ///< by residue: its atoms are in seenAtoms
        std::vector<bool> hasAlternatives; ///< by residue
        std::vector<Serial> serials;       ///< by atom, up to the last one that has one
        AtomRow last;
        ResidueKey lastKey;        ///< of the last atom
        std::uint32_t current = 0; ///< residue of the last atom
        std::uint32_t part = 0;    ///< see ResidueKey
        bool hasEnded = true;      ///< the next atom begins a residue
    };

    std::uint16_t alternativeNumber(std::string_view letter);
    bool modelHasAtoms() const { return m_model && !m_model->table.atoms.empty(); }
    ResidueKey keyOf(const AtomRow& row);
    std::uint32_t residueOf(const AtomRow& row, std::uint32_t name, std::uint16_t alternative);
    std::uint32_t knownResidue(const ResidueKey& key, std::uint16_t alternative);
    std::uint32_t newResidue(const ResidueKey& key);
    void watch(std::uint32_t residue);
    void keepIds(const AtomRow& row);
    std::vector<std::uint32_t> letters();
    void remarkOnBonds(const Bonds& bonds);
    void remarkOnListedBonds();
    void remarkOnNames();
    void remarkOnResidues(const ModelTable& table);

    void checkRoom();
    void addName(std::uint32_t residue, std::uint32_t name);

    FileReport& m_report;
    std::size_t m_atomsBefore;
    std::size_t m_nextCheck = 0; ///< of the room, at this number of atoms
    StructureTable m_structure;
    ListedBonds m_listedBonds;
    std::vector<std::unique_ptr<Model>> m_models;
    std::unordered_map<std::string, std::size_t> m_byNumber;
    std::unordered_map<std::string, std::uint16_t> m_alternatives;
    Model* m_model = nullptr;
    std::size_t m_atomCount = 0;
};

} // namespace memory_host
