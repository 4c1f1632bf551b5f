// What can be found: the residues and atoms of the data space as plain arrays.
#pragma once

#include "Bits.h"
#include "Compound.h"
#include "FindLanguage.h"
#include "NameKeys.h"
#include "NearSearch.h"

#include <bitset>
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
};

/// The letter of an atom's alternative location, or a blank.
char alternateOf(const TAVIK::Compound* atom);

/// The parts of the data that only some expressions ask for, each by atom; null until it is needed.
/// For any thread.
struct FindValues {
    enum Part : std::uint8_t { Positions, Alternates, Elements, Selected, Hidden };
    static constexpr std::size_t partCount = Hidden + 1;
    using Points = std::vector<NearSearch::Point>; ///< Å; NaN where there is none

    std::shared_ptr<const Points> positions;
    /// Of the positions; made by the first thread that asks for it.
    std::shared_future<std::shared_ptr<const NearSearch>> near;
    std::shared_ptr<const std::vector<char>> alternates; ///< letters; a blank for none
    std::shared_ptr<const std::vector<NameKeys::Key>> elements;
    std::shared_ptr<const Bits> selected;
    std::shared_ptr<const Bits> hidden;
};

/// Some of the parts of FindValues.
using FindParts = std::bitset<FindValues::partCount>;

/// The parts that an expression asks for.
FindParts partsOf(const FindExpression& expression);

} // namespace workbench
