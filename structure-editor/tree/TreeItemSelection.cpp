// The selection of rows: the user's goes to the host, the host's comes into the rows.
#include "TreeItem.h"
#include "TreeRoot.h"

void TreeItem::setSelected(bool s) {
    if (m_parent)
        m_parent->unpackMarks();
    if (s)
        expectSelection();
    leavePlain();
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
    m_packed = false;
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
        const bool selected = ownSelected() && markedAbove;
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
    if (m_parent) {
        m_parent->expectSelection();
        m_parent->unpackMarks();
    }
    updateRows();
}

void TreeItem::becomeWhole(const Told& told) {
    m_whole = told.isKnown && m_count > 0;
    m_version = told.version;
}

bool TreeItem::packMarks() {
    if (!m_whole)
        return false;
    const Told told(m_Compound);
    if (!told.isKnown || told.version != m_version)
        return false;
    if (told.marks == 0) {
        mark(false, false);
        return true;
    }
    if (!m_packed)
        m_packed = true;
    if (childMarks() != told.marks)
        childMarks() = told.marks;
    mark(m_Compound->IsSelected(), true);
    return true;
}

void TreeItem::unpackMarks() {
    if (!m_packed)
        return;
    m_packed = false;
    for (std::uint32_t i = 0; i != m_count; ++i) {
        const bool marked = childMarks() >> i & 1;
        m_children[i]->mark(marked, marked);
    }
}

void TreeItem::updateRows() {
    if (packMarks())
        return;
    const bool selected = m_Compound && m_Compound->IsSelected();
    // Memory latency is what such walks cost: rows of items without any selection inside are
    // skipped, rows are prefetched and then, through them, their items, and a row is written only
    // if it changes.
    if (holdsNoSelection(selected)) {
        mark(false, false);
        return;
    }
    if (m_packed)
        m_packed = false;
    bool marked = selected;
    constexpr std::uint32_t ahead = 12;
    for (std::uint32_t i = 0; i != m_count; ++i) {
        if (i + 2 * ahead < m_count)
            __builtin_prefetch(m_children[i + 2 * ahead]);
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
