// The commands that change selected residues: their alternative models, and the colour of their
// atoms.
#include "Vuxo.h"

#include "Traversal.h"
#include "data/Colouring.h"
#include "data/Counting.h"

void ChangeModelFirst(TAVIK::Compound* residue) {
    residue->FirstModel();
}

void ChangeModelNext(TAVIK::Compound* residue) {
    residue->NextModel();
}

void ChangeModelPrev(TAVIK::Compound* residue) {
    residue->PrevModel();
}

void Vuxo::ForSelectedResidues(void (*function)(TAVIK::Compound*), const char* slot) {
    change<DataPoint>(
        rootItem(),
        [function](TAVIK::Compound* root) {
            return TAVIK::ForResidues(root, false, Counting("residue", function)).changed();
        },
        Refusal::Report, slot);
}

void Vuxo::SelectedOrigModel() {
    qDebug("%s", "Change to first model in selected Residues");
    ForSelectedResidues(ChangeModelFirst);
}

void Vuxo::SelectedNextModel() {
    qDebug("%s", "Change to next model in selected Residues");
    ForSelectedResidues(ChangeModelNext);
}

void Vuxo::SelectedPrevModel() {
    qDebug("%s", "Change to previous model in selected Residues");
    ForSelectedResidues(ChangeModelPrev);
}

void Vuxo::SelectedColorGrp2Atom() {
    qDebug("%s", "Color atoms by residue color");
    const ShowSelectionOff highlightsOff;
    ForSelectedResidues(ColorGrp2Atom);
}
