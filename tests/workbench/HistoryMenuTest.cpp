// Undo and redo as the user meets them: with the keys and the menu, on a real structure.
#include "DataLines.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "History.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"

#include <QAction>
#include <QDialog>

using TAVIK::Compound;
using test_support::dataLines;
using test_support::firstDifference;

class HistoryMenuTest : public test_support::MainWindowCase {
    Q_OBJECT

    QAction* action(const char* name) const { return m_window->findChild<QAction*>(name); }
    void press(const char* keys) {
        QTest::keySequence(m_window.get(), QKeySequence(QString::fromLatin1(keys)));
    }
    static Compound* chain() {
        Compound* const entry = *TAVIK::Space::instance()->ChildBegin();
        return *entry->ChildBegin();
    }
    static void hide(Compound* item) {
        const DataPointBase guard(nullptr, Publisher::Update, "Hide chain A && more");
        item->SetVisible(false);
    }
    static void destroy(Compound* item) {
        const DataPointBase guard(nullptr, Publisher::Delete, "Delete chain A");
        TAVIK::DataMaker::Destroy(item);
    }
    void openSample() {
        open();
        m_window->openFiles({sample()});
        QTRY_VERIFY(TAVIK::Space::instance()->HasChildren());
        QTRY_VERIFY(History::undo(0) || !History::undoable().empty());
        takeMessages();
    }
    QString said() const { return m_window->status().said(); }

private slots:
    void theEntriesSayWhatTheyDo() {
        open();
        QCOMPARE(action("Undo")->text(), "&Undo");
        QVERIFY(!action("Undo")->isEnabled() && !action("Redo")->isEnabled());
        QVERIFY(!action("UndoData")->isEnabled());
        m_window->openFiles({sample()});
        QTRY_VERIFY(TAVIK::Space::instance()->HasChildren());
        QTRY_VERIFY(action("Undo")->isEnabled());
        hide(chain());
        QCOMPARE(action("Undo")->text(), "&Undo Hide chain A &&&& more");
        press("Ctrl+Z");
        QVERIFY(chain()->IsVisible());
        QCOMPARE(action("Redo")->text(), "&Redo Hide chain A &&&& more");
        QVERIFY(said().contains("Undone: Hide chain A"));
        press("Ctrl+Shift+Z");
        QVERIFY(!chain()->IsVisible());
        QVERIFY(!action("Redo")->isEnabled());
        QVERIFY(said().contains("Done again: Hide chain A"));
        takeHostLog();
    }

    void anOpenedFileIsClosedAndComesBack() {
        openSample();
        const QStringList opened = dataLines();
        destroy(chain());
        press("Ctrl+Z");
        press("Ctrl+Z");
        QVERIFY(!TAVIK::Space::instance()->HasChildren());
        press("Ctrl+Shift+Z");
        QCOMPARE(firstDifference(dataLines(), opened), QString());
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        takeHostLog();
    }

    void severalStepsAreTakenBackAtOnce() {
        openSample();
        const QStringList before = dataLines();
        hide(chain());
        chain()->SetSelected(false);
        destroy(chain());
        QMenu* const steps = m_window->findChild<QMenu*>("UndoSteps");
        emit steps->aboutToShow();
        QCOMPARE(steps->actions().at(0)->text(), "Delete chain A");
        QCOMPARE(steps->actions().at(1)->text(), "Hide chain A &&&& more");
        steps->actions().at(1)->trigger();
        QCOMPARE(firstDifference(dataLines(), before), QString());
        QVERIFY(said().contains("Undone: 2 steps"));
        for (int i = 0; i != 40; ++i) {
            const DataPointBase guard(nullptr, Publisher::Update, std::to_string(i));
            chain()->ToggleVisible();
        }
        emit steps->aboutToShow();
        QCOMPARE(steps->actions().size(), 27);
        steps->actions().constLast()->trigger();
        QVERIFY(!TAVIK::Space::instance()->HasChildren());
        takeHostLog();
    }

    void anOpenListOfStepsFollows() {
        openSample();
        hide(chain());
        QMenu* const steps = m_window->findChild<QMenu*>("UndoSteps");
        steps->popup(m_window->pos());
        QCOMPARE(steps->actions().at(0)->text(), "Hide chain A &&&& more");
        destroy(chain());
        QCOMPARE(steps->actions().at(0)->text(), "Delete chain A");
        steps->close();
        takeHostLog();
    }

    void theEntriesFollowChangesWithoutAGuard() {
        openSample();
        hide(chain());
        QVERIFY(action("Undo")->isEnabled());
        TAVIK::DataMaker::Destroy(chain());
        QVERIFY(History::undoable().empty());
        QTRY_VERIFY(!action("Undo")->isEnabled());
        QCOMPARE(action("Undo")->text(), "&Undo");
        takeHostLog();
    }

    void whatOnlySelectsIsPassedOver() {
        openSample();
        hide(chain());
        for (const bool on : {true, false, true}) {
            const DataPointBase guard(nullptr, Publisher::Update, "Select");
            chain()->SetSelected(on);
        }
        press("Ctrl+Alt+Z");
        QVERIFY(chain()->IsVisible());
        QVERIFY(!chain()->HasSelected());
        QCOMPARE(History::redoable().size(), std::size_t{4});
        takeHostLog();
    }

    void nothingIsTakenBackInBetween() {
        openSample();
        hide(chain());
        {
            const memory_host::SpaceLock lock;
            press("Ctrl+Z");
            QVERIFY(said().contains("not possible"));
        }
        QDialog dialog(m_window.get());
        dialog.setModal(true);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        press("Ctrl+Z");
        action("Undo")->trigger();
        dialog.close();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(!chain()->IsVisible());
        press("Ctrl+Z");
        QVERIFY(chain()->IsVisible());
        takeHostLog();
    }
};

REGISTER_TEST(HistoryMenuTest)
#include "HistoryMenuTest.moc"
