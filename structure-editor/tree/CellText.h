// What list and tree share in the text of their cells: colours that can be read, tool tips that show
// it letter by letter, and the words for the state of an item.
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

/// Takes the mark of the cell that has the keyboard's focus out of what the style is to paint, and
/// says whether it was there: styles lay colours over the text.
bool takeFocus(QStyleOptionViewItem& option);
/// Marks that cell with a frame around its text, and nothing over it.
void drawFocus(QPainter* painter, const QStyleOptionViewItem& option);

/// The text as a tool tip that takes nothing in it for markup; its lines stay lines.
QString plainToolTip(const QString& text);

/// The state of an item in words: "shown, partly selected".
QString spokenState(bool isShown, bool isSelected, bool hasSelected);
