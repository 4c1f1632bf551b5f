// The list widget of the top-level items: it reports every mouse press on its entries, and leaves
// the meaning of the press to the receiver.
#pragma once

#include "ListDelegate.h"
#include "ListEntry.h"
#include "tree/TypeAhead.h"

#include <QListWidget>

/// A list of one-line entries, as ListEntry describes them, of which at most one is highlighted. A
/// press of any button makes the entry current and highlighted, and is then reported; the rest of a
/// mouse gesture is swallowed. The keys move the highlight, as does typing the start of a name, and
/// report nothing; only Enter and Return do what a press of the left button does.
class ListBox : public QListWidget {
    Q_OBJECT
public:
    explicit ListBox(QWidget* parent = nullptr);

    /// Wide enough for the entries, between 40 and 200 pixels.
    QSize sizeHint() const override;
    /// The width in pixels for names of that many letters; within the same bounds.
    int widthFor(int letters) const;
    /// Sets the function that makes the tool tip of an entry each time it is shown.
    void setToolTips(ListDelegate::ToolTips toolTips);

    /// Replaces all entries; none is highlighted then.
    void setEntries(const QStringList& texts);
    /// Changes the text of entry `index`, not its highlight. Without such an entry nothing happens.
    void changeItem(const QString& text, int index);
    /// Highlights entry `index`, and no other, or removes its highlight. Highlighting makes it
    /// current; the list is not scrolled. Without such an entry nothing happens.
    void setSelected(int index, bool on);

signals:
    /// A mouse button went down on `item`, or on no entry when null; `pos` is on the screen. The
    /// receiver may destroy the entries, and the list.
    void mouseButtonPressed(int button, QListWidgetItem* item, const QPoint& pos);
    /// A key asks for the menu of `item`. The receiver may destroy the entries, and the list.
    void menuRequested(QListWidgetItem* item);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void pressByKey(QListWidgetItem* entry);
    void type(const QString& text);
    int widthAroundEntries() const;

    ListDelegate* m_delegate;
    TypeAhead m_typeAhead;
};
