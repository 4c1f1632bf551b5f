#include "TreeItemIterator.h"

#include "TreeRoot.h"
#include "TreeView.h"

TreeItemIterator::TreeItemIterator(const TreeView* view) : TreeItemIterator(view->firstChild()) {}

TreeItemIterator::TreeItemIterator(TreeItem* start)
    : m_current(start), m_descending(start && start->root()->descending) {}

TreeItem* TreeItemIterator::after(const TreeItem* row) const {
    for (; !row->isRoot(); row = row->above()) {
        const TreeItem* const parent = row->above();
        const auto count = static_cast<std::uint32_t>(parent->childCount());
        const std::uint32_t next = row->shownAt(m_descending) + 1;
        if (constexpr std::uint32_t ahead = 12; next + ahead < count)
            __builtin_prefetch(parent->childAt(next + ahead, m_descending)->compound());
        if (next < count)
            return parent->childAt(next, m_descending);
    }
    return nullptr;
}
