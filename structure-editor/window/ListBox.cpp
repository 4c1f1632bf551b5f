#include "ListBox.h"

#include "ListEntry.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr int narrowest = 40;
constexpr int widest = 200;
// The width of an empty list fits a name of this many characters, for later entries.
constexpr int usualLength = 12;
// Number of entries that the size hint measures, to bound its cost.
constexpr int sampled = 1000;

} // namespace

ListBox::ListBox(QWidget* parent) : QListWidget(parent), m_delegate(new ListDelegate(this)) {
    setItemDelegate(m_delegate);
    // Names are elided rather than scrolled to.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    // Otherwise the list would scroll back to the shown entry at each press on another one.
    setAutoScroll(false);
    // Menus are opened by keys only: the right button has another meaning.
    setContextMenuPolicy(Qt::PreventContextMenu);
}

int ListBox::widthAroundEntries() const {
    return 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
}

int ListBox::widthFor(int letters) const {
    const QString marks(ListEntry::markers, u' ');
    const int width = widthAroundEntries() + ListDelegate::widthOf(marks, fontMetrics(), this) +
                      letters * fontMetrics().averageCharWidth();
    return std::clamp(width, narrowest, widest);
}

QSize ListBox::sizeHint() const {
    const int around = widthAroundEntries();
    int width = widthFor(usualLength);
    const int last = std::min(count(), sampled);
    for (int i = 0; i < last && width < widest; ++i)
        width =
            std::max(width, around + ListDelegate::widthOf(item(i)->text(), fontMetrics(), this));
    return {std::clamp(width, narrowest, widest), QListWidget::sizeHint().height()};
}

void ListBox::setToolTips(ListDelegate::ToolTips toolTips) {
    m_delegate->setToolTips(std::move(toolTips));
}

void ListBox::setEntries(const QStringList& texts) {
    // All are made before the old ones go: memory may run out.
    std::vector<std::unique_ptr<ListEntry>> entries;
    entries.reserve(static_cast<std::size_t>(texts.size()));
    for (const QString& text : texts)
        entries.push_back(std::make_unique<ListEntry>(text));
    clear();
    for (std::unique_ptr<ListEntry>& entry : entries)
        addItem(entry.release());
}

void ListBox::changeItem(const QString& text, int index) {
    QListWidgetItem* const entry = item(index);
    // Setting an equal text would still lay out the whole list anew.
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

// A running search gets its keys before the window's shortcuts.
bool ListBox::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        m_typeAhead.takes(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QListWidget::event(event);
}

void ListBox::keyPressEvent(QKeyEvent* event) {
    if (TypeAhead::isTyped(*event)) {
        type(event->text());
        return;
    }
    m_typeAhead.forget();
    QListWidgetItem* const entry = currentItem();
    const int key = event->key();
    const bool opensMenu =
        key == Qt::Key_Menu || (key == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier);
    if (entry && opensMenu) {
        scrollToItem(entry);
        emit menuRequested(entry);
    } else if (entry && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        pressByKey(entry);
    } else {
        const int before = currentRow();
        QListWidget::keyPressEvent(event);
        if (currentRow() != before)
            scrollToItem(currentItem());
    }
}

void ListBox::pressByKey(QListWidgetItem* entry) {
    scrollToItem(entry);
    setCurrentItem(entry, QItemSelectionModel::ClearAndSelect);
    emit mouseButtonPressed(Qt::LeftButton, entry,
                            viewport()->mapToGlobal(visualItemRect(entry).center()));
}

// A blank starts no search, but continues one.
void ListBox::type(const QString& text) {
    struct Entries {
        const ListBox& list;

        int below(int row) const { return row + 1 < list.count() ? row + 1 : 0; }
        bool startsWith(int row, const QString& prefix) const {
            return QStringView(list.item(row)->text())
                .mid(ListEntry::markers)
                .startsWith(prefix, Qt::CaseInsensitive);
        }
    };
    if (count() == 0)
        return;
    const Entries entries{*this};
    const int from = std::max(0, currentRow());
    const std::optional<int> found = text == u" " ? m_typeAhead.goOn(entries, from, text)
                                                  : m_typeAhead.find(entries, from, text);
    if (!found)
        return;
    setCurrentRow(*found, QItemSelectionModel::ClearAndSelect);
    scrollToItem(item(*found));
}
