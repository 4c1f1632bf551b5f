// Mouse and keys on the window, and the answers to its dialogs.
#include "Driver.h"

#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QFrame>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

namespace random_use {

void Driver::answering(const Step& step, const std::function<void()>& work) {
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&] { answer(step); });
    timer.start(0);
    work();
}

void Driver::answer(const Step& step) {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
        return answerMenu(menu, step);
    const QPointer<QWidget> dialog = QApplication::activeModalWidget();
    if (!dialog)
        return;
    auto* const input = qobject_cast<QInputDialog*>(dialog);
    auto* const color = qobject_cast<QColorDialog*>(dialog);
    auto* const question = qobject_cast<QMessageBox*>(dialog);
    const bool isNumber = input && input->inputMode() == QInputDialog::DoubleInput;
    if (input)
        m_said.asked << input->windowTitle() + ": " + input->labelText() + ": " +
                            (isNumber ? QStringLiteral("%1 of %2 to %3 with %4 decimals")
                                            .arg(input->doubleValue())
                                            .arg(input->doubleMinimum())
                                            .arg(input->doubleMaximum())
                                            .arg(input->doubleDecimals())
                                      : input->textValue());
    else if (color)
        m_said.asked << "Color: " + color->currentColor().name(QColor::HexArgb);
    else if (question)
        m_said.asked << question->windowTitle() + ": " + question->text();
    else
        m_said.asked << dialog->windowTitle();
    editData(nullptr, step.edit);
    if (!dialog)
        return; // it went with the window
    if (step.answer == Answer::Cancel) {
        QTest::keyClick(dialog, Qt::Key_Escape);
        return;
    }
    const QString text = QString::fromStdString(step.text);
    if (isNumber)
        input->setDoubleValue(text.toDouble());
    else if (input)
        input->setTextValue(text);
    else if (color)
        color->setCurrentColor(QColor::fromRgba(0x80000000U | step.c));
    QTest::keyClick(dialog, Qt::Key_Return);
}

void Driver::answerMenu(QMenu* menu, const Step& step) {
    const QPointer<QMenu> open = menu;
    QStringList texts;
    QList<QAction*> choices;
    for (QAction* action : menu->actions())
        if (!action->isSeparator()) {
            // Behind the name stands the place.
            texts << action->text().section(QLatin1String("  ("), 0, 0).replace("&&", "&");
            choices << action;
        }
    m_said.asked << menu->objectName() + ": " + texts.join(u'|');
    editData(nullptr, step.edit);
    if (!open || !open->isVisible())
        return;
    if (step.answer == Answer::Accept && choices.size() == 4) {
        menu->setActiveAction(choices[1 + int(step.c % 3)]);
        QTest::keyClick(menu, Qt::Key_Return);
    } else {
        QTest::keyClick(menu, Qt::Key_Escape);
    }
}

void Driver::activate() const {
    Vuxo* shown = window();
    if (shown->isActiveWindow())
        return;
    shown->activateWindow();
    QApplication::processEvents();
}

