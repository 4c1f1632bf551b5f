// The commands that make surfaces of atoms.
#pragma once

namespace solid {

enum class SurfaceKind { Excluded, VanDerWaals, Accessible, Gaussian, ElectronDensity };

/// Makes a surface of the shown atoms of each entry that readShownAtoms() gives; see addSurfaces().
void addAtomSurfaces(SurfaceKind kind);

} // namespace solid
