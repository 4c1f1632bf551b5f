#include "TreeRoot.h"

#include "TreeItemIterator.h"
#include "TreeModel.h"

#include <utility>

void TreeRoot::insert(TreeItem* parent, std::uint32_t position, std::span<TreeItem* const> rows) {
    parent->markFor(rows);
    parent->insert(position, rows);
}

void TreeRoot::deleteRows() {
    if (pool().holdsOnly(rows)) {
        pool().dropAll();
        m_count = 0;
    } else {
        deleteChildren();
    }
    rows = 0;
}

void TreeRoot::trimMemory() {
    pool().trim();
}

void TreeRoot::closeAll() {
    for (TreeItemIterator it(firstChild()); it.current(); ++it)
        it.current()->m_open = false;
}

void TreeRoot::setRowsAside() {
    if (m_count != 1)
        return;
    m_aside.reset(m_children[0]);
    m_count = 0;
    m_aside->m_parent = nullptr;
    std::swap(rows, m_rowsAside);
}

void TreeRoot::dropAside() noexcept {
    if (m_aside && pool().holdsOnly(m_rowsAside)) {
        pool().dropAll();
        m_aside.release(); // NOLINT: that was all there is
    }
    m_aside.reset();
    m_rowsAside = 0;
}

TreeItem* TreeRoot::takeFromAside(TAVIK::Compound* c) {
    if (!m_aside || !c || m_aside->m_Compound != c || m_aside->m_id != c->GetId())
        return nullptr;
    Batch batch;
    m_aside->comeBack(batch);
    m_aside->UpdateSelection();
    model.insert(this, {m_aside.get()}, batch.rows);
    return m_aside.release(); // NOLINT: the tree's now
}
