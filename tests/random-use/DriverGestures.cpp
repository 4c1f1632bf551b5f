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
#include <QLabel>
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
        color->setCurrentColor(QColor::fromRgba(chosenColor(step)));
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
        menu->setActiveAction(choices[1 + chosenEntry(step)]);
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
        if (const std::optional<QPoint> to =
                treeOf(window())->firstChild() ? dragPlace() : std::nullopt) {
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
        if (const std::optional<QPoint> at = dragPlace())
            QTest::mouseRelease(treeOf(window())->viewport(), Qt::LeftButton, {}, *at);
        return;
    case Action::DoubleClick:
        if (rowInStep() && m_listener.answer.kind == EditKind::None)
            doubleClick();
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

TreeItem* Driver::rowInStep() const {
    if (m_meaning.at < 0)
        return nullptr;
    TreeItem* row = treeOf(window())->firstChild();
    for (int i = 0; row && i != m_meaning.at; ++i)
        row = row->itemBelow();
    return row;
}

QPoint Driver::placeIn(const TreeItem* row, Place place) const {
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
    if (place == Place::RightOfAll)
        point.setX(header->length() + 8);
    else if (place == Place::Indentation && row->depth() > 0)
        point.setX(name - step / 2);
    else if (place == Place::MarkBegin || place == Place::MarkEnd)
        point.setX(std::max(0, place == Place::MarkBegin ? name - step : name - 1));
    else if (place == Place::NameMargin || place == Place::NameBegin)
        point.setX(place == Place::NameMargin ? name + 1 : name + 2);
    else if (place != Place::Indentation)
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

std::optional<QPoint> Driver::dragPlace() {
    if (const TreeItem* const row = rowInStep())
        return placeIn(row, Place::Object);
    const QPoint below = belowRows();
    m_seen.hasRoomBelow = below.y() < treeOf(window())->viewport()->height();
    return m_seen.hasRoomBelow ? std::optional(below) : std::nullopt;
}

void Driver::press(const Step& step) {
    TreeItem* const row = rowInStep();
    if (!row && step.action == Action::Press)
        return;
    const QPointer<QWidget> viewport = treeOf(window())->viewport();
    const QPoint at = row ? placeIn(row, step.place) : belowRows();
    QTest::mousePress(viewport, step.button, step.modifiers, at);
    if (viewport && step.button != Qt::LeftButton)
        QTest::mouseRelease(viewport, step.button, {}, at);
}

void Driver::doubleClick() {
    QWidget* viewport = treeOf(window())->viewport();
    const QPoint at = placeIn(rowInStep(), m_step.place);
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
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, placeIn(row, Place::Indentation));
    }
}

void Driver::key(const Step& step) {
    activate();
    const QPointer<TreeView> tree = treeOf(window());
    if (step.action == Action::Type) {
        QTest::keyClick(tree, step.key);
        return;
    }
    lookAtScreen();
    answering(step, [&] { QTest::keyClick(tree, step.key, step.modifiers); });
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
    answering(step, [&] { QTest::keyClick(list, step.key); });
}

void Driver::pressEntry(const Step& step) {
    ListBox* list = listOf(window());
    const bool below = m_meaning.at < 0;
    const QListWidgetItem* entry = list->item(below ? list->count() - 1 : m_meaning.at);
    list->scrollToItem(entry);
    const QPointer<QWidget> viewport = list->viewport();
    const QRect place = list->visualItemRect(entry);
    const QPoint at = below ? QPoint(place.center().x(), place.bottom() + 12) : place.center();
    const Qt::MouseButton button = step.button;
    QTest::mousePress(viewport, button, {}, at);
    if (viewport)
        QTest::mouseRelease(viewport, button, {}, at);
}

void Driver::clickHeader(const Step& step) {
    TreeView* tree = treeOf(window());
    tree->horizontalScrollBar()->setValue(0);
    const QHeaderView* header = tree->header();
    const int column = int(step.place);
    const QPoint at(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                    header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
}

namespace {

// As a user finds them, by what stands above a field and on a button.
QLineEdit* fieldIn(const QFrame* panel, const std::string& name) {
    for (const QLabel* label : panel->findChildren<QLabel*>())
        if (label->text().toStdString() == name)
            return qobject_cast<QLineEdit*>(label->buddy());
    return nullptr;
}

QPushButton* buttonIn(const QFrame* panel, const std::string& name) {
    for (QPushButton* button : panel->findChildren<QPushButton*>())
        if (button->text().startsWith(QString::fromStdString(name)))
            return button;
    return nullptr;
}

} // namespace

void Driver::usePanel(const Step& step) {
    QFrame* panel = panelOf(window());
    if (!panel->isVisible())
        return;
    if (step.action == Action::Field) {
        QLineEdit* field = fieldIn(panel, step.name);
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        field->insert(QString::fromStdString(step.text)); // as it is pasted
    } else if (step.action == Action::TreeOnly) {
        QTest::keyClick(panel->findChild<QCheckBox*>(), Qt::Key_Space);
    } else {
        QTest::mouseClick(buttonIn(panel, step.name), Qt::LeftButton);
    }
}

} // namespace random_use
