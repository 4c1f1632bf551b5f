// The command that maps values onto a surface.
#pragma once

namespace electrostatics {

/// Gives the selected surface, else the first one that is shown, values and colours: those of the
/// selected grid, else of the first one that is shown, between its points; where there is no grid,
/// the Coulomb potential of the atoms that AtomCharges describes. In one change with a label. If
/// anything fails nothing changes, and a message says why.
void mapOntoSurface();

} // namespace electrostatics
