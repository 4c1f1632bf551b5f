// What the keys do in the window as a whole: shortcuts and what is typed, entries, menus, the
// panel.
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "tree/TreeItem.h"
#include "window/ListBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

class WindowKeysTest : public WindowTestCase {
    Q_OBJECT

    int m_interval = QApplication::keyboardInputInterval();

    // Tests may be slow, and fingers are not.
    void init() override {
        TestCase::init();
        QApplication::setKeyboardInputInterval(3'600'000);
    }
    void cleanup() override {
        QApplication::setKeyboardInputInterval(m_interval);
        WindowTestCase::cleanup();
    }

    // How often the menu's entry of that name is chosen.
    std::unique_ptr<QSignalSpy> choices(const QString& label) {
        for (const QMenu* menu : m_window->findChildren<QMenu*>())
            for (QAction* action : menu->actions())
                if (action->text() == label)
                    return std::make_unique<QSignalSpy>(action, &QAction::triggered);
        return nullptr;
    }

    void activate() {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    // Presses a key that opens the host's menu, and returns what it is for; the entry `choice` is
    // chosen.
    static QString titleOfMenu(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers held,
                               const QString& choice = {}) {
        QString title;
        QTimer::singleShot(0, widget, [&] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            title = menu->actions().constFirst()->text().section(QLatin1String("  ("), 0, 0);
            for (QAction* action : menu->actions())
                if (action->text() == choice)
                    menu->setActiveAction(action);
            QTest::keyClick(menu, choice.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
        });
        QTest::keyClick(widget, key, held);
        QApplication::processEvents();
        return title;
    }

private slots:
    void theModelKeysWaitWhileANameIsTypedInTheTree() {
        Compound* entry = addEmpty("M", "Molecule");
        for (const char* name : {"ANP 1", "AF 2"})
            DataMaker::makeCore(entry, name, "Residue");
        showWindow();
        activate();
        const auto first = choices("FirstModel");
        const auto previous = choices("Prev Model");
        const auto next = choices("Next Model");
        TreeView* tree = treeOf(*m_window);
        QTest::keyClicks(tree, QStringLiteral("fpn"));
        QCOMPARE(takeMessages().size(), 3);
        QCOMPARE(first->count() + previous->count() + next->count(), 3);
        QTest::keyClicks(tree, QStringLiteral("anp"));
        QCOMPARE(tree->currentItem()->text(0), "ANP 1");
        QTest::keyClick(tree, Qt::Key_Home);
        QTest::keyClicks(tree, QStringLiteral("af"));
        QCOMPARE(tree->currentItem()->text(0), "AF 2");
        QCOMPARE(first->count() + previous->count() + next->count(), 3);
        QTest::keyClick(tree, Qt::Key_Up);
        QTest::keyClicks(tree, QStringLiteral("n"));
        QCOMPARE(takeMessages().size(), 1);
        QCOMPARE(next->count(), 2);
    }

    void theModelKeysWaitWhileANameIsTypedInTheList() {
        for (const char* name : {"1ubq", "1fnp", "x 1", "x 2"})
            addEmpty(name);
        openWindow();
        activate();
        const auto first = choices("FirstModel");
        const auto previous = choices("Prev Model");
        const auto next = choices("Next Model");
        ListBox* list = listOf(*m_window);
        QTest::keyClicks(list, QStringLiteral("p"));
        QCOMPARE(previous->count(), 1);
        QCOMPARE(takeMessages().size(), 1);
        QTest::keyClicks(list, QStringLiteral("1fnp"));
        QCOMPARE(highlighted(*m_window), 1);
        QCOMPARE(first->count() + previous->count() + next->count(), 1);
        QTest::keyClick(list, Qt::Key_End);
        QTest::keyClicks(list, QStringLiteral("x 2"));
        QCOMPARE(highlighted(*m_window), 3);
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClicks(list, QStringLiteral(" ")); // no name starts so
        QCOMPARE(highlighted(*m_window), 0);
        QTest::keyClicks(list, QStringLiteral("n"));
        QCOMPARE(next->count(), 1);
        QCOMPARE(takeMessages().size(), 1);
        QVERIFY(rows(*m_window).isEmpty());
    }

    void enterAndReturnOnAnEntryDoWhatALeftPressDoes() {
        addStructure("1abc");
        addStructure("2abc");
        addStructure("3abc");
        showWindow(0);
        ListBox* list = listOf(*m_window);
        QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(rows(*m_window).constFirst(), "1abc");
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(rows(*m_window).constFirst(), "2abc");
        QCOMPARE(highlighted(*m_window), 1);
        QTest::keyClick(list, Qt::Key_End);
        QTest::keyClick(list, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(rows(*m_window).constFirst(), "3abc");
        QCOMPARE(highlighted(*m_window), 2);
        // As with a press, nothing is built anew for the entry that is shown.
        QSignalSpy removed(treeOf(*m_window)->model(), &QAbstractItemModel::rowsRemoved);
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(removed.count(), 0);
    }

    void theMenuKeyInTheTreeOpensTheMenuOfTheCurrentRow() {
        addStructure("1abc");
        showWindow();
        TreeView* tree = treeOf(*m_window);
        QTest::keyClick(tree, Qt::Key_Down, Qt::ControlModifier);
        QCOMPARE(titleOfMenu(tree, Qt::Key_Menu, {}), "Molecule: A");
        QCOMPARE(titleOfMenu(tree, Qt::Key_F10, Qt::ShiftModifier), "Molecule: A");
        QCOMPARE(titleOfMenu(tree, Qt::Key_F10, {}), QString());
        QCOMPARE(titleOfMenu(tree, Qt::Key_Menu, {}, "Select"), "Molecule: A");
        QCOMPARE(cells(*m_window, {"1abc", "A"}).at(2), "Yes");
        QCOMPARE(tree->currentItem()->text(0), "A");
    }

    void theMenuThatAKeyOpensStandsAtTheRowOrEntry() {
        addStructure("1abc");
        addStructure("2abc");
        showWindow(1);
        const std::vector<QAbstractItemView*> views = {treeOf(*m_window), listOf(*m_window)};
        for (QAbstractItemView* view : views) {
            activate();
            view->setFocus();
            QVERIFY(view->hasFocus());
            const QRect place = view->visualRect(view->currentIndex());
            QPoint at;
            QTimer::singleShot(0, this, [&] {
                QWidget* menu = QApplication::activePopupWidget();
                QVERIFY(menu);
                at = view->viewport()->mapFromGlobal(menu->pos());
                menu->close();
            });
            QTest::keyClick(view, Qt::Key_Menu);
            QApplication::processEvents();
            QCOMPARE(at, place.bottomLeft() + QPoint(0, 1));
        }
    }

    void theMenuKeyInTheListOpensTheMenuOfTheEntry() {
        addStructure("1abc");
        addStructure("2abc");
        showWindow(0);
        ListBox* list = listOf(*m_window);
        QTest::keyClick(list, Qt::Key_Down);
        QVERIFY(titleOfMenu(list, Qt::Key_F10, Qt::ShiftModifier).endsWith(": 2abc"));
        QVERIFY(titleOfMenu(list, Qt::Key_Menu, {}, "Hide").endsWith(": 2abc"));
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", "O_ 2abc"}));
        QCOMPARE(rows(*m_window).constFirst(), "1abc");
    }

    void aMenuKeyWhereNothingIsCurrentOpensNothing() {
        openWindow();
        QCOMPARE(titleOfMenu(treeOf(*m_window), Qt::Key_Menu, {}), QString());
        QCOMPARE(titleOfMenu(listOf(*m_window), Qt::Key_Menu, {}), QString());
        QTest::keyClick(listOf(*m_window), Qt::Key_Return);
        QTest::keyClicks(listOf(*m_window), QStringLiteral("x"));
    }

    void theWindowMayEndWhileAMenuThatAKeyOpenedIsOpen() {
        addStructure("1abc");
        for (const bool inTree : {true, false}) {
            showWindow();
            QWidget* widget = inTree ? static_cast<QWidget*>(treeOf(*m_window))
                                     : static_cast<QWidget*>(listOf(*m_window));
            QTimer::singleShot(0, this, [&] {
                QWidget* menu = QApplication::activePopupWidget();
                QVERIFY(menu);
                m_window.reset();
                menu->close();
            });
            QTest::keyClick(widget, Qt::Key_Menu);
            QApplication::processEvents();
            QVERIFY(!m_window);
        }
    }

    void enterInAFieldOfThePanelPressesUnion() {
        Compound* entry = addStructure("1abc");
        showWindow();
        QFrame* panel = panelOf(*m_window);
        panel->show();
        const QList<QLineEdit*> fields = panel->findChildren<QLineEdit*>();
        QCOMPARE(fields.size(), 3);
        for (QLineEdit* field : fields)
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
                selectElsewhere(entry, false);
                QSignalSpy pressed(panel->findChildren<QPushButton*>().constFirst(),
                                   &QPushButton::clicked);
                QTest::keyClick(field, key);
                QCOMPARE(pressed.count(), 1);
                QVERIFY(itemAt(entry, {"A", "Groups", "HOH 2"})->IsSelected());
                QVERIFY(panel->isVisible());
            }
    }

    void escapeHidesThePanelAndNothingElse() {
        addStructure("1abc");
        showWindow();
        QFrame* panel = panelOf(*m_window);
        QList<QWidget*> places = {panel, panel->findChild<QCheckBox*>()};
        for (QLineEdit* field : panel->findChildren<QLineEdit*>())
            places << field;
        for (QPushButton* button : panel->findChildren<QPushButton*>())
            places << button;
        for (QWidget* place : places) {
            panel->show();
            panel->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(panel));
            place->setFocus();
            QTest::keyClick(place, Qt::Key_Escape);
            QVERIFY(!panel->isVisible());
            QVERIFY(m_window->isVisible());
        }
        QCOMPARE(panel->findChildren<QLineEdit*>().constFirst()->text(), ".*");
    }
};

REGISTER_TEST(WindowKeysTest)
#include "WindowKeysTest.moc"
