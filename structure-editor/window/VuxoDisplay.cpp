// The commands that change how items are displayed: shown or hidden, and in what colour.
#include "Vuxo.h"

#include "Colormap.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "VuxoDialogs.h"
#include "data/Counting.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <optional>

// Returns whether it hid the atom.
bool HideIf(TAVIK::Compound* atom) {
    const bool isMeant = !atom->IsSelected();
    if (isMeant)
        atom->SetVisible(false);
    return isMeant;
}

void Vuxo::SelectedShow() {
    setSelectedVisible(true);
}

void Vuxo::SelectedHide() {
    setSelectedVisible(false);
}

void Vuxo::setSelectedVisible(bool on, const char* slot) {
    change<DataPoint>(
        rootItem(),
        [on](TAVIK::Compound* root) {
            const auto set = [on](TAVIK::Compound* atom) { atom->SetVisible(on); };
            return TAVIK::ForAtoms(root, false, Counting("atom", set)).changed();
        },
        Refusal::Report, slot);
}

void Vuxo::UnselectedHide() {
    hideUnselected(rootItem());
}

void Vuxo::UnselectedHideG() {
    hideUnselected(TAVIK::Space::instance());
}

void Vuxo::hideUnselected(TAVIK::Compound* root, const char* slot) {
    change<DataPoint>(
        root,
        [](TAVIK::Compound* item) {
            const Counting hide("unselected atom", HideIf);
            return Done{TAVIK::ForAtoms(item, true, hide).changed(), Refresh::Nothing};
        },
        Refusal::Report, slot);
}

namespace {

/// The selected items below one: a composite whose atoms are all selected is selected, whatever its
/// bonds are. `leave` is called with each item that holds others, when all of these were visited.
template <class Change, class Leave>
void forSelectedBelow(TAVIK::Compound* item, const Change& change, const Leave& leave) {
    constexpr std::ptrdiff_t ahead = 8; // prefetched: most of the time is waiting for memory
    TAVIK::Compound** const end = item->ChildEnd();
    for (TAVIK::Compound** child = item->ChildBegin(); child != end; ++child) {
        if (end - child > ahead)
            __builtin_prefetch(child[ahead], 1);
        if (!*child)
            continue;
        const bool isSelected = (*child)->IsSelected();
        if (isSelected)
            change(*child);
        if ((isSelected || (*child)->HasSelected()) && (*child)->HasChildren())
            forSelectedBelow(*child, change, leave);
    }
    leave(item);
}

} // namespace

template <class Change, class Leave>
TAVIK::Changed Vuxo::forSelectedRows(Change apply, Leave leave) const {
    TAVIK::Changed changed;
    const auto change = [&](TAVIK::Compound* item) {
        apply(item);
        changed.addOfAnyKind(item);
    };
    // Rows that are in step give the answers of their items, in less time.
    const bool inStep = m_Tree->isInStep();
    for (TreeItemIterator at(m_Tree); const TreeItem* row = at.current();) {
        if (inStep && !row->hasSelected()) {
            at.skipBelow();
            continue;
        }
        TAVIK::Compound* const item = row->compound();
        const bool isSelected = item && (inStep ? row->isSelectedAsMarked() : item->IsSelected());
        if (isSelected)
            change(item);
        // All below a selected item is in the data, where it takes less memory to be read.
        if (isSelected && inStep && !row->holdsSets()) {
            forSelectedBelow(item, change, leave);
            at.skipBelow();
        } else {
            ++at;
        }
    }
    return changed.count() == 0 ? TAVIK::Changed("item") : changed;
}

void Vuxo::SelectedColor() {
    qDebug("%s", "ProteinPage::SelectedColor()");
    attempt([this, slot = __func__] {
        const QPointer<Vuxo> window(this);
        const std::optional<QColor> chosen = askColor(this);
        if (!window || !chosen || !chosen->isValid())
            return;
        const Color color(chosen->rgba());
        withGuard<DataPoint>(slot, rootItem(), [this, &color](TAVIK::Compound*) {
            return forSelectedRows([&color](TAVIK::Compound* item) { item->SetColor(color); },
                                   [](TAVIK::Compound*) {});
        });
    });
}

void Vuxo::SelectedUnColor() {
    qDebug("%s", "ProteinPage::RestoreColor()");
    change<DataPoint>(rootItem(), [this](TAVIK::Compound* root) {
        // Items are unselected while they are still in the cache, unless a set lists them a second
        // time further down.
        const TreeItem* const top = m_Tree->firstChild();
        const bool isListedOnce = top && !top->holdsSets();
        const TAVIK::Changed restored =
            forSelectedRows([](TAVIK::Compound* item) { item->RestoreColor(); },
                            [isListedOnce](TAVIK::Compound* item) {
                                if (isListedOnce)
                                    item->SetSelected(false);
                            });
        root->SetSelected(false);
        return restored;
    });
}

void Vuxo::SelectedColorTemp() {
    qDebug("%s", "ProteinPage::SelectedColorTemp()");
    change<DataPoint>(rootItem(), [](TAVIK::Compound* root) {
        Colormap map("BlueRedTR.cm", 100, "No name");
        map.setMinMax(0.0F, 60.0F);
        // Without a colour map the colours stay; the host has logged why it could not read the map.
        if (!map.isValid())
            return Done{{}, Refresh::Everything, ""};
        const auto color = [&map](TAVIK::Compound* item) {
            // ForAtoms() visits atoms only.
            item->SetColor(map.lookupValue(static_cast<TAVIK::Atom*>(item)->GetTemperature()));
        };
        return Done{TAVIK::ForAtoms(root, false, Counting("atom", color)).changed()};
    });
}
