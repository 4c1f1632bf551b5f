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
    const bool hasFocus = takeFocus(cell);
    QStyledItemDelegate::paint(painter, cell, index);
    if (!hasFocus)
        return;
    initStyleOption(&cell, index);
    drawFocus(painter, cell);
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
