// The commands that change selected residues: their alternative models, and their rotamers.
#include "Vuxo.h"

#include "ItemRef.h"
#include "PluginManager.h"
#include "Subscriber.h"
#include "Traversal.h"

#include <unordered_map>
#include <vector>

namespace {

// Counts how often something was destroyed while it lives.
class Deletions : public Subscriber {
public:
    int count() const { return m_count; }

private:
    void commUpdate() override {}
    void commAdd() override {}
    void commDelete() override { ++m_count; }

    int m_count = 0;
};

// The residues that there are, with their identifiers.
std::unordered_map<TAVIK::Compound*, unsigned int> residuesBelow(TAVIK::Compound* root) {
    std::vector<TAVIK::Compound*> residues;
    TAVIK::GetResidues(root, residues, true);
    std::unordered_map<TAVIK::Compound*, unsigned int> ids;
    for (TAVIK::Compound* residue : residues)
        ids.emplace(residue, residue->GetId());
    return ids;
}

} // namespace

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

void Vuxo::ForSelectedResidues(void (*function)(TAVIK::Compound*), const char* command) {
    change<DataPoint>(
        rootItem(),
        [function](TAVIK::Compound* root) { TAVIK::ForResidues(root, false, function); },
        Refusal::Report, command);
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
        TAVIK::Compound* shown = rootItem();
        if (!shown)
            return;
        const QPointer<Vuxo> window(this);
        const ItemRef root(shown);
        std::vector<TAVIK::Compound*> residues;
        TAVIK::GetResidues(shown, residues, false);
        std::vector<unsigned int> ids;
        ids.reserve(residues.size());
        for (const TAVIK::Compound* residue : residues)
            ids.push_back(residue->GetId());
        const Deletions deletions;
        std::unordered_map<TAVIK::Compound*, unsigned int> existing;
        int seen = 0;
        for (std::size_t i = 0; i != residues.size(); ++i) {
            if (seen != deletions.count()) {
                seen = deletions.count();
                existing = residuesBelow(root.inSpace());
            }
            const auto found = existing.find(residues[i]);
            if (seen == 0 || (found != existing.end() && found->second == ids[i]))
                AddRotamers(residues[i]);
        }
        if (window)
            commUpdate();
    });
}
