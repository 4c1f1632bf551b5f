// The bonds that a file lists, as pairs of serial numbers or of atoms' names, and which atoms of a
// model they join.
#pragma once

#include "AtomTable.h"

#include <limits>
#include <span>
#include <unordered_map>

namespace memory_host {

/// A listed bond is left out when its atoms are farther apart than this, in Å: then it names the
/// wrong atoms. The bonds between beads of coarse-grained models are shorter.
constexpr double longestListedBond = 6.0;
/// A listed bond is left out if one of its atoms has this many bonds already.
constexpr std::uint32_t mostListedBonds = 64;

/// One of the two atoms of a listed bond. The names are the file's.
struct ListedAtom {
    std::string_view chain;
    std::string_view number;      ///< of the residue
    std::string_view insertion;   ///< insertion code, or empty
    std::string_view residue;     ///< its name; empty: any
    std::string_view name;        ///< of the atom
    std::string_view alternative; ///< letter; empty: each alternative location that there is
    bool byLabel = false;         ///< chain and number are mmCIF's label ids, not the author's
};

/// The parts of a model that are needed to resolve bonds, all in the order of the file.
struct ListedBondsModel {
    const ModelTable& table;
    std::span<const Serial> serials;        ///< by atom; may end before the last one
    std::span<const std::uint32_t> letters; ///< names, by alternative location; that of 0 is 0
};

/// Collects the listed bonds of one entry, which hold for each of its models. Time and memory are
/// linear in the bonds and in the atoms, whatever is listed.
class ListedBonds {
public:
    /// `names` are the table's, and must outlive this.
    explicit ListedBonds(FileNames& names) : m_names(names) {}

    void add(Serial a, Serial b, std::size_t line);
    void add(const ListedAtom& a, const ListedAtom& b, std::size_t line);
    /// Counts a record that lists a bond but cannot be read.
    void addIllegible(std::size_t line) { leaveOut(line); }
    bool isEmpty() const { return m_bonds.empty(); }

    /// The bonds of a model as pairs of atom indices, ascending and unique. Left out are bonds
    /// whose atoms are missing, have no position, are ambiguous, are in different alternative
    /// locations, or are too far apart.
    std::vector<BondPair> inModel(const ListedBondsModel& model);

    /// The number of listed bonds that are in no model, and the line of the first; to be called
    /// after the last model.
    struct LeftOut {
        std::size_t count = 0;
        std::size_t line = 0;
    };
    LeftOut leftOut() const;

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    struct Key {
        std::uint32_t residue; ///< in the wanted residues
        std::uint32_t name;
        std::uint32_t letter; ///< 0: any
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const {
            const std::uint64_t mixed =
                (key.residue * 0x9e3779b97f4a7c15U ^ key.name) * 0xbf58476d1ce4e5b9U ^ key.letter;
            return mixed * 0x94d049bb133111ebU >> 7;
        }
    };
    /// One side of a listed bond: the atom of a serial number, or the atoms of a name, in several
    /// alternative locations perhaps.
    struct Partner {
        std::uint32_t residueName = 0;  ///< 0: any
        std::uint32_t next = none;      ///< the partner with the same key but another residue name
        std::uint32_t firstBond = none; ///< those where it is the first one; ends with the next's
        // In the current model:
        std::uint32_t model = 0; ///< counts from 1; the fields below are valid for this model
        std::uint32_t firstAtom = none;
        std::uint32_t atomCount = 0;
        bool isAmbiguous = false;
    };
    struct FoundAtom {
        std::uint32_t atom;
        std::uint32_t next;
    };
    struct Bond {
        std::uint32_t a, b; ///< partners, the lower one first
        std::size_t line;
        bool isUsed = false;
    };
    using Residues = std::unordered_map<std::uint64_t, std::uint32_t>;

    void leaveOut(std::size_t line);
    void addBond(std::uint32_t a, std::uint32_t b, std::size_t line);
    std::uint32_t partnerOf(Serial serial);
    std::uint32_t partnerOf(const ListedAtom& atom);
    void prepare();
    void findAtoms(const ListedBondsModel& model);
    void findByName(const ListedBondsModel& model, std::uint32_t wanted, std::uint32_t atom);
    void take(const ListedBondsModel& model, std::uint32_t partner, std::uint32_t atom);
    bool join(const ModelTable& table, const Bond& bond, std::vector<BondPair>& pairs) const;

    FileNames& m_names;
    std::unordered_map<Serial, std::uint32_t> m_bySerial;
    std::unordered_map<Key, std::uint32_t, KeyHash> m_byName;
    Residues m_residues; ///< wanted ones, by the names of chain and number
    Residues m_labelled; ///< likewise by label ids
    std::uint32_t m_residueCount = 0;
    std::vector<Partner> m_partners;
    std::vector<Bond> m_bonds;
    bool m_isPrepared = false;
    LeftOut m_leftOut;
    // Of the current model:
    std::uint32_t m_model = 0;
    std::vector<FoundAtom> m_atoms;
    std::vector<std::uint32_t> m_found; ///< partners
};

} // namespace memory_host
