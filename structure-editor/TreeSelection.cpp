#include "TreeSelection.h"

#include "TreeView.h"

#include <utility>

namespace {

// Whether `a` comes before `b` in the order shown; a row comes before what lies below it.
bool isBefore(const TreeItem* a, const TreeItem* b) {
    const int depthA = a->depth();
    const int depthB = b->depth();
    const TreeItem* aboveA = a;
    const TreeItem* aboveB = b;
    for (int depth = depthA; depth > depthB; --depth)
        aboveA = aboveA->parent();
    for (int depth = depthB; depth > depthA; --depth)
        aboveB = aboveB->parent();
    if (aboveA == aboveB)
        return depthA < depthB;
    while (aboveA->parent() != aboveB->parent()) {
        aboveA = aboveA->parent();
        aboveB = aboveB->parent();
    }
    return aboveA->position() < aboveB->position();
}

void set(TreeItem* row, bool selected) {
    if (row->isSelected() != selected)
        row->setSelected(selected);
}

// Whether `row` is cleared like all others although it stays selected: see the class.
bool goesWhole(const TreeItem* row) {
    return row->selectsOthers();
}

} // namespace

void TreeSelection::forget() {
    m_anchor = nullptr;
    m_pressed = nullptr;
}

TreeItem* TreeSelection::anchor() const {
    return m_anchor ? m_anchor : m_view.firstChild();
}

bool TreeSelection::press(TreeItem* row, TreeItem* current, Qt::KeyboardModifiers modifiers) {
    if (modifiers & Qt::ShiftModifier) {
        extendTo(row, current ? current : anchor());
        return true;
    }
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

bool TreeSelection::release(TreeItem* row) {
    const TreeItem* pressed = std::exchange(m_pressed, nullptr);
    if (!row || row != pressed)
        return false;
    selectOnly(row);
    return true;
}

void TreeSelection::extendTo(TreeItem* row, TreeItem* current) {
    TreeItem* first = anchor();
    TreeItem* last = row;
    if (isBefore(last, first))
        std::swap(first, last);
    if (isBefore(current, first)) {
        for (TreeItemIterator it(current); it.current() != first; ++it)
            set(it.current(), false);
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
}

bool TreeSelection::moveTo(TreeItem* row, Qt::KeyboardModifiers modifiers) {
    const bool control = modifiers & Qt::ControlModifier;
    if (modifiers & Qt::ShiftModifier) {
        TreeItem* first = anchor()->shownRow();
        TreeItem* last = row;
        if (isBefore(last, first))
            std::swap(first, last);
        selectShown(first, last, !control);
        return true;
    }
    m_anchor = row;
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

// Selects the rows on screen from `first` to `last`, and unselects the others if `only` these.
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
}
