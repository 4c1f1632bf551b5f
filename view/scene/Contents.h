// What the view has read of the data space, as plain arrays that any thread may read: they are
// never changed, but replaced by others.
#pragma once

#include "Geometry.h"
#include "ResidueKind.h"
#include "render/Scene.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace view {

/// In place of the index of an atom: there is none.
inline constexpr std::uint32_t noAtom = std::numeric_limits<std::uint32_t>::max();

/// A residue: the atoms from `firstAtom` to the next residue's. Atoms that stand in no residue are
/// gathered in residues of the kind Other.
struct ResidueEntry {
    std::uint32_t firstAtom;
    std::uint32_t chain; ///< a number that the residues of one chain share
    ResidueKind kind;
    bool isStandard;
    bool isProline = false;
    /// Whether it is a residue of a polymer: linked to the one before it or after it.
    bool isPolymer = false;
    bool isLinkedToPrevious = false; ///< as linkResidues() says
};

/// A top-level item with atoms: residues up to those of the next entry.
struct Entry {
    std::uint32_t firstResidue;
};

/// An item other than atoms and bonds that has something to draw: a mesh, or lines.
struct Shape {
    std::uint32_t item = 0;      ///< its index among the items
    unsigned int identifier = 0; ///< the item's own one
    /// In its own colours, if it has any and Marks says so, else in the item's. Null for a surface
    /// without a mesh.
    std::shared_ptr<const Mesh> mesh;
    std::optional<TAVIK::ValueScale> scale; ///< of the mesh's own colours
    std::vector<Point> points;
    std::vector<Segment> segments; ///< between the points
};

/// What does not change by selecting, showing and colouring. The items are the atoms in the order
/// of the data, and behind them the shapes.
struct Contents {
    std::vector<Point> positions; ///< of the atoms, Å; NaN for an atom without a position
    std::vector<std::uint8_t> atomicNumbers;
    std::vector<Role> roles;
    std::vector<ResidueEntry> residues;
    std::vector<Entry> entries;
    std::vector<Segment> bonds; ///< by indices of atoms
    std::vector<Shape> shapes;

    std::size_t atomCount() const { return positions.size(); }
    std::size_t itemCount() const { return positions.size() + shapes.size(); }
    std::uint32_t residueEnd(std::size_t entry) const {
        return entry + 1 < entries.size() ? entries[entry + 1].firstResidue
                                          : static_cast<std::uint32_t>(residues.size());
    }
    std::uint32_t atomEnd(std::size_t residue) const {
        return residue + 1 < residues.size() ? residues[residue + 1].firstAtom
                                             : static_cast<std::uint32_t>(positions.size());
    }
};

/// How the items look: what a change of colour or visibility changes.
struct Marks {
    std::vector<Colour> colours;     ///< one an item
    std::vector<std::uint8_t> shown; ///< one an item, 0 or 1
    std::vector<std::uint8_t> bonds; ///< one a bond: whether it is shown
    /// One a shape: whether its mesh shows its own colours; those beyond the end do.
    std::vector<std::uint8_t> ownColours;

    bool hasOwnColours(std::size_t shape) const {
        return shape >= ownColours.size() || ownColours[shape] != 0;
    }

    bool operator==(const Marks&) const = default;
};

/// One an item, 0 or 1: whether it is selected.
using SelectionMarks = std::vector<std::uint8_t>;

/// All of the above, as it was at one time; never null.
struct Snapshot {
    std::shared_ptr<const Contents> contents = std::make_shared<Contents>();
    std::shared_ptr<const Marks> marks = std::make_shared<Marks>();
    std::shared_ptr<const SelectionMarks> selection = std::make_shared<SelectionMarks>();
    /// Rises when ids get another meaning: an id is valid only with the snapshot's own number.
    std::uint64_t generation = 0;
};

/// The id of an item by its index, and back.
inline Id idOf(std::size_t item) {
    return static_cast<Id>(item + 1);
}
inline std::size_t itemOf(Id id) {
    return id - 1;
}

} // namespace view
