#include "TreeDelegate.h"

#include "CellText.h"
#include "TreeModel.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

void TreeDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state.setFlag(QStyle::State_Selected, index.column() == TreeModel::Object &&
                                                      TreeModel::itemOf(index)->isSelected());
    option->showDecorationSelected = true;
    makeLegible(*option);
}

void TreeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    QStyleOptionViewItem cell = option;
    const Keyboard keyboard = takeFocus(cell) ? Keyboard::Here : Keyboard::Elsewhere;
    QStyledItemDelegate::paint(painter, cell, index);
    // Also what became current by a click or a search elsewhere is to be found in the tree.
    const auto* const view = qobject_cast<const QAbstractItemView*>(option.widget);
    if (keyboard == Keyboard::Elsewhere && !(view && view->currentIndex() == index))
        return;
    initStyleOption(&cell, index);
    drawFocus(painter, cell, keyboard);
}

bool TreeDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    if (sizeHint(option, index).width() > option.rect.width())
        QToolTip::showText(event->globalPos(), plainToolTip(index.data().toString()),
                           view->viewport(), option.rect);
    else
        QToolTip::hideText();
    return true;
}
