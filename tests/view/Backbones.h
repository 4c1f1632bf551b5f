// Backbones that tests build or read: ideal helices and strands, and proteins in real files.
#pragma once

#include "ribbon/HydrogenBonds.h"
#include "ribbon/SecondaryStructure.h"

#include <QByteArray>

#include <string>
#include <vector>

namespace view_testing {

using Residues = std::vector<view::BackboneResidue>;

/// A chain with the same torsion angles at each residue, in degrees; standard bond lengths and
/// angles, trans peptides.
Residues helix(std::size_t count, double phi, double psi);

/// A flat strand along the x axis: a residue is 3.4 Å long, with N at its beginning, CA 1.2 Å and C
/// 2.3 Å further on. O is 1.23 Å from C in the direction of y for residues with even numbers,
/// against it for the others; and so is the hydrogen, 1 Å from N.
Residues strand(std::size_t count);

/// Moves the residues from `from` on by `longer` Å along the x axis.
void shift(Residues& residues, std::size_t from, float longer);

/// One chain after the other.
Residues together(const std::vector<Residues>& chains);

/// The letters of the secondary structure, "-" for coil.
QByteArray letters(const Residues& residues);

/// The proteins of a file, in order.
struct Proteins {
    Residues residues;              ///< the first conformers
    std::vector<std::string> names; ///< chain, number and insertion code: "A 12"
    QByteArray recorded;            ///< by the file's own helix and sheet records: H, E, or -
};
/// Reads .pdb and .cif files, also gzipped.
Proteins proteins(const std::string& path);

} // namespace view_testing
