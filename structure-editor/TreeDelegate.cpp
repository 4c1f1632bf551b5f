#include "TreeDelegate.h"

#include "TreeModel.h"

void TreeDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state.setFlag(QStyle::State_Selected, index.column() == TreeModel::Object &&
                                                      TreeModel::itemOf(index)->isSelected());
    option->showDecorationSelected = true;
}
