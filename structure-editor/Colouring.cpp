#include "Colouring.h"

#include "Traversal.h"

void ColorGrp2Atom(TAVIK::Compound* residue) {
    TAVIK::ForAtoms(residue, true, ColorAtm(residue->GetColor()));
}
