// The main window with the plug-ins of the build: docks, menus, files, and what it leaves behind.
#include "DataPoint.h"
#include "ErrorBar.h"
#include "FindBox.h"
#include "Focus.h"
#include "Inspector.h"
#include "Logger.h"
#include "MainWindowCase.h"
#include "Messages.h"
#include "PluginDocks.h"
#include "PluginManager.h"
#include "StatusLine.h"
#include "TestData.h"
#include "TestSupport.h"
#include "items/DataVersion.h"
#include "items/SpaceLock.h"
#include "services/PluginFolder.h"
#include "services/WindowPlaces.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDockWidget>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QStatusBar>
#include <QTableWidget>

#include <memory>
#include <thread>

class MainWindowTest : public test_support::MainWindowCase {
    Q_OBJECT

private slots:
    void theWindowsOfPluginsAreDocksByTheirType() {
        open();
        QCOMPARE(m_window->dockWidgetArea(dock(m_editor)), Qt::LeftDockWidgetArea);
        for (const QString& name : {m_editor, m_view}) {
            QVERIFY(windowIn(name));
            QVERIFY(windowIn(name)->isVisible());
            QVERIFY(!windowIn(name)->isWindow());
            QVERIFY(!dock(name)->isFloating());
        }
        // From the left: the editor, the view, the inspector.
        const auto left = [this](const QWidget* widget) {
            return widget->mapTo(m_window.get(), QPoint()).x();
        };
        QVERIFY(left(dock(m_editor)) < left(dock(m_view)));
        QVERIFY(left(dock(m_view)) < left(&m_window->inspector()));
        QVERIFY(dock(m_view)->width() > dock(m_editor)->width());
        QCOMPARE(dock(m_editor)->windowTitle(), "Structure Editor");
        // The Structure Editor keeps its menus and its status bar, without a grip for a window.
        QVERIFY(windowIn(m_editor)->menuBar()->isVisible());
        const auto* const bar = windowIn(m_editor)->findChild<QStatusBar*>();
        QVERIFY(bar && bar->isVisible());
        QVERIFY(!bar->isSizeGripEnabled());
    }

    void docksBelowEachOtherTakeNoMoreOfTheViewThanTheWidest() {
        open();
        entry("View", "Usual Places")->trigger();
        QCoreApplication::processEvents();
        const int before = dock(m_view)->width();
        BaseWindow made("Made", QSize(150, 40), QString(), false, nullptr, nullptr);
        m_window->docks().aboutToShow(made, "Surface/Made");
        entry("View", "Usual Places")->trigger();
        QCoreApplication::processEvents();
        const QDockWidget* const below = dock("plug-in Surface/Made");
        QVERIFY(below && below->isVisible());
        QCOMPARE(below->x(), dock("inspector")->x());
        QCOMPARE(below->width(), dock("inspector")->width());
        QVERIFY2(dock(m_view)->width() >= before - 10, qPrintable(QString::number(before)));
    }

    void escapeLeadsFromTheEmptyFindBoxToTheView() {
        open();
        m_window->find().begin();
        QTest::keyClick(m_window->find().field(), Qt::Key_Escape);
        QVERIFY(windowIn(m_view)->isAncestorOf(QApplication::focusWidget()));
    }

    void aDockThatIsClosedComesBackFromTheMenus() {
        open();
        for (const QString& name : {m_editor, m_view}) {
            dock(name)->close();
            QVERIFY(!windowIn(name)->isVisible());
            entry("View", dock(name)->windowTitle())->trigger();
            QVERIFY(windowIn(name)->isVisible());
            dock(name)->close();
            entry("Plug-ins", dock(name)->windowTitle())->trigger();
            QVERIFY(windowIn(name)->isVisible());
        }
        takeMessages();
        entry("View", "Inspector")->trigger();
        QVERIFY(!m_window->inspector().isVisible());
        entry("View", "Usual Places")->trigger();
        QVERIFY(m_window->inspector().isVisible());
    }

    void aPluginThatShowsNothingIsDone() {
        open();
        QVERIFY(!memory_host::allPluginsDone());
        dock(m_view)->close();
        QVERIFY(!memory_host::allPluginsDone());
        // "Exit" of the Structure Editor closes its window, and with it the dock.
        windowIn(m_editor)->close();
        QVERIFY(!dock(m_editor)->isVisible());
        QVERIFY(memory_host::allPluginsDone());
        entry("View", "Structure Editor")->trigger();
        QTRY_VERIFY(windowIn(m_editor)->isVisible());
        QVERIFY(!memory_host::allPluginsDone());
        m_window->close();
        QVERIFY(memory_host::allPluginsDone());
    }

    void aDockCanFloatAndItsPluginIsNotDone() {
        open();
        dock(m_editor)->setFloating(true);
        QVERIFY(windowIn(m_editor)->isVisible());
        dock(m_view)->close();
        QVERIFY(!memory_host::allPluginsDone());
        m_window->close();
        QVERIFY(memory_host::allPluginsDone());
    }

