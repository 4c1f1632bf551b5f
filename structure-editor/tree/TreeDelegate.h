// How the cells of the structure tree are drawn.
#pragma once

#include <QStyledItemDelegate>

/// Highlights a selected row only in its first column, so that the colour of the item stays visible
/// behind the second. The current row has a frame, wherever the keyboard is. Text is legible with
/// any palette and item colour. A text that is too long for its cell has a tool tip.
class TreeDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
