// Ribbons along the chains of proteins and nucleic acids: from residues to a mesh.
#pragma once

#include "SecondaryStructure.h"
#include "render/Scene.h"

#include <cstdint>
#include <span>
#include <vector>

namespace view {

/// A residue as the ribbon passes it. The ribbon goes on from the one before if the residue is
/// linked to it and of the same kind, and their guide points are not in one place: 0.5 Å.
struct RibbonResidue {
    enum class Kind : std::uint8_t { AminoAcid, Nucleotide };

    /// Å: CA, or P (C4' where there is none); not finite where there is no such atom, which breaks
    /// the chain.
    Point guide = missingAtom;
    /// Of any length: for amino acids from C to O, for nucleotides from the guide to the base; 0 or
    /// not finite if unknown.
    Point direction{};
    SecondaryStructure structure = SecondaryStructure::Coil;
    Kind kind = Kind::AminoAcid;
    bool isLinkedToPrevious = false;
    Id id = noId;
};

/// What ribbons look like, lengths in Å, and how finely they are drawn. A residue has about 2 *
/// subdivisions * corners triangles, and 16 * subdivisions in a strand.
struct RibbonStyle {
    unsigned subdivisions = 8; ///< steps from residue to residue; an odd number counts as the next
    unsigned corners = 12;     ///< of the cross-section of tubes and helices, at least 3

    double coilRadius = 0.3;
    double helixHalfWidth = 1.3;
    double helixHalfThickness = 0.25;
    double strandHalfWidth = 1.1;
    double strandHalfThickness = 0.25;
    double arrowHalfWidth = 1.9;
    double nucleicHalfWidth = 0.9;
    double nucleicHalfThickness = 0.3;
    double loneRadius = 0.6;

    /// As fine as a structure of this many residues can be drawn: at most 0.4 M triangles up to
    /// 2,000 residues, 1 M up to 20,000, and 16 a residue beyond.
    static RibbonStyle forResidues(std::size_t count);
};

/// A section of a body where one residue's part ends and another's begins.
struct RibbonCut {
    std::uint32_t firstVertex; ///< of the section
    Id before;
    Id after;
    std::uint16_t corners; ///< how many the section has
    std::uint16_t step;    ///< from the vertex of one corner to that of the next
};

struct Ribbon {
    Mesh mesh; ///< in the colours of its ids
    std::vector<RibbonCut> cuts;
};

/// The ribbons of all chains, as bodies that are closed each: helices (H, G, I) as bands with a
/// cross-section like an ellipse, strands (E) as arrows with sharp edges, everything else as tubes,
/// nucleic acids as bands whose flat sides face the bases. The path of strands is smoothed.
///
/// A helix or strand of one residue is drawn as a tube. A residue that is linked to none is a ball
/// around its guide point.
///
/// A residue's part reaches half-way to its neighbours, and has its id. The ribbon takes no more
/// memory than it needs.
Ribbon makeRibbon(std::span<const RibbonResidue> residues, const RibbonStyle& style);

/// Appends what closes a ribbon where some of its residues are hidden: a cap, with the id of what
/// is shown, at each cut between what is shown and what is not. `idShown` says which is, not 0, by
/// id from 1 on; noId is.
void addCaps(const Ribbon& ribbon, std::span<const std::uint8_t> idShown, Mesh& caps);

} // namespace view
