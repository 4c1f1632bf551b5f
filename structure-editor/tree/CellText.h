// What list and tree share for the text of their cells: legible colours, plain-text tool tips, and
// the words for the state of an item.
#pragma once

#include <QColor>
#include <QString>

class QPainter;
class QStyleOptionViewItem;

/// Changes the text colour of a cell, where that is necessary, to one that can be read on what the
/// style paints behind it: the highlight, the cell's own brush, or else the view's base.
void makeLegible(QStyleOptionViewItem& option);
/// The colour that the style paints the text of a cell with.
QColor textColorOf(const QStyleOptionViewItem& option);

/// Removes the focus from what the style is to paint, because styles paint colours over the text.
/// Returns whether the cell has the focus.
bool takeFocus(QStyleOptionViewItem& option);
/// Who has the keyboard.
enum class Keyboard { Here, Elsewhere };
/// Marks that cell with a frame around its text, and nothing over it: a dotted one, or while the
/// keyboard is elsewhere a line in the colour of the highlight.
void drawFocus(QPainter* painter, const QStyleOptionViewItem& option,
               Keyboard keyboard = Keyboard::Here);

/// A tool tip with the text as it is, without markup; line breaks stay.
QString plainToolTip(const QString& text);

/// The state of an item in words: "shown, partly selected".
QString spokenState(bool isShown, bool isSelected, bool hasSelected);
