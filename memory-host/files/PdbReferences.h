// The records of PDB files that name residues or atoms, as LINK and HELIX: what becomes of them
// when these are gone.
#pragma once

#include "BondReferences.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace memory_host::pdb {

struct RecordPlaces;

/// Collects the residues and atoms that records name, learns from the rows of atoms which of them
/// are left, and brings the records up to date.
class References {
public:
    /// Takes what a record names, if it names any; all records come first.
    void collect(std::string_view record);
    /// Takes a row of an atom, and whether it is kept; all rows, in their order. The texts live
    /// longer than this.
    void see(std::string_view row, bool isKept);
    /// An atom of a bond.
    struct BondAtom {
        std::string_view row;
        char letter; ///< of the alternative location that it has now, or 0
    };
    /// Takes the atoms of a bond that is gone; of one that is left and relettered; see
    /// BondReferences.
    void loseBond(const BondAtom& first, const BondAtom& second, bool isFoundAgain);
    void reletterBond(const BondAtom& first, const BondAtom& second, const SavedBond& bond);
    bool haveBondsChanged() const { return !m_bonds.areNone(); }
    /// Takes those of a bond that is left, behind all that are gone: a record may name both.
    void keepBond(const BondAtom& first, const BondAtom& second);
    /// To be called after the last row, and before update().
    void settle();

    /// What a record becomes: itself; a changed one; nothing, if what it names is gone.
    struct Outcome {
        bool isKept = true;
        std::string changed; ///< empty: as it was
        /// How many bonds that are gone come back, as the record is of other locations, too.
        std::size_t comingBack = 0;
        std::size_t joined = 0; ///< further bonds that are read from it, for the same reason
    };
    Outcome update(std::string_view record);
    /// The relettered bonds that none of the records updated so far lists; see BondReferences.
    std::vector<const SavedBond*> unlistedBonds() const { return m_bonds.unlisted(); }
    /// The records of one binding site, of which the residues that are left move together.
    std::vector<std::string> updateSite(const std::vector<std::string_view>& records) const;

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    struct State {
        bool isKept = false;
        bool isDropped = false;
        bool isGone() const { return isDropped && !isKept; }
    };
    struct Residue {
        State state;
        std::uint32_t run = none;                     ///< the first of its rows
        std::unordered_map<std::string, State> atoms; ///< by name and alternative location
    };
    /// Rows of one residue that stand together.
    struct Run {
        std::string_view key;
        bool isKept = false;
    };

    const Residue* find(std::string_view key) const;
    bool isGone(std::string_view key) const;
    bool isAtomGone(std::string_view key, std::string_view atom) const;
    Outcome updateLink(std::string_view record, const RecordPlaces& places);
    Outcome updateRange(std::string_view record, const RecordPlaces& places) const;
    Outcome trimmedRange(std::string_view record, const RecordPlaces& places, std::uint32_t first,
                         std::uint32_t last) const;
    void updateSheet(std::string_view record, Outcome& outcome) const;

    std::unordered_map<std::string, Residue> m_residues; ///< those that records name
    BondReferences m_bonds;
    std::vector<std::string_view> m_sheetRecords;
    std::unordered_map<std::string, int> m_lostStrands; ///< by the name of the sheet
    std::vector<Run> m_runs;
    Residue* m_residue = nullptr; ///< of the last row, if a record names it
};

} // namespace memory_host::pdb