void Driver::doInWindow(const Step& step) {
    switch (step.action) {
    case Action::Menu:
        return trigger(step);
    case Action::Press:
    case Action::PressBelow:
        return answering(step, [&] { press(step); });
    case Action::Move:
        if (const std::optional<QPoint> to = shownRow(0) ? dragPlace(step) : std::nullopt) {
            QWidget* viewport = treeOf(window())->viewport();
            const QRect current = treeOf(window())->visualRect(treeOf(window())->currentIndex());
            m_seen.currentIsOnScreen =
                current.isValid() && current.bottom() >= 0 && current.top() < viewport->height();
            QMouseEvent move(QEvent::MouseMove, *to, viewport->mapToGlobal(*to), Qt::NoButton,
                             Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(viewport, &move);
        }
        return;
    case Action::Release:
        if (const std::optional<QPoint> at = dragPlace(step))
            QTest::mouseRelease(treeOf(window())->viewport(), Qt::LeftButton, {}, *at);
        return;
    case Action::DoubleClick:
        if (shownRow(0) && m_listener.answer.kind == EditKind::None)
            doubleClick(step);
        return;
    case Action::Open:
        return openRows();
    case Action::Key:
    case Action::Type:
        return key(step);
    case Action::Header:
        return clickHeader(step);
    case Action::PressEntry:
        if (listOf(window())->count() > 0)
            answering(step, [&] { pressEntry(step); });
        return;
    case Action::ListKey:
        return listKey(step);
    case Action::Field:
    case Action::TreeOnly:
    case Action::Button:
        return usePanel(step);
    default:
        return;
    }
}

// The row of that number, counted over all that are shown and round again; null in an empty tree.
TreeItem* Driver::shownRow(unsigned int number) const {
    std::vector<TreeItem*> rows;
    for (TreeItem* row = treeOf(window())->firstChild(); row; row = row->itemBelow())
        rows.push_back(row);
    return rows.empty() ? nullptr : rows[number % rows.size()];
}

QPoint Driver::placeIn(const TreeItem* row, unsigned int place) const {
    TreeView* tree = treeOf(window());
    tree->scrollTo(tree->rows()->indexOf(row));
    tree->horizontalScrollBar()->setValue(0);
    const QHeaderView* header = tree->header();
    if (header->length() + 20 > tree->viewport()->width()) {
        window()->resize(window()->width() + header->length() + 20 - tree->viewport()->width(),
                         window()->height());
        QApplication::sendPostedEvents();
        tree->scrollTo(tree->rows()->indexOf(row));
        tree->horizontalScrollBar()->setValue(0);
    }
    QPoint point = tree->visualRect(tree->rows()->indexOf(row)).center();
    const int step = tree->indentation();
    const int name = step * row->depth();
    if (place == RightOfAll)
        point.setX(header->length() + 8);
    else if (place == Indentation && row->depth() > 0)
        point.setX(name - step / 2);
    else if (place == MarkBegin || place == MarkEnd)
        point.setX(std::max(0, place == MarkBegin ? name - step : name - 1));
    else if (place == NameMargin || place == NameBegin)
        point.setX(place == NameMargin ? name + 1 : name + 2);
    else if (place != Indentation)
        point.setX(tree->visualRect(tree->rows()->indexOf(row, int(place))).center().x());
    return point;
}

QPoint Driver::belowRows() const {
    TreeView* tree = treeOf(window());
    tree->verticalScrollBar()->setValue(tree->verticalScrollBar()->maximum());
    // Where the rows fill the screen, the room below them is beyond its edge.
    int bottom = 0;
    for (const TreeItem* row = tree->firstChild(); row; row = row->itemBelow())
        bottom = tree->visualRect(tree->rows()->indexOf(row)).bottom();
    return {40, bottom + 12};
}

std::optional<QPoint> Driver::dragPlace(const Step& step) {
    unsigned int count = 0;
    for (const TreeItem* row = treeOf(window())->firstChild(); row; row = row->itemBelow())
        ++count;
    const unsigned int number = step.target % (count + 1);
    if (number != count)
        return placeIn(shownRow(number), Object);
    const QPoint below = belowRows();
    m_seen.hasRoomBelow = below.y() < treeOf(window())->viewport()->height();
    return m_seen.hasRoomBelow ? std::optional(below) : std::nullopt;
}

void Driver::press(const Step& step) {
    TreeItem* const row = shownRow(step.target);
    if (!row && step.action == Action::Press)
        return;
    const QPointer<QWidget> viewport = treeOf(window())->viewport();
    const Qt::MouseButton button = choose(buttons, step.a);
    const QPoint at =
        step.action == Action::Press ? placeIn(row, choose(places, step.b)) : belowRows();
    QTest::mousePress(viewport, button, choose(modifiers, step.c), at);
    if (viewport && button != Qt::LeftButton)
        QTest::mouseRelease(viewport, button, {}, at);
}

void Driver::doubleClick(const Step& step) {
    QWidget* viewport = treeOf(window())->viewport();
    const QPoint at = placeIn(shownRow(step.target), step.b % 4);
    QTest::mouseClick(viewport, Qt::LeftButton, {}, at);
    QMouseEvent second(QEvent::MouseButtonDblClick, at, viewport->mapToGlobal(at), Qt::LeftButton,
                       Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &second);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, at);
}

