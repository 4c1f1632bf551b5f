// The commands that change what is selected.
#include "Vuxo.h"

#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "VuxoDialogs.h"
#include "data/Counting.h"
#include "data/ItemRef.h"
#include "data/Selecting.h"
#include "radius/RadiusSearch.h"

#include <QFrame>

#include <functional>

void Vuxo::SelectedClear() {
    change<DataPoint>(rootItem(), [](TAVIK::Compound* root) {
        root->SetSelected(false);
        return TAVIK::Changed(*root);
    });
}

void Vuxo::SelectedToggle() {
    qDebug("%s", "Vuxo::InvertSelection");
    change<DataPoint>(rootItem(), [](TAVIK::Compound* root) {
        const auto toggle = std::mem_fn(&TAVIK::Compound::ToggleSelected);
        return TAVIK::ForAtoms(root, true, Counting("atom", toggle)).changed();
    });
}

void Vuxo::SelectGroups() {
    selectFullGroups(rootItem());
}

void Vuxo::SelectGroupsG() {
    selectFullGroups(TAVIK::Space::instance());
}

void Vuxo::selectFullGroups(TAVIK::Compound* root, const char* slot) {
    change<DataPoint>(
        root,
        [](TAVIK::Compound* item) {
            return TAVIK::ForGroups(item, true, Counting("group", FullGroup)).changed();
        },
        Refusal::Report, slot);
}

void Vuxo::SelectRadius() {
    selectWithinRadius(rootItem(), tr("Enter (local) selection radius"));
}

void Vuxo::SelectRadiusG() {
    selectWithinRadius(TAVIK::Space::instance(), tr("Enter (global) selection radius"));
}

void Vuxo::selectWithinRadius(TAVIK::Compound* root, const QString& label, const char* slot) {
    // Asks inside of the guard: a change that is refused asks nothing.
    const auto ask = [this, &label](TAVIK::Compound* item) {
        const QPointer<Vuxo> window(this);
        const ItemRef asked(item);
        const bool isLocal = item == rootItem();
        const std::optional<double> radius = askRadius(label);
        if (!window || !radius)
            return Done::nothing();
        TAVIK::Compound* found = isLocal ? stillShown(asked) : asked.inSpace();
        return found ? Done{selectAround(found, *radius)} : Done::nothing();
    };
    change<DataPoint>(root, ask, Refusal::Report, slot);
}

void Vuxo::SelectHydrogens() {
    attempt([this, slot = __func__] {
        const QPointer<Vuxo> window(this);
        const std::optional<QString> type = askText(
            tr("Select atoms"), tr("Enter single atom type (e.g. H, O, Cu)"), QStringLiteral("H"));
        if (!window || !type)
            return;
        withGuard<DataPoint>(slot, TAVIK::Space::instance(), [&type](TAVIK::Compound* space) {
            const SelectType ofType(type->toLatin1().toStdString());
            return TAVIK::ForAtoms(space, true, ofType).select();
        });
    });
}

void Vuxo::SelectGridBounds() {
    change<DataPoint>(TAVIK::Space::instance(), [](TAVIK::Compound* space) {
        return Done{boundGrids(space), Refresh::Nothing}; // The window does not show it.
    });
}

void Vuxo::showQuery() {
    attempt([this] {
        m_SelectBox->show();
        m_SelectBox->raise();
    });
}
