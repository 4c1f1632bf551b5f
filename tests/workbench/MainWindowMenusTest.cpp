// The menus of the main window as its user meets them: letters, and which entry is closed.
#include "FindBox.h"
#include "Focus.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "TestData.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>

class MainWindowMenusTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// Presses Alt with a letter, where the keyboard is, and returns which menu of which bar opens.
    static QString opened(Qt::Key key) {
        QTest::keyClick(QApplication::focusWidget(), key, Qt::AltModifier);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return {};
        const QString title = menu->title().remove('&');
        // The windows of plug-ins stand within the main one.
        const QWidget* window = menu->parentWidget();
        while (window && !qobject_cast<const QMainWindow*>(window))
            window = window->parentWidget();
        const bool isMain = qobject_cast<const workbench::MainWindow*>(window) != nullptr;
        menu->close();
        return (isMain ? "main " : "plug-in ") + title;
    }
    QStringList titles() const {
        QStringList all;
        for (const QAction* action : m_window->menuBar()->actions())
            all << action->text();
        return all;
    }

    /// The text of the entry that closes, in the menu that is open.
    QString closingText() {
        QMenu* const menu = fileMenu();
        menu->popup(m_window->mapToGlobal(QPoint(0, 20)));
        QString text;
        for (const QAction* action : menu->actions())
            if (action->shortcut() == QKeySequence(QKeySequence::Close))
                text = action->text();
        menu->close();
        m_window->activateWindow();
        return QTest::qWaitForWindowActive(m_window.get()) ? text : QString();
    }
    QMenu* fileMenu() const { return m_window->menuBar()->actions().constFirst()->menu(); }
    void pressClose() { QTest::keySequence(m_window.get(), QKeySequence(QKeySequence::Close)); }

private slots:
    void aLetterOpensTheMenuOfThePluginThatHasTheKeyboard() {
        open();
        m_window->find().begin();
        const QStringList usual = titles();
        windowIn(m_editor)->findChild<QListWidget*>()->setFocus();
        QCOMPARE(opened(Qt::Key_F), "plug-in File");
        QCOMPARE(titles().constFirst(), "F&ile");
        QCOMPARE(opened(Qt::Key_I), "main File");
        QCOMPARE(opened(Qt::Key_H), "main Help");
        m_window->find().begin();
        QCOMPARE(titles(), usual);
        QCOMPARE(opened(Qt::Key_F), "main File");
        QCOMPARE(opened(Qt::Key_E), "main Edit");
        QCOMPARE(windowIn(m_editor)->menuBar()->actions().constFirst()->text(), "&File");
    }

    void theSameHoldsForAPluginThatFloats() {
        open();
        dock(m_editor)->setFloating(true);
        QVERIFY(QTest::qWaitForWindowExposed(dock(m_editor)));
        dock(m_editor)->activateWindow();
        windowIn(m_editor)->findChild<QListWidget*>()->setFocus();
        QTRY_VERIFY(dock(m_editor)->isAncestorOf(QApplication::focusWidget()));
        QCOMPARE(opened(Qt::Key_F), "plug-in File");
        QCOMPARE(opened(Qt::Key_I), "main File");
        m_window->activateWindow();
        m_window->find().begin();
        QTRY_COMPARE(QApplication::focusWidget(), m_window->find().field());
        QCOMPARE(opened(Qt::Key_F), "main File");
    }

    void theListOfHitsStaysClosedWhenTheMenuBarGivesTheKeyboardBack() {
        open();
        m_window->openFiles({sample()});
        const auto* const hits = m_window->findChild<QWidget*>("hits");
        QLineEdit* const field = m_window->find().field();
        m_window->find().begin();
        QTest::keyClicks(field, "NAG");
        QTRY_VERIFY(hits->isVisible());
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(!hits->isVisible());
        QTest::keyClick(field, Qt::Key_F, Qt::AltModifier);
        QVERIFY(QApplication::activePopupWidget());
        // The first one closes the menu, the second one leaves the bar.
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), m_window->menuBar());
        QTest::keyClick(m_window->menuBar(), Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), field);
        QVERIFY(!hits->isVisible());
        takeMessages();
    }

    void noLetterStandsForTwoMenusWhereverTheKeyboardIs() {
        open();
        for (const QString& name : {m_editor, m_view}) {
            QWidget* const window = windowIn(name);
            for (QWidget* each : window->findChildren<QWidget*>()) {
                if (!each->isVisible() || each->focusPolicy() == Qt::NoFocus)
                    continue;
                each->setFocus();
                QList<QKeySequence> letters;
                for (const QMenuBar* bar : {m_window->menuBar(), window->findChild<QMenuBar*>()})
                    for (const QAction* action : bar->actions())
                        if (const auto letter = QKeySequence::mnemonic(action->text());
                            !letter.isEmpty()) {
                            QVERIFY2(!letters.contains(letter), qPrintable(action->text()));
                            letters << letter;
                        }
            }
        }
    }

    void theEntryOfTheFocusIsNamedAndClosed() {
        open();
        QCOMPARE(closingText(), "&Close Entry");
        pressClose();
        QCOMPARE(m_window->status().said(), "There is nothing to close.");
        m_window->openFiles({sample()});
        QCOMPARE(closingText(), "&Close sample");
        pressClose();
        QCOMPARE(entries(), QStringList());

        m_window->openFiles({sample(), sample(), structure("1ubq.pdb")});
        QCOMPARE(entries(), QStringList({"sample", "sample-2", "1ubq"}));
        TAVIK::Focus::set(nullptr, nullptr);
        QCOMPARE(closingText(), "&Close Entry");
        pressClose();
        QCOMPARE(entries().size(), 3);
        QVERIFY(m_window->status().said().startsWith("Which entry"));
        TAVIK::Focus::set(TAVIK::Space::instance()->ChildBegin()[1], nullptr);
        QCOMPARE(closingText(), "&Close sample-2");
        pressClose();
        QCOMPARE(entries(), QStringList({"sample", "1ubq"}));
        takeMessages();
    }

    void aNameIsShownAsItIs() {
        open();
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "a & b", "Composite");
        }
        QCOMPARE(closingText(), "&Close a && b");
    }

    void theEntryThatTheStructureEditorShowsIsNamedAndClosed() {
        open();
        m_window->openFiles({sample(), structure("1ubq.pdb"), structure("1ejg.pdb")});
        auto* const list = windowIn(m_editor)->findChild<QListWidget*>();
        const auto press = [list](int row) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualItemRect(list->item(row)).center());
        };
        press(1);
        QTRY_COMPARE(closingText(), "&Close 1ubq");
        press(2);
        QTRY_COMPARE(closingText(), "&Close 1ejg");
        pressClose();
        QCOMPARE(entries(), QStringList({"sample", "1ubq"}));
        takeMessages();
    }
};

REGISTER_TEST(MainWindowMenusTest)
#include "MainWindowMenusTest.moc"
