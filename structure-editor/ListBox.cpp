#include "ListBox.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>

namespace {

constexpr int narrowest = 40;
constexpr int widest = 200;
// An empty list is as wide as an entry of this many characters: names that come later can be read.
constexpr int usualLength = 12;
// Entries that the size hint looks at: more of them would tell little, and take long.
constexpr int sampled = 1000;

} // namespace

ListBox::ListBox(QWidget* parent) : QListWidget(parent) {
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    // The list must not jump back to the shown entry each time that another one is pressed.
    setAutoScroll(false);
}

QSize ListBox::sizeHint() const {
    const int around = 2 * frameWidth() + verticalScrollBar()->sizeHint().width() +
                       2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 2;
    int width = around + usualLength * fontMetrics().averageCharWidth();
    const int last = std::min(count(), sampled);
    for (int i = 0; i < last && width < widest; ++i)
        width = std::max(width, around + fontMetrics().horizontalAdvance(item(i)->text()));
    return {std::clamp(width, narrowest, widest), QListWidget::sizeHint().height()};
}

void ListBox::changeItem(const QString& text, int index) {
    QListWidgetItem* const entry = item(index);
    // An equal text would still cost a new layout of the whole list.
    if (entry && entry->text() != text)
        entry->setText(text);
}

void ListBox::setSelected(int index, bool on) {
    if (index < 0 || index >= count())
        return;
    if (on)
        setCurrentRow(index, QItemSelectionModel::ClearAndSelect);
    else
        item(index)->setSelected(false);
}

void ListBox::mousePressEvent(QMouseEvent* event) {
    QListWidgetItem* const pressed = itemAt(event->position().toPoint());
    if (pressed)
        setCurrentItem(pressed, QItemSelectionModel::ClearAndSelect);
    event->accept();
    emit mouseButtonPressed(event->button(), pressed, event->globalPosition().toPoint());
}

void ListBox::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
}

void ListBox::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

void ListBox::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

void ListBox::keyPressEvent(QKeyEvent* event) {
    const int before = currentRow();
    QListWidget::keyPressEvent(event);
    if (currentRow() != before)
        scrollToItem(currentItem());
}
