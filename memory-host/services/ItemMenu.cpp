// The host's own context menu for an item.
#include "ChangeData.h"
#include "Changed.h"
#include "Subscriber.h"
#include "items/HostItem.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>

#include <string>

namespace {

// Closes the menu when anything is destroyed, because that may have been the item.
class OpenMenu : public QMenu, public Subscriber {
public:
    bool m_itemIsSafe = true;

private:
    void commUpdate() override {}
    void commAdd() override {}
    void commDelete() override {
        m_itemIsSafe = false;
        close();
    }
};

QString menuTitle(const TAVIK::Compound& item) {
    QString title = QStringLiteral("%1: %2").arg(QString::fromLatin1(item.GetType()),
                                                 QString::fromLatin1(item.GetName()));
    if (const TAVIK::Vertex at = item.GetPosition(); at.isValid())
        title += QStringLiteral("  (%1, %2, %3) Å").arg(at[0]).arg(at[1]).arg(at[2]);
    return title.replace(u'&', QStringLiteral("&&"));
}

// At the mouse while a button is down. Otherwise a key opened the menu, whose place is then the
// widget with the focus; in a tree, its current row.
QPoint menuPlace() {
    const QWidget* focused = QApplication::focusWidget();
    if (!focused || QGuiApplication::mouseButtons() != Qt::NoButton)
        return QCursor::pos();
    QRect place = focused->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    if (const auto* view = qobject_cast<const QAbstractItemView*>(focused)) {
        focused = view->viewport();
        place = view->visualRect(view->currentIndex());
    }
    return focused->mapToGlobal(place.bottomLeft() + QPoint(0, 1));
}

} // namespace

void TAVIK::Compound::ShowMenu() {
    OpenMenu menu;
    menu.setObjectName(QStringLiteral("ItemMenu"));
    menu.addAction(menuTitle(*this))->setEnabled(false);
    menu.addSeparator();
    // Read once: the actions do what their texts say, even if others change the item meanwhile.
    const bool visible = IsVisible();
    const bool selected = IsSelected();
    const char* const showText = visible ? "Hide" : "Show";
    const char* const selectText = selected ? "Unselect" : "Select";
    const QAction* show = menu.addAction(QLatin1String(showText));
    const QAction* select = menu.addAction(QLatin1String(selectText));
    const QAction* color = menu.addAction(QStringLiteral("Default color"));
    const QAction* chosen = menu.exec(menuPlace());
    if (!chosen || !menu.m_itemIsSafe)
        return;
    const char* const deed = chosen == show     ? showText
                             : chosen == select ? selectText
                                                : "Default color of";
    changeData(DataPointBase(nullptr, Publisher::Update, deed), [&](DataPointBase& guard) {
        setLabel(guard, deed, Changed(*this));
        if (chosen == show)
            SetVisible(!visible);
        else if (chosen == select)
            SetSelected(!selected);
        else if (chosen == color)
            RestoreColor();
    });
}
