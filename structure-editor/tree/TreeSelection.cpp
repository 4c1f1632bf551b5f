#include "TreeSelection.h"

#include "SharedRows.h"
#include "TreeView.h"

#include <new>
#include <utility>

namespace {

void set(TreeItem* row, bool selected) {
    if (row->isSelected() != selected)
        row->setSelected(selected);
}

bool isBelow(const TreeItem* row, const TreeItem* above) {
    while (row && row != above)
        row = row->parent();
    return row;
}

// Unselects the descendants of `above` that come after `row` and its descendants.
void clearAfter(TreeItem* row, TreeItem* above) {
    TreeItemIterator end(above);
    end.skipBelow();
    TreeItemIterator it(row);
    for (it.skipBelow(); it.current() != end.current(); ++it)
        set(it.current(), false);
}

// Whether `row` is cleared and set again even if it stays selected: see the class.
bool goesWhole(const TreeItem* row) {
    return row->selectsOthers();
}

} // namespace

void TreeSelection::forget() {
    m_anchor = nullptr;
    m_pressed = nullptr;
}

bool TreeSelection::press(TreeItem* row, TreeItem* current, Qt::KeyboardModifiers modifiers) {
    if (modifiers & Qt::ShiftModifier)
        return extendTo(row, current ? current : m_anchor);
    m_anchor = row;
    if (modifiers & Qt::ControlModifier) {
        toggle(row);
        return true;
    }
    if (row->isSelected()) {
        m_pressed = row;
        return false;
    }
    selectOnly(row);
    return true;
}

bool TreeSelection::pressNothing(Qt::KeyboardModifiers modifiers) {
    return !(modifiers & Qt::ControlModifier) && setAll(false);
}

void TreeSelection::pressMark(TreeItem* row, Qt::KeyboardModifiers modifiers) {
    if (!(modifiers & Qt::ShiftModifier))
        m_anchor = row;
}

bool TreeSelection::release(TreeItem* row) {
    const TreeItem* pressed = std::exchange(m_pressed, nullptr);
    if (!row || row != pressed)
        return false;
    selectOnly(row);
    return true;
}

bool TreeSelection::extendTo(TreeItem* row, TreeItem* current) {
    if (!m_anchor)
        return false;
    TreeItem* first = m_anchor;
    TreeItem* last = row;
    if (isBefore(last, first))
        std::swap(first, last);
    if (isBefore(current, first)) {
        // A row that held the range goes with all that it holds, also behind the range.
        TreeItem* outermost = nullptr;
        for (TreeItem* above = first->parent(); above && !isBefore(above, current);
             above = above->parent())
            if (above->isSelected())
                outermost = above;
        for (TreeItemIterator it(current); it.current() != first; ++it)
            set(it.current(), false);
        // The outermost row of the range around `last`, whose descendants are unselected with it.
        TreeItem* end = last;
        for (TreeItem* above = last->parent(); above && above != outermost; above = above->parent())
            if (!isBefore(above, first))
                end = above;
        if (outermost && isBelow(last, outermost))
            clearAfter(end, outermost);
    } else if (isBefore(last, current)) {
        for (TreeItemIterator it(last); it.current() != current;) {
            ++it;
            set(it.current(), false);
        }
    }
    if (goesWhole(last))
        set(last, false);
    for (TreeItemIterator it(first);; ++it) {
        set(it.current(), true);
        if (it.current() == last)
            break;
    }
    leaveShared({first, last, false});
    return true;
}

bool TreeSelection::moveTo(TreeItem* row, Qt::KeyboardModifiers modifiers) {
    const bool control = modifiers & Qt::ControlModifier;
    const bool shift = modifiers & Qt::ShiftModifier;
    if (!shift || !m_anchor)
        m_anchor = row;
    if (shift) {
        TreeItem* first = m_anchor->shownRow();
        TreeItem* last = row;
        if (isBefore(last, first))
            std::swap(first, last);
        selectShown(first, last, !control);
        return true;
    }
    if (!control)
        selectOnly(row);
    return !control;
}

void TreeSelection::toggle(TreeItem* row) {
    m_anchor = row;
    row->setSelected(!row->isSelected());
}

bool TreeSelection::selectAll() {
    return setAll(true);
}

bool TreeSelection::setAll(bool selected) {
    bool changed = false;
    for (TreeItemIterator it(&m_view); it.current(); ++it) {
        changed = changed || it.current()->isSelected() != selected;
        set(it.current(), selected);
    }
    return changed;
}

void TreeSelection::selectOnly(TreeItem* row) {
    selectShown(row, row, true);
}

// Selects the rows on screen from `first` to `last`; with `only`, unselects all others.
void TreeSelection::selectShown(TreeItem* first, TreeItem* last, bool only) {
    if (only) {
        TreeItem* kept = first;
        for (TreeItemIterator it(&m_view); it.current(); ++it) {
            const bool inRange = it.current() == kept;
            if (inRange)
                kept = kept == last ? nullptr : kept->itemBelow();
            if (!inRange || goesWhole(it.current()))
                set(it.current(), false);
        }
    }
    for (TreeItem* row = first;; row = row->itemBelow()) {
        set(row, true);
        if (row == last)
            break;
    }
    leaveShared({first, last, true});
}

void TreeSelection::leaveShared(const RowRange& wanted) {
    for (TreeItem* above = wanted.first->parent(); above; above = above->parent())
        above->forgetUnselecting();
    if (!m_view.rows()->root()->holdsSets())
        return;
    try {
        leaveSharedRows(m_view, wanted);
    } catch (const std::bad_alloc&) {
        // Then sets are handed over like all other rows, and may unselect what they share.
    }
}
