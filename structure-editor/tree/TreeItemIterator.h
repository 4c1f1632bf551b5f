// A walk over the rows of the structure tree.
#pragma once

#include "TreeItem.h"

/// A depth-first walk over all rows from one on, in the order shown and also in closed branches.
/// Ends with the last row of the tree. Making or deleting rows invalidates the iterator.
class TreeItemIterator {
public:
    /// Starts at the first row.
    explicit TreeItemIterator(const TreeView* view);
    /// Starts at `start`; with null the walk is over at once.
    explicit TreeItemIterator(TreeItem* start);

    /// Null when the walk is over.
    TreeItem* current() const { return m_current; }
    TreeItemIterator& operator++() {
        m_current =
            m_current->childCount() ? m_current->childAt(0, m_descending) : after(m_current);
        return *this;
    }
    /// Continues after all that lies below the current row.
    void skipBelow() { m_current = after(m_current); }

private:
    /// The first row after all descendants of `row`.
    TreeItem* after(const TreeItem* row) const;

    TreeItem* m_current;
    bool m_descending;
};
