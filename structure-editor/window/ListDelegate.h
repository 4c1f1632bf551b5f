// How the entries of the list of top-level items are drawn.
#pragma once

#include <QStyledItemDelegate>

#include <functional>

class QFontMetrics;

/// Draws the three marks of an entry in columns of equal width, so that names are aligned, and the
/// name in the remaining width, elided in the middle where it is too long.
class ListDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// Makes the tool tip of an entry from its index and its text; empty for none.
    using ToolTips = std::function<QString(int index, const QString& text)>;

    using QStyledItemDelegate::QStyledItemDelegate;

    void setToolTips(ToolTips toolTips) { m_toolTips = std::move(toolTips); }
    /// The width in pixels that shows all of `text`.
    static int widthOf(const QString& text, const QFontMetrics& metrics, const QWidget* list);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// Only as wide as the marks: a name takes the available width.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    ToolTips m_toolTips;
};