    void aPluginThatIsKilledTakesItsDockAlong() {
        open();
        send("Kill");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!dock(m_editor));
        QVERIFY(!entry("View", "Structure Editor"));
        // It comes anew.
        send("Show");
        QVERIFY(windowIn(m_editor)->isVisible());
        takeMessages();
    }

    void unloadingLeavesNothing() {
        open();
        const QPointer<BaseWindow> window = windowIn(m_editor);
        memory_host::unloadPlugins();
        QVERIFY(!window);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!dock(m_editor) && !dock(m_view));
        m_window.reset();
        QVERIFY(!memory_host::windowPlaces());
        takeMessages();
    }

    void aMainWindowThatGoesFirstLeavesThePluginsTheirs() {
        open();
        const QPointer<BaseWindow> window = windowIn(m_editor);
        m_window.reset();
        QVERIFY(window);
        QVERIFY(window->isWindow() && window->isHidden());
        QVERIFY(memory_host::allPluginsDone());
        // Shown again, it is a window of its own.
        send("Show");
        QVERIFY(window->isVisible() && window->isWindow());
        memory_host::unloadPlugins();
        QVERIFY(!window);
        takeMessages();
    }

    void whereDocksWereIsRemembered() {
        open();
        dock(m_view)->close();
        m_window->addDockWidget(Qt::RightDockWidgetArea, dock(m_editor));
        m_window->resize(900, 700);
        m_window->close();
        end();
        open();
        QCOMPARE(m_window->dockWidgetArea(dock(m_editor)), Qt::RightDockWidgetArea);
        QVERIFY(windowIn(m_editor)->isVisible());
        QVERIFY(!dock(m_view)->isVisible());
        entry("View", "Usual Places")->trigger();
        QCOMPARE(m_window->dockWidgetArea(dock(m_editor)), Qt::LeftDockWidgetArea);
        QVERIFY(dock(m_view)->isVisible());
    }

    void aPluginsKeysAreItsOwnWhileItHasTheKeyboard() {
        open();
        m_window->find().begin();
        QTest::keyClicks(m_window->find().field(), "nPF");
        QCOMPARE(m_window->find().field()->text(), "nPF");
        QTest::keyClick(m_window.get(), Qt::Key_N);
        QCOMPARE(takeMessages(), QStringList());
        QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(m_window->find().field()->hasFocus());
    }

    void filesOpenAndAreRemembered() {
        open();
        m_window->openFiles({sample(), "/nowhere/none.pdb"});
        QCOMPARE(entries(), QStringList("sample"));
        QTRY_COMPARE(m_window->status().state(), "nothing selected");
        QCOMPARE(m_window->status().said(), "+1 entry, +6,601 atoms");
        QTRY_COMPARE(m_window->windowTitle(), "sample - Workbench");
        // The one that is not there is told where the user looks, and in the log.
        QTRY_VERIFY(m_window->errors().isVisible());
        const QStringList lines = m_window->errors().lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.constFirst().contains("/nowhere/none.pdb"), qPrintable(lines.constFirst()));
        QCOMPARE(takeHostLog(), lines);
        m_window->errors().dismiss();
        QVERIFY(!m_window->errors().isVisible());
        QCOMPARE(m_window->remembered().files(), QStringList(sample()));
        // And again by the menu of recent files.
        QMenu* const recent = entry("File", "Open Recent")->menu();
        emit recent->aboutToShow();
        QCOMPARE(recent->actions().constFirst()->text(), "sample.pdb");
        recent->actions().constFirst()->trigger();
        QCOMPARE(entries(), QStringList({"sample", "sample-2"}));
    }

    void aDialogStaysInFrontOfTheWindowThatIsPresented() {
        open();
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        m_window->present();
        QTest::qWait(20);
        QTRY_COMPARE(QApplication::activeWindow(), &dialog);
        dialog.close();
        m_window->present();
        QTRY_COMPARE(QApplication::activeWindow(), m_window.get());
    }

    void filesThatComeWhileTheDataAreLockedOpenLater() {
        open();
        {
            const memory_host::SpaceLock lock;
            m_window->openFiles({sample()});
            m_window->openFiles({structure("1ubq.pdb")});
            QTest::qWait(250);
            QCOMPARE(entries(), QStringList());
        }
        QTRY_COMPARE(entries(), QStringList({"sample", "1ubq"}));
        QVERIFY(!m_window->errors().isVisible());
    }

    void errorsOfOthersAreShownAndMessagesAreNot() {
        open();
        const void* const none = nullptr;
        PluginManager::Command("Create", "Nobody", "test", "Show", "", none);
        Messages::Show("Surface of 3 atoms");
        Logger::Debug("a change");
        std::thread([] { Logger::Write("from another thread"); }).join();
        const QStringList expected{"Plug-in Create/Nobody is not loaded (Show from test)",
                                   "from another thread"};
        QTRY_COMPARE(m_window->errors().lines(), expected);
        QCOMPARE(m_window->status().said(), "Surface of 3 atoms");
        QCOMPARE(takeHostLog(),
                 QStringList({expected.at(0), "Surface of 3 atoms", expected.at(1)}));
        m_window.reset();
        Logger::Write("to nobody");
        QCOMPARE(takeHostLog(), QStringList("to nobody"));
    }

    void filesThatAreDroppedOpen() {
        open();
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(sample()), QUrl("https://nowhere.example/x.pdb")});
        QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(m_window.get(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(100, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(m_window.get(), &drop);
        QTRY_COMPARE(entries(), QStringList("sample"));
        QMimeData text;
        text.setText("no file");
        QDragEnterEvent other(QPoint(100, 100), Qt::CopyAction, &text, Qt::LeftButton, {});
        other.ignore();
        QCoreApplication::sendEvent(m_window.get(), &other);
        QVERIFY(!other.isAccepted());
    }

    void ofEntriesOfOneNameTheOneInFocusIsClosed() {
        open();
        const test_data::Chains first(1, 1);
        const test_data::Chains second(1, 2);
        memory_host::setDataSaved(second.entry);
        TAVIK::Focus::set(second.atom(0, 1, 0), nullptr);
        entry("File", "Close Entry")->trigger();
        QCOMPARE(entries().size(), 1);
        QCOMPARE(TAVIK::Space::instance()->ChildBegin()[0], first.entry);
    }

    void anEntryIsClosedByItsFocus() {
        open();
        const test_data::Chains first(1, 1);
        const test_data::Chains second(1, 2);
        memory_host::setDataSaved(first.entry);
        memory_host::setDataSaved(second.entry);
        QAction* const close = entry("File", "Close Entry");
        close->trigger();
        QCOMPARE(entries().size(), 2);
        QVERIFY(m_window->status().said().startsWith("Which entry"));
        TAVIK::Focus::set(first.atom(0, 0, 0), nullptr);
        {
            const memory_host::SpaceLock lock;
            close->trigger();
            QCOMPARE(entries().size(), 2);
            QVERIFY(m_window->status().said().contains("another change is under way"));
        }
        close->trigger();
        QCOMPARE(entries().size(), 1);
        QCOMPARE(TAVIK::Space::instance()->ChildBegin()[0], second.entry);
        // The only one needs no focus.
        close->trigger();
        QCOMPARE(entries().size(), 0);
        close->trigger();
        QVERIFY(m_window->status().said().startsWith("There is nothing"));
    }

    void copyTakesTheNamesOfWhatIsSelected() {
        open();
        const test_data::Chains chains(1, 3);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            chains.residue(0, 1)->SetSelected(true);
            chains.atom(0, 2, 0)->SetSelected(true);
        }
        entry("Edit", "Copy")->trigger();
        QCOMPARE(QApplication::clipboard()->text(),
                 "/made/A/Groups/GLY 2\n/made/A/Groups/GLY 3/N\n");
        QTRY_VERIFY(m_window->inspector().isUpToDate());
        m_window->inspector().findChild<QTableWidget*>()->setFocus();
        entry("Edit", "Copy")->trigger();
        QVERIFY(QApplication::clipboard()->text().startsWith("3 atoms selected\n"));
    }

    void theInspectorFollowsFocusAndSelection() {
        open();
        const test_data::Chains chains(1, 3);
        const auto title = [this] { return m_window->inspector().inspection().title; };
        TAVIK::Focus::set(chains.residue(0, 1), nullptr);
        QTRY_COMPARE(title(), "/made/A/Groups/GLY 2");
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            chains.atom(0, 0, 0)->SetSelected(true);
            chains.atom(0, 0, 1)->SetSelected(true);
        }
        QTRY_COMPARE(title(), "2 atoms selected");
        QCOMPARE(m_window->inspector().inspection().value("Distance"),
                 QString::fromUtf8("1.000 Å"));
        QVERIFY(!m_window->errors().isVisible());
        // A click on one that is selected leaves what is measured.
        TAVIK::Focus::set(chains.atom(0, 0, 1), nullptr);
        QTRY_VERIFY(m_window->inspector().isUpToDate());
        QCOMPARE(title(), "2 atoms selected");
        TAVIK::Focus::set(chains.residue(0, 2), nullptr);
        QTRY_COMPARE(title(), "/made/A/Groups/GLY 3");
    }

    void everyHelpPageIsInTheMenu() {
        open();
        QVERIFY(entry("Help", "The first ten minutes"));
        QVERIFY(entry("Help", "Structure Editor"));
        QVERIFY(entry("Help", "Find"));
        QVERIFY(entry("Help", "Inspector"));
        QVERIFY(entry("Help", "Mouse and keys"));
        QVERIFY(entry("Help", "About"));
    }
};

REGISTER_TEST(MainWindowTest)
#include "MainWindowTest.moc"
