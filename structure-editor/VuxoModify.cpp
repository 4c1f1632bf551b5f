// The commands that change selected residues: their alternative models, and their rotamers.
#include "Vuxo.h"

#include "PluginManager.h"
#include "SelectedResidues.h"
#include "Traversal.h"

void ChangeModelFirst(TAVIK::Compound* residue) {
    residue->FirstModel();
}

void ChangeModelNext(TAVIK::Compound* residue) {
    residue->NextModel();
}

void ChangeModelPrev(TAVIK::Compound* residue) {
    residue->PrevModel();
}

void AddRotamers(TAVIK::Compound* residue) {
    bool flag = true;
    PluginManager::Execute("Create", "Rotamer", "StructureEditor", "Rotamer", residue, &flag);
}

void Vuxo::ForSelectedResidues(void (*function)(TAVIK::Compound*), const char* slot) {
    change<DataPoint>(
        rootItem(),
        [function](TAVIK::Compound* root) { TAVIK::ForResidues(root, false, function); },
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

void Vuxo::SelectedRotamers() {
    // No guard: the other plug-in makes the additions, under guards of its own. It may also destroy
    // what was collected here; then only what still is there is sent on.
    attempt([this] {
        TAVIK::Compound* root = rootItem();
        if (!root)
            return;
        const QPointer<Vuxo> window(this);
        SelectedResidues residues(root);
        for (std::size_t i = 0; i != residues.size(); ++i)
            if (TAVIK::Compound* residue = residues.find(i))
                AddRotamers(residue);
        if (window)
            commUpdate();
    });
}
