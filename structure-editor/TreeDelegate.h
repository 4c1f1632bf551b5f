// How the cells of the structure tree are drawn.
#pragma once

#include <QStyledItemDelegate>

/// Highlights a selected row in its first column alone, so that the colour of the item stays seen
/// behind the second.
class TreeDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
