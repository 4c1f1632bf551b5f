#include "Colouring.h"

#include "ByClass.h"
#include "Kinds.h"

namespace {

bool isAtom(const TAVIK::Compound* item) {
    return dynamic_cast<const TAVIK::Atom*>(item) != nullptr;
}

// Collects nothing first: running out of memory in the middle of many residues would leave some of
// them coloured.
void colorAtoms(TAVIK::Compound* item, const ColorAtm& color, ByClass<bool>& atoms) {
    if (atoms.of(item, isAtom)) {
        color(item);
        return;
    }
    TAVIK::Compound** const end = item->ChildEnd();
    for (TAVIK::Compound** it = item->ChildBegin(); it != end; ++it)
        if (*it)
            colorAtoms(*it, color, atoms);
}

} // namespace

void ColorGrp2Atom(TAVIK::Compound* residue) {
    ByClass<bool> atoms;
    colorAtoms(residue, ColorAtm(residue->GetColor()), atoms);
}
