// What the keys do in the structure tree.
#include "TreeView.h"

#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

void TreeView::keyPressEvent(QKeyEvent* event) {
    endDrag();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    TreeItem* const current = currentItem();
    if (!current) {
        setCurrentItem(firstChild());
        event->setAccepted(firstChild() != nullptr);
        return;
    }
    TreeItem* const row = current->shownRow();
    const QString text = event->text();
    const bool types = !text.isEmpty() && text.at(0).isPrint() &&
                       !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));

    switch (event->key()) {
    case Qt::Key_A:
        if (modifiers != Qt::ControlModifier)
            break;
        m_typeAhead.forget();
        if (m_selection.selectAll())
            tellSelection();
        return;
    case Qt::Key_Space:
        m_typeAhead.forget();
        m_selection.toggle(row);
        scrollToRow(row);
        tellSelection();
        return;
    case Qt::Key_Plus:
    case Qt::Key_Minus:
    case Qt::Key_Left:
    case Qt::Key_Right:
        m_typeAhead.forget();
        if (!openByKey(row, event->key()))
            moveTo(rowByKey(row, event->key()), modifiers);
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        m_typeAhead.forget();
        moveTo(rowByKey(row, event->key()), modifiers);
        return;
    default:
        break;
    }
    if (types)
        moveTo(m_typeAhead.find(*this, row, text), Qt::NoModifier);
    else
        event->ignore();
}

// Opens or closes `row` if the key says so and it can be done.
bool TreeView::openByKey(TreeItem* row, int key) {
    const bool open = key == Qt::Key_Plus || key == Qt::Key_Right;
    if (row->isOpen() == open || (open && row->childCount() == 0))
        return false;
    row->setOpen(open);
    scrollToRow(row);
    return true;
}

// The row that a key leads to from `row`; null when it leads nowhere.
TreeItem* TreeView::rowByKey(TreeItem* row, int key) const {
    switch (key) {
    case Qt::Key_Up:
        return row->itemAbove();
    case Qt::Key_Down:
        return row->itemBelow();
    case Qt::Key_Home:
        return firstChild();
    case Qt::Key_End:
        return lastShown();
    case Qt::Key_PageUp:
        return page(row, false);
    case Qt::Key_PageDown:
        return page(row, true);
    case Qt::Key_Left:
        if (!row->parent())
            horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
        return row->parent();
    case Qt::Key_Right:
        if (row->childCount() == 0)
            horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return row->firstChild();
    default:
        return nullptr;
    }
}

TreeItem* TreeView::lastShown() const {
    TreeItem* row = nullptr;
    const TreeItem* above = m_rows->root();
    do {
        row = above->child(above->childCount() - 1);
        above = row;
    } while (row && row->isOpen() && row->childCount() > 0);
    return row;
}

// To the row at the edge of the screen, or from there on by as many rows as the screen holds.
TreeItem* TreeView::page(TreeItem* row, bool down) const {
    const int height = viewport()->height();
    const QRect rect = rectOf(row);
    TreeItem* const atEdge = itemAt({0, down ? height - 1 : 0});
    if (!atEdge)
        return down ? lastShown() : firstChild();
    if (atEdge != row && (down ? rect.bottom() < height : rect.top() > 0))
        return atEdge;
    TreeItem* to = row;
    for (int steps = std::max(1, height / std::max(1, rect.height()) - 1); steps > 0; --steps)
        if (TreeItem* next = down ? to->itemBelow() : to->itemAbove())
            to = next;
    return to;
}

void TreeView::moveTo(TreeItem* row, Qt::KeyboardModifiers modifiers) {
    if (!row)
        return;
    setCurrentItem(row);
    scrollToRow(row);
    if (m_selection.moveTo(row, modifiers))
        tellSelection();
}
