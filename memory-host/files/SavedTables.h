// What is saved, as plain tables: read from the items on the GUI thread, written on any other.
// Texts are numbers of the content's `names`; 0 is the empty one. They are as the items have them:
// "_" may stand for a name that the file leaves blank, and residues of several names have them as
// "PRO,SER". What the file says is in the rows of its text.
#pragma once

#include "AtomDetails.h"
#include "FileStamp.h"
#include "Geometry.h"
#include "PartialCharge.h"
#include "SourceText.h"
#include "items/MapCrystal.h"

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace memory_host {

struct SavedAtom {
    /// The row of an atom that no file has.
    static constexpr std::uint32_t newRow = std::numeric_limits<std::uint32_t>::max();

    std::array<float, 3> position{}; ///< Å
    float temperature = 0.0F;        ///< Å²
    std::uint32_t name = 0;
    std::uint32_t element = 0; ///< symbol, as "C" or "Cu"; "X" where it is unknown
    /// Its place among all rows of atoms of the file, in the order of the text, from 0.
    std::uint32_t row = newRow;
    std::uint16_t model = 0; ///< alternative model; 0: shared by all
    bool hasPosition = false;
    TAVIK::AtomDetails details;
};

struct SavedResidue {
    std::uint32_t chain = 0;      ///< in the model's chains
    std::uint32_t name = 0;       ///< as "MET"
    std::uint32_t number = 0;     ///< author's number without insertion code, as "22"; may be empty
    std::uint32_t insertion = 0;  ///< insertion code
    std::uint32_t labelChain = 0; ///< mmCIF's label ids, or empty
    std::uint32_t labelNumber = 0;
    std::uint32_t firstAtom = 0; ///< its atoms stand together, up to those of the next residue
};

/// A bond that the file lists, or that was made since; not one that was found by distance, unless
/// its atoms were moved away from each other (settleBonds()).
struct SavedBond {
    std::uint32_t first = 0; ///< atoms of the model, the lower one first
    std::uint32_t second = 0;
    bool isListed = false; ///< else it was made, or moved
    /// Whether it is found by distance when the file is read; known in edited models.
    bool isFoundAgain = false;
    /// Of one that is listed, in an edited model, as what follows: whether reading does not take it
    /// over, whatever lists it.
    bool isUnread = false;
    /// Whether an atom of the names of one of its atoms has another alternative location than the
    /// file says, or is new.
    bool isRelettered = false;
    /// Whether one of its atoms shares its names and its location with another one: only its number
    /// tells it.
    bool isAmbiguous = false;
    /// By atom: whether names without a letter do not tell it, as some atoms share their location.
    std::array<bool, 2> needsLetter{};
    /// The further bonds that a record without letters would list, too.
    std::uint16_t joined = 0;
};

/// A bond that the file lists and that is not there any more.
struct LostBond {
    std::uint32_t first = 0; ///< rows of its atoms, which may be gone, too
    std::uint32_t second = 0;
    bool isFoundAgain = false; ///< as in SavedBond
};

/// One top-level item.
struct SavedModel {
    std::string name;           ///< of the item, as "1d3z.1"
    std::uint32_t index = 0;    ///< its place among the models of its structure in the file
    std::uint32_t firstRow = 0; ///< of the file: all rows of the item as it was read are between
    std::uint32_t endRow = 0;
    std::vector<std::uint32_t> chains;  ///< names, in the order of the items
    std::vector<SavedResidue> residues; ///< none of them empty
    std::vector<SavedAtom> atoms;
    std::vector<TAVIK::PartialCharge> charges; ///< by atom; empty where none is known
    std::vector<SavedBond> bonds;              ///< ascending
    std::vector<LostBond> lostBonds;
    bool isEdited = false; ///< not as it was read, or from no file
    bool lacksBonds =
        false; ///< some that it was read with were destroyed, perhaps with their atoms
    /// Of an edited model: the bonds that were found by distance when it was read, ascending.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> foundBonds;

    /// One past the last atom of a residue.
    std::uint32_t atomEnd(std::size_t residue) const {
        return residue + 1 < residues.size() ? residues[residue + 1].firstAtom
                                             : static_cast<std::uint32_t>(atoms.size());
    }
};

/// Models of one structure.
struct SavedStructure {
    std::shared_ptr<const SourceText> source; ///< null: from no file
    std::uint32_t block = 0; ///< which structure of the file, as a data block of mmCIF, from 0
    std::vector<SavedModel> models; ///< in the order of the file
};

/// What goes into one file.
struct SavedContent {
    std::vector<std::string> names{std::string()};
    std::vector<SavedStructure> structures; ///< those of one file in the order of the file
    std::optional<TAVIK::GridValues> grid;  ///< the shown part of a grid
    MapCrystal crystal;                     ///< of the grid
    std::string mapPath; ///< the file that the grid was read from; empty unless all of it is shown
    FileStamp mapStamp;  ///< of that file, when it was read
    bool isInPart = false; ///< whether something of the entries was left out by the options
};

} // namespace memory_host
