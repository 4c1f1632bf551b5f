// The atoms of a structure file as plain rows, sorted into chains and residues: the result of the
// readers of all formats, from which the items are built.
#pragma once

#include "AtomDetails.h"
#include "Bonds.h"
#include "Elements.h"
#include "FileNames.h"
#include "PartialCharge.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

/// The serial number of an atom, as packedSerial() makes it.
using Serial = std::uint32_t;
constexpr Serial noSerial = 0;

struct AtomEntry {
    std::array<float, 3> position{}; ///< Å
    float temperature = 0.0F;        ///< Å²
    std::uint32_t name = 0;          ///< in the table's names, like all names here
    std::uint32_t residue = 0;       ///< in the model's residues
    std::uint16_t alternative = 0;   ///< 0: shared by all alternative locations
    Element element = unknownElement;
    bool hasPosition = false;
    TAVIK::AtomDetails details;
    std::uint32_t row = 0; ///< among the rows of all atoms of the file, in its order
};

struct ResidueEntry {
    std::uint32_t chain = 0;      ///< in the model's chains
    std::uint32_t number = 0;     ///< author's number and insertion code; empty where it has none
    std::uint32_t firstAtom = 0;  ///< its atoms stand together, up to those of the next residue
    std::uint32_t name = 0;       ///< the first one, which tells its kind
    std::uint32_t allNames = 0;   ///< of alternative locations with different ones, as "PRO,SER"
    std::uint32_t labelChain = 0; ///< mmCIF's label ids of its first atom that has them
    std::uint32_t labelNumber = 0;
};

struct ModelTable {
    std::string number;                 ///< as the file counts it; may be empty
    std::vector<std::uint32_t> chains;  ///< names, in the order of the file
    std::vector<ResidueEntry> residues; ///< by chain, then in the order of the file
    std::vector<AtomEntry> atoms;       ///< by residue, then in the order of the file
    /// By atom; empty where the file gives none.
    std::vector<TAVIK::PartialCharge> charges;
    /// Indices of atoms: those that the file lists, then those by distance, each ascending.
    std::vector<BondPair> bonds;
    std::size_t listedBonds = 0; ///< how many of the bonds are listed in the file

    /// One past the last atom of a residue.
    std::uint32_t atomEnd(std::size_t residue) const {
        return residue + 1 < residues.size() ? residues[residue + 1].firstAtom
                                             : static_cast<std::uint32_t>(atoms.size());
    }
};

/// One entry of a file.
struct StructureTable {
    std::string name; ///< valid as a component of a qualified name
    std::unique_ptr<FileNames> names = std::make_unique<FileNames>();
    std::vector<ModelTable> models; ///< none of them empty
    std::uint32_t alternatives = 0; ///< how many alternative locations have a letter
};

/// The name of a residue's item, as "MET 1" or "PRO,SER 22A".
std::string residueLabel(const ResidueEntry& residue, const FileNames& names);
/// A name as it is shown: "_" where the file has none.
const std::string& shownName(std::uint32_t number, const FileNames& names);

/// What a reader knows of an atom. Texts are trimmed, and live until the table is finished.
struct AtomRow {
    std::string_view chain;
    std::string_view residue;
    std::string_view number;      ///< the author's residue number
    std::string_view insertion;   ///< insertion code, or empty
    std::string_view segment;     ///< a further part of the residue's identity, or empty
    std::string_view name;        ///< of the atom
    std::string_view alternative; ///< letter of the alternative location, or empty
    Element element = unknownElement;
    bool hasPosition = false;
    std::array<float, 3> position{};
    float temperature = 0.0F;
    TAVIK::PartialCharge partial{};
    Serial serial = noSerial;     ///< as the bonds that the file lists name it
    TAVIK::AtomDetails details{}; ///< but for the letter
    std::string_view labelChain;  ///< mmCIF's label ids of the residue, or empty
    std::string_view labelNumber;
};

} // namespace memory_host