void Driver::openRows() {
    TreeView* tree = treeOf(window());
    for (int i = 0; i != openedAtOnce; ++i) {
        const TreeItem* row = tree->firstChild();
        while (row && (row->depth() == 0 || row->isOpen() || row->childCount() == 0))
            row = row->itemBelow();
        if (!row)
            return;
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, placeIn(row, Indentation));
    }
}

void Driver::key(const Step& step) {
    activate();
    const QPointer<TreeView> tree = treeOf(window());
    if (step.action == Action::Type) {
        QTest::keyClick(tree, choose(letterKeys, step.a));
        return;
    }
    const Qt::Key key = treeKey(step);
    lookAtScreen();
    const bool moves = key >= Qt::Key_Home && key <= Qt::Key_PageDown;
    answering(step, [&] {
        QTest::keyClick(tree, key,
                        key == Qt::Key_A ? Qt::ControlModifier
                        : moves          ? choose(modifiers, step.c)
                                         : Qt::NoModifier);
    });
}

// Which rows of the tree are on the screen.
void Driver::lookAtScreen() {
    const TreeView* tree = treeOf(window());
    if (!tree->firstChild())
        return;
    const int height = tree->viewport()->height();
    const TreeItem* const first = tree->itemAt({0, 0});
    const TreeItem* const last = tree->itemAt({0, height - 1});
    int number = 0;
    for (const TreeItem* row = tree->firstChild(); row; row = row->itemBelow(), ++number) {
        if (row == first)
            m_seen.first = number;
        if (row == last)
            m_seen.last = number;
    }
    m_seen.atOnce = height / tree->visualRect(tree->rows()->indexOf(tree->firstChild())).height();
}

void Driver::listKey(const Step& step) {
    activate();
    ListBox* list = listOf(window());
    m_seen.listRow = list->currentRow();
    answering(step, [&] { QTest::keyClick(list, random_use::listKey(step)); });
}

void Driver::pressEntry(const Step& step) {
    ListBox* list = listOf(window());
    const int number = int(step.target % unsigned(list->count() + 1));
    const bool below = number == list->count();
    const QListWidgetItem* entry = list->item(below ? number - 1 : number);
    list->scrollToItem(entry);
    const QPointer<QWidget> viewport = list->viewport();
    const QRect place = list->visualItemRect(entry);
    const QPoint at = below ? QPoint(place.center().x(), place.bottom() + 12) : place.center();
    const Qt::MouseButton button = choose(listButtons, step.a);
    QTest::mousePress(viewport, button, {}, at);
    if (viewport)
        QTest::mouseRelease(viewport, button, {}, at);
}

void Driver::clickHeader(const Step& step) {
    TreeView* tree = treeOf(window());
    tree->horizontalScrollBar()->setValue(0);
    const QHeaderView* header = tree->header();
    const int column = int(step.a % 4);
    const QPoint at(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                    header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
}

void Driver::usePanel(const Step& step) {
    QFrame* panel = panelOf(window());
    if (!panel->isVisible())
        return;
    if (step.action == Action::Field) {
        QLineEdit* field = panel->findChildren<QLineEdit*>()[int(step.a % 3)];
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        field->insert(QString::fromStdString(step.text)); // as it is pasted
    } else if (step.action == Action::TreeOnly) {
        QTest::keyClick(panel->findChild<QCheckBox*>(), Qt::Key_Space);
    } else {
        QPushButton* button = panel->findChildren<QPushButton*>()[int(step.a % 4)];
        QTest::mouseClick(button, Qt::LeftButton);
    }
}

} // namespace random_use
