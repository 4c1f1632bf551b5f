// A walk over the rows of the structure tree.
#pragma once

#include "TreeItem.h"

/// A depth-first walk over all rows from one on, as they are shown, those of closed branches
/// included. It ends with the last row of the tree, and is void once rows come or go.
class TreeItemIterator {
public:
    /// Starts at the first row.
    explicit TreeItemIterator(const TreeView* view);
    /// Starts at `start`, which may be null: the walk is over then.
    explicit TreeItemIterator(TreeItem* start);

    /// Null when the walk is over.
    TreeItem* current() const { return m_current; }
    TreeItemIterator& operator++() {
        m_current =
            m_current->childCount() ? m_current->childAt(0, m_descending) : after(m_current);
        return *this;
    }
    /// Goes on without what lies below the current row.
    void skipBelow() { m_current = after(m_current); }

private:
    /// The first row after all that lies below `row`.
    TreeItem* after(const TreeItem* row) const;

    TreeItem* m_current;
    bool m_descending;
};
