#include "ListDelegate.h"

#include "ListEntry.h"
#include "tree/CellText.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace {

int markWidth(const QFontMetrics& metrics) {
    int width = 0;
    for (const char mark : {'O', 'X', '/', '_', ' '})
        width = std::max(width, metrics.horizontalAdvance(QLatin1Char(mark)));
    return width + 1;
}

int marksWidth(const QFontMetrics& metrics) {
    return static_cast<int>(ListEntry::markers) * markWidth(metrics);
}

// The style's margin on either side of a text in a cell.
int marginOf(const QWidget* widget) {
    const QStyle* const style = widget ? widget->style() : QApplication::style();
    return style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 1;
}

} // namespace

int ListDelegate::widthOf(const QString& text, const QFontMetrics& metrics, const QWidget* list) {
    return 2 * marginOf(list) + marksWidth(metrics) +
           metrics.horizontalAdvance(ListEntry::nameIn(text));
}

void ListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    makeLegible(cell);
    const bool hasFocus = takeFocus(cell);
    const QString text = std::exchange(cell.text, QString());
    const QWidget* const widget = cell.widget;
    (widget ? widget->style() : QApplication::style())
        ->drawControl(QStyle::CE_ItemViewItem, &cell, painter, widget);

    painter->save();
    painter->setFont(cell.font);
    painter->setPen(textColorOf(cell));
    const int margin = marginOf(widget);
    QRect rest = cell.rect.adjusted(margin, 0, -margin, 0);
    for (const QChar mark : text.left(ListEntry::markers)) {
        QRect column = rest;
        column.setWidth(markWidth(cell.fontMetrics));
        painter->drawText(column, Qt::AlignCenter | Qt::TextSingleLine, QString(mark));
        rest.setLeft(column.right() + 1);
    }
    painter->drawText(rest, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      cell.fontMetrics.elidedText(ListEntry::nameIn(text), Qt::ElideMiddle,
                                                  std::max(0, rest.width())));
    painter->restore();
    if (hasFocus)
        drawFocus(painter, cell);
}

QSize ListDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    // The focus frame needs a pixel above and below, and one more each between it and the text,
    // because "_" is at the very bottom.
    const int height = QStyledItemDelegate::sizeHint(option, index).height() + 4;
    return {2 * marginOf(option.widget) + marksWidth(option.fontMetrics), height};
}

bool ListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid() || !m_toolTips)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(),
                       plainToolTip(m_toolTips(index.row(), index.data().toString())),
                       view->viewport(), option.rect);
    return true;
}
