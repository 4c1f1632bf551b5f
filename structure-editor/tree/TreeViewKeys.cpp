// Keyboard handling of the structure tree.
#include "TreeView.h"

#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <optional>
#include <string>

namespace {

// The rows of the open branches, for the search by typing.
struct ShownRows {
    const TreeView& view;

    TreeItem* below(TreeItem* row) const {
        TreeItem* const next = row->itemBelow();
        return next ? next : view.firstChild();
    }
    static bool startsWith(const TreeItem* row, const QString& prefix) {
        if (!row->compound())
            return false;
        const std::string name = row->compound()->GetName();
        return QLatin1String(name.data(), static_cast<qsizetype>(name.size()))
            .startsWith(prefix, Qt::CaseInsensitive);
    }
};

} // namespace

// A running search gets its keys before the window's shortcuts.
bool TreeView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        m_typeAhead.takes(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
}

void TreeView::keyPressEvent(QKeyEvent* event) {
    endDrag();
    TreeItem* const current = currentItem();
    if (!current) {
        setCurrentItem(firstChild());
        event->setAccepted(firstChild() != nullptr);
        return;
    }
    TreeItem* const row = current->shownRow();
    Qt::KeyboardModifiers modifiers = event->modifiers();

    switch (event->key()) {
    case Qt::Key_A:
        if (modifiers != Qt::ControlModifier)
            break;
        m_typeAhead.forget();
        if (m_selection.selectAll())
            tellSelection();
        return;
    case Qt::Key_F10:
        if (modifiers != Qt::ShiftModifier)
            break;
        showMenuByKey(row);
        return;
    case Qt::Key_Menu:
        showMenuByKey(row);
        return;
    case Qt::Key_Space:
        if (goOnTyping(row, *event))
            return;
        m_typeAhead.forget();
        m_selection.toggle(row);
        scrollToRow(row);
        tellSelection();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        emit currentRowChanged(true);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Minus:
        if (goOnTyping(row, *event))
            return;
        // Many keyboards have these characters only with Shift.
        modifiers.setFlag(Qt::ShiftModifier, false);
        [[fallthrough]];
    case Qt::Key_Left:
    case Qt::Key_Right:
        m_typeAhead.forget();
        moveTo(openByKey(row, event->key()) ? row : rowByKey(row, event->key()), modifiers);
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
    if (TypeAhead::isTyped(*event))
        moveTo(m_typeAhead.find(ShownRows{*this}, row, event->text()).value_or(nullptr),
               Qt::NoModifier);
    else
        event->ignore();
}

// Whether the key was the next character of a search that is running.
bool TreeView::goOnTyping(TreeItem* row, const QKeyEvent& event) {
    if (!TypeAhead::isTyped(event))
        return false;
    const std::optional<TreeItem*> found = m_typeAhead.goOn(ShownRows{*this}, row, event.text());
    if (found)
        moveTo(*found, Qt::NoModifier);
    return found.has_value();
}

void TreeView::showMenuByKey(TreeItem* row) {
    m_typeAhead.forget();
    setCurrentItem(row);
    scrollToRow(row);
    triggerUpdate();
    if (TAVIK::Compound* const item = row->compound())
        item->ShowMenu(); // Row and item, and the view itself, may be gone now.
}

// Opens or closes `row` if the key asks for it and it is possible.
bool TreeView::openByKey(TreeItem* row, int key) {
    const bool open = key == Qt::Key_Plus || key == Qt::Key_Right;
    if (row->isOpen() == open || (open && row->childCount() == 0))
        return false;
    row->setOpen(open);
    return true;
}

// The row that a key moves to from `row`; null if there is none.
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

// The row at the edge of the screen or, from there, one page further.
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
