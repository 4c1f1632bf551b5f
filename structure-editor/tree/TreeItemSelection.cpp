// How rows carry the selection: the user's to the host, the host's into the rows.
#include "TreeItem.h"
#include "TreeModel.h"

void TreeItem::setSelected(bool s) {
    if (s)
        expectSelection();
    m_Dirty = true;
    m_selected = s;
    if (TreeRoot* tree = root())
        tree->inStep = false;
}

bool TreeItem::isMarkedAbove() const {
    const TreeItem* above = m_parent;
    while (above && above->m_marked && !above->m_isRoot)
        above = above->m_parent;
    return !above || above->m_isRoot;
}

void TreeItem::expectSelection() {
    if (m_isRoot)
        return;
    if (m_parent)
        m_parent->expectSelection();
    if (m_marked)
        return;
    m_marked = true;
    for (std::uint32_t i = 0; i != m_count; ++i)
        m_children[i]->m_selected = m_children[i]->m_marked = false;
}

bool TreeItem::selectsOthers() const {
    return m_count > 0 ||
           (m_elsewhere && m_Compound && m_Compound->PartBegin() != m_Compound->PartEnd());
}

void TreeItem::SetClean() {
    if (m_Dirty)
        m_Dirty = false;
    for (std::uint32_t i = 0; i != m_count; ++i)
        m_children[i]->SetClean();
}

void TreeItem::CheckSelection() {
    HandedOver handed;
    CheckSelection(handed);
}

void TreeItem::CheckSelection(HandedOver& handed) {
    CheckSelection(handed, root()->descending, isMarkedAbove());
}

void TreeItem::CheckSelection(HandedOver& handed, bool descending, bool markedAbove) {
    if (m_Dirty) {
        const bool selected = m_selected && markedAbove;
        if (m_Compound) {
            m_Compound->SetSelected(selected);
            (selected ? handed.selected : handed.unselected).addOfAnyKind(m_Compound);
        }
        SetClean();
        return;
    }
    for (std::uint32_t i = 0; i != m_count; ++i)
        childAt(i, descending)->CheckSelection(handed, descending, markedAbove && m_marked);
}

bool TreeItem::holdsNoSelection(bool selected) const {
    return m_count && !selected && !m_elsewhere && m_Compound && !m_Compound->HasSelected();
}

void TreeItem::UpdateSelection() {
    if (m_parent)
        m_parent->expectSelection();
    updateRows();
}

void TreeItem::updateRows() {
    const bool selected = m_Compound && m_Compound->IsSelected();
    // What the walks over all rows wait for is memory: rows of items without any selection in them
    // are not looked at, an item is called for before its turn, and a row is written only where it
    // changes.
    if (holdsNoSelection(selected)) {
        mark(false, false);
        return;
    }
    bool marked = selected;
    constexpr std::uint32_t ahead = 12;
    for (std::uint32_t i = 0; i != m_count; ++i) {
        if (i + ahead < m_count)
            __builtin_prefetch(m_children[i + ahead]->m_Compound);
        TreeItem* const row = m_children[i];
        if (row->m_count)
            row->updateRows();
        else
            row->mark(row->m_Compound && row->m_Compound->IsSelected(), false);
        marked |= row->m_marked;
    }
    mark(selected, marked);
}
