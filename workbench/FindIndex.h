// What can be found: the residues and atoms of the data space as plain arrays, read once after each
// change of what there is.
#pragma once

#include "Bits.h"
#include "Compound.h"
#include "FindLanguage.h"
#include "NameKeys.h"
#include "NearSearch.h"

#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Residues and atoms in the order of the data. The items are for the GUI thread, and for as long
/// as nothing is destroyed; all else may be read anywhere.
struct FindIndex {
    enum class Kind : std::uint8_t { Protein, Nucleic, Water, Ion, Ligand };
    struct Residue {
        TAVIK::Compound* item; ///< null for atoms that stand in no residue
        std::uint32_t begin;   ///< its atoms
        std::uint32_t end;
        std::uint32_t place; ///< where it stands, in `places`
        std::uint32_t label; ///< its whole name, in `labels`
        std::uint32_t chain; ///< in `chains`
        NameKeys::Key name;  ///< without the number
        std::int64_t number; ///< meaningless without hasNumber
        char insertion;      ///< or a blank
        bool hasNumber;
        Kind kind;
    };

    std::vector<Residue> residues;
    std::vector<TAVIK::Compound*> atoms;
    std::vector<NameKeys::Key> atomNames; ///< by atom
    std::vector<std::string> chains;      ///< names; the same name may be there several times
    std::vector<std::string> places;      ///< qualified names of what holds residues
    std::vector<char> labels;             ///< names of residues, each with a zero at its end
    NameKeys names;

    std::string_view label(const Residue& residue) const { return labels.data() + residue.label; }
    /// The residue of an atom.
    std::uint32_t residueOf(std::uint32_t atom) const;

    /// Reads the data space, which has `atomCount` atoms; 0 when that is not known.
    static std::shared_ptr<const FindIndex> read(std::size_t atomCount = 0);
};

/// The letter of an atom's alternative location, or a blank.
char alternateOf(const TAVIK::Compound* atom);

/// The parts of the data that only some expressions ask for, each by atom; null until it is needed.
/// All but read() is for any thread.
struct FindValues {
    using Positions = std::vector<NearSearch::Point>; ///< Å; NaN where there is none
    enum class Part { Positions, Alternates, Elements, Selected, Hidden };

    std::shared_ptr<const Positions> positions;
    /// Of the positions; made by the first thread that asks for it.
    std::shared_future<std::shared_ptr<const NearSearch>> near;
    std::shared_ptr<const std::vector<char>> alternates; ///< letters; a blank for none
    std::shared_ptr<const std::vector<NameKeys::Key>> elements;
    std::shared_ptr<const Bits> selected;
    std::shared_ptr<const Bits> hidden;

    /// Whether `part` was read, and has not changed since.
    bool has(Part part) const;
    /// Reads `part`, if it is not there yet. GUI thread.
    void read(const FindIndex& index, Part part);
    /// Reads what `expression` needs. GUI thread.
    void read(const FindIndex& index, const FindExpression& expression);
    /// Reads the positions, which needs no index. GUI thread.
    void readPositions();
    /// Forgets everything that was read. Old positions stay, with what was prepared of them, which
    /// serves again when the same are read: few changes move atoms, or make or destroy some.
    void forgetItems();
    /// Gives the memory of positions back if they were not read again.
    void forgetOldPositions();
    /// Forgets what changes without anything being made or destroyed.
    void forgetState();

private:
    bool m_areOld = false;      ///< the positions, which may have changed
    std::size_t m_expected = 0; ///< room for positions that are read next
};

} // namespace workbench
