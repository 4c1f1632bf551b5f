#include "CellText.h"

#include "Legible.h"

#include <QPainter>
#include <QStyleOptionViewItem>
#include <QTextDocument>

namespace {

QPalette::ColorGroup groupOf(const QStyleOptionViewItem& option) {
    if (!option.state.testFlag(QStyle::State_Enabled))
        return QPalette::Disabled;
    return option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

QPalette::ColorRole textRoleOf(const QStyleOptionViewItem& option) {
    return option.state.testFlag(QStyle::State_Selected) ? QPalette::HighlightedText
                                                         : QPalette::Text;
}

QColor behindText(const QStyleOptionViewItem& option) {
    if (option.state.testFlag(QStyle::State_Selected))
        return option.palette.color(groupOf(option), QPalette::Highlight);
    const bool alternate = option.features.testFlag(QStyleOptionViewItem::Alternate);
    return option.palette.color(groupOf(option),
                                alternate ? QPalette::AlternateBase : QPalette::Base);
}

} // namespace

void makeLegible(QStyleOptionViewItem& option) {
    const QColor wanted = textColorOf(option);
    QColor color;
    if (option.state.testFlag(QStyle::State_Selected)) {
        // A highlight has strong contrast, so the text on it is black or white.
        const QColor highlight = behindText(option);
        const bool isReadable = legible::contrast(wanted, highlight) >= legible::least;
        color = isReadable ? wanted : legible::blackOrWhite(highlight);
    } else if (option.backgroundBrush.style() != Qt::NoBrush) {
        // A cell's own colour does not match any palette.
        color = legible::blackOrWhite(option.backgroundBrush.color());
    } else {
        color = legible::text(wanted, behindText(option));
    }
    option.palette.setColor(groupOf(option), textRoleOf(option), color);
}

QColor textColorOf(const QStyleOptionViewItem& option) {
    return option.palette.color(groupOf(option), textRoleOf(option));
}

bool takeFocus(QStyleOptionViewItem& option) {
    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
    option.state.setFlag(QStyle::State_HasFocus, false);
    return hasFocus;
}

void drawFocus(QPainter* painter, const QStyleOptionViewItem& option, Keyboard keyboard) {
    const bool isHere = keyboard == Keyboard::Here;
    const QPalette::ColorRole role = isHere ? QPalette::WindowText : QPalette::Highlight;
    const QColor color =
        legible::text(option.palette.color(groupOf(option), role), behindText(option));
    painter->save();
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(color, 1, isHere ? Qt::DotLine : Qt::SolidLine));
    // On a high-DPI screen half of the pen reaches out of the cell, where it would not be repainted
    // when the focus leaves.
    painter->setClipRect(option.rect, Qt::IntersectClip);
    painter->drawRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5));
    painter->restore();
}

QString plainToolTip(const QString& text) {
    return Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}

QString spokenState(bool isShown, bool isSelected, bool hasSelected) {
    return QLatin1String(isShown ? "shown, " : "hidden, ") +
           QLatin1String(isSelected    ? "wholly selected"
                         : hasSelected ? "partly selected"
                                       : "not selected");
}
