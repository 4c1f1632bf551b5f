// The host's own context menu for an item.
#include "DataPointBase.h"
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
    const QAction* show = menu.addAction(visible ? QStringLiteral("Hide") : QStringLiteral("Show"));
    const QAction* select =
        menu.addAction(selected ? QStringLiteral("Unselect") : QStringLiteral("Select"));
    const QAction* color = menu.addAction(QStringLiteral("Default color"));
    const QAction* chosen = menu.exec(menuPlace());
    if (!chosen || !menu.m_itemIsSafe)
        return;
    const DataPointBase guard(nullptr, Publisher::Update);
    if (!guard.m_good) {
        qDebug("%s", "Cannot update CDB!");
        return;
    }
    if (chosen == show)
        SetVisible(!visible);
    else if (chosen == select)
        SetSelected(!selected);
    else if (chosen == color)
        RestoreColor();
}
