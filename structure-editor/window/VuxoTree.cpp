// The tree's side of the window: showing an item, handing over what is selected in the tree, and
// the notifications of the host.
#include "Vuxo.h"

#include "Ancestry.h"
#include "ListBox.h"
#include "Space.h"
#include "data/ItemRef.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <algorithm>
#include <vector>

TAVIK::Compound* Vuxo::rootItem() const {
    const TreeItem* top = m_Tree->firstChild();
    return top ? top->compound() : nullptr;
}

TAVIK::Compound* Vuxo::stillShown(const ItemRef& item) const {
    TAVIK::Compound* found = item.inSpace();
    return found == rootItem() ? found : nullptr;
}

void Vuxo::Populate(int index) {
    TAVIK::Compound* item = topLevelItem(index);
    if (!item)
        return;
    m_Tree->clearForOthers();
    showItem(item);
    TreeView::trimMemory();
}

void Vuxo::showItem(TAVIK::Compound* item) {
    try {
        TreeItem* row = m_Tree->showAgain(item);
        const bool isNew = !row;
        if (isNew)
            row = new TreeItem(m_Tree, item);
        m_Tree->setCurrentItem(row);
        if (item->HasChildren()) {
            row->setOpen(true);
            if (isNew)
                row->commAdd();
        }
    } catch (...) {
        m_Tree->clear(); // an incomplete tree would look complete
        throw;
    }
    m_Tree->triggerUpdate();
}

void Vuxo::showFocus(TAVIK::Compound* item) {
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::vector<TAVIK::Compound*> path; // up to the entry
    for (; item && item != space; item = TAVIK::GetParent(item))
        path.push_back(item);
    if (!item || path.empty())
        return;
    if (m_hasStaleEntries) {
        MakeList();
        UpdateList();
    }
    TAVIK::Compound** const entry = std::find(space->ChildBegin(), space->ChildEnd(), path.back());
    pick(static_cast<int>(entry - space->ChildBegin()));
    m_List->setSelected(m_Current, true);
    path.pop_back();
    TreeItem* row = m_Tree->firstChild();
    for (; row && !path.empty(); path.pop_back()) {
        TreeItem* const below = row->rowOf(path.back());
        if (!below)
            break; // added by others, who have not told of it yet
        row = below;
    }
    if (row)
        m_Tree->showRow(row);
}

void Vuxo::SelectionChanged() {
    TreeItem* top = m_Tree->firstChild();
    if (top)
        change<DataPoint>(TAVIK::Space::instance(), [top](TAVIK::Space*) {
            HandedOver handed;
            top->CheckSelection(handed);
            if (handed.selected.count() > 0)
                return Done{handed.selected};
            return Done{handed.unselected, Refresh::Everything,
                        handed.unselected.count() > 0 ? "Unselect" : ""};
        });
}

// A refresh that ran out of memory is repeated at the next notification of any kind.

void Vuxo::commUpdate() {
    if (m_isBehind)
        rebuild();
    m_isBehind = true;
    if (m_hasStaleEntries)
        MakeList();
    if (!m_Tree->isInStep())
        m_Tree->UpdateSelection();
    m_Tree->triggerUpdate();
    UpdateList();
    m_isBehind = false;
}

void Vuxo::commAdd() {
    if (m_isBehind)
        rebuild();
    m_isBehind = true;
    const bool hadStaleEntries = m_hasStaleEntries;
    MakeList();
    if (hadStaleEntries) // the same number of entries, but other ones
        UpdateList();
    if (TreeItem* top = m_Tree->firstChild()) {
        top->commAdd();
        if (top->childCount() > 0)
            top->setOpen(true);
    }
    m_Tree->triggerUpdate();
    m_isBehind = false;
}

void Vuxo::commDelete() {
    qDebug("%s", "Vuxo::commDelete(): Did somebody killed my data?");
    if (m_isBehind)
        rebuild();
    m_isBehind = true;
    m_Tree->clear();
    m_Tree->triggerUpdate();
    MakeList();
    m_isBehind = false;
}

void Vuxo::emptyForDestruction() {
    m_hasStaleEntries = true;
    if (m_Tree->firstChild())
        m_Tree->clear();
}
