// Exceptions out of commands: the guard ends, the log says it, the window shows the data as they
// are, and the program goes on.
#include "DataPoint.h"
#include "FailingMemory.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <limits>
#include <optional>
#include <stdexcept>

using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

// Whoever handles this name needs large blocks of memory.
const std::string longName(20'000, 'x');

QString marks(const Vuxo& window, int index) {
    return entries(window).at(index).left(3);
}

} // namespace

class WindowFaultTest : public WindowTestCase {
    Q_OBJECT

private slots:
    void aRightPressThatFailsAnywhereLeavesWindowAndDataInStep() {
        Compound* entry = addStructure(longName);
        selectElsewhere(entry, true);
        openWindow();
        clickEntry(*m_window, 0);
        bool toldThoughItFailed = false;
        bool failed = true;
        int quiet = 0;
        for (int granted = 0; failed; ++granted) {
            OtherPlugin other;
            {
                const FailingMemory memory(granted, 1);
                clickEntry(*m_window, 0, Qt::RightButton);
                failed = FailingMemory::refusals() > 0;
            }
            const QStringList log = takeHostLog();
            // Without memory for the name in its label the change is made all the same.
            const bool isQuiet = failed && log.isEmpty() && other.updates == 1;
            quiet += isQuiet;
            QCOMPARE(log.size(), failed && !isQuiet ? 1 : 0);
            if (!log.isEmpty()) {
                QCOMPARE(log.front(), "Structure Editor: ListEvent failed: std::bad_alloc");
                toldThoughItFailed = toldThoughItFailed || other.updates == 1;
            }
            QVERIFY(changesAreGranted());
            QCOMPARE(marks(*m_window, 0), entry->IsVisible()
                                              ? (entry->IsSelected() ? " X " : " _ ")
                                              : (entry->IsSelected() ? "OX " : "O_ "));
            QCOMPARE(rows(*m_window).size(), 15);
            QCOMPARE(cells(*m_window, {QString::fromStdString(longName), "A"}).at(1),
                     entry->IsVisible() ? "Yes" : "No");
            QCOMPARE(highlighted(*m_window), 0);
            QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
            QVERIFY(granted < 100);
        }
        QVERIFY(toldThoughItFailed); // a guard that unwinds announces its change
        QVERIFY(quiet <= 1);
    }

    void aSelectionThatCannotBeShownIsTakenBack() {
        Compound* entry = addStructure("1abc");
        addEmpty(longName);
        openWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        {
            const FailingMemory memory(0, 1);
            clickRow(*m_window, {"1abc", "A"});
        }
        QCOMPARE(takeHostLog(),
                 QStringList("Structure Editor: SelectionChanged failed: std::bad_alloc"));
        QCOMPARE(other.updates, 1);
        QVERIFY(!itemAt(entry, {"A"})->HasSelected());
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QCOMPARE(marks(*m_window, 0), " _ ");
        clickRow(*m_window, {"1abc", "A"});
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QCOMPARE(marks(*m_window, 0), " X ");
        // That is done with: what the user opens meanwhile stays open.
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        selectElsewhere(entry, false);
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QVERIFY(changesAreGranted());
    }

    void aWindowThatCannotBeRefreshedEitherSaysSoAndGoesOn() {
        Compound* entry = addStructure("1abc");
        addEmpty(longName);
        openWindow();
        clickEntry(*m_window, 0);
        {
            const FailingMemory memory(0, std::numeric_limits<int>::max());
            clickRow(*m_window, {"1abc", "A"});
            QVERIFY(FailingMemory::refusals() > 1);
        }
        QCOMPARE(takeHostLog(),
                 QStringList({"a subscriber failed to take in a change: std::bad_alloc",
                              "Structure Editor: SelectionChanged failed: std::bad_alloc",
                              "Structure Editor: SelectionChanged failed: the window could not be "
                              "refreshed either: std::bad_alloc"}));
        QVERIFY(!itemAt(entry, {"A"})->HasSelected());
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
        clickEntry(*m_window, 0);
        QVERIFY(!isMarked(*m_window, {"1abc", "A"}));
        QVERIFY(changesAreGranted());
    }

    void aDeletionThatFailsBeforeItsQuestionDeletesNothing() {
        addStructure(longName);
        openWindow();
        clickEntry(*m_window, 0);
        int failures = 0;
        for (int granted = 0; granted < 3; ++granted) {
            const FailingMemory memory(granted, 1);
            QVERIFY(!withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); }, pressOk));
            failures += FailingMemory::refusals();
        }
        QCOMPARE(failures, 3);
        QCOMPARE(takeHostLog().size(), 3);
        QCOMPARE(listOf(*m_window)->count(), 1);
        QCOMPARE(rows(*m_window).size(), 15);
    }

    void aPlugInThatThrowsAtTheChangeDoesNotStopTheWindow() {
        Compound* entry = addStructure("1abc");
        openWindow();
        OtherPlugin other;
        other.onUpdate = [] { throw std::runtime_error("cannot take this"); };
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(takeHostLog().size(), 1); // the host's line
        QVERIFY(!entry->IsVisible());
        QCOMPARE(marks(*m_window, 0), "O_ ");
        other.onUpdate = {};
        QVERIFY(changesAreGranted());
    }

    void othersThatThrowKeepNothingFromTheWindow_data() {
        QTest::addColumn<bool>("before");
        QTest::newRow("told before the window") << true;
        QTest::newRow("told after the window") << false;
    }

    void othersThatThrowKeepNothingFromTheWindow() {
        QFETCH(bool, before);
        Compound* entry = addStructure("1abc");
        std::optional<OtherPlugin> other;
        if (before)
            other.emplace();
        openWindow();
        clickEntry(*m_window, 0);
        if (!before)
            other.emplace();
        const auto fail = [] { throw std::runtime_error("cannot take this"); };
        other->onUpdate = other->onAdd = other->onDelete = fail;
        const QStringList complaint("a subscriber failed to take in a change: cannot take this");

        // What third parties do.
        selectElsewhere(entry, true);
        QCOMPARE(takeHostLog(), complaint);
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups"}));
        addAtomTo(itemAt(entry, {"A", "Groups", "HOH 2"}), "H1");
        QCOMPARE(takeHostLog(), complaint);
        QVERIFY(rows(*m_window).contains("    H1"));
        Compound* second = addEmpty("second");
        QCOMPARE(takeHostLog(), complaint);
        QCOMPARE(listOf(*m_window)->count(), 2);
        destroyElsewhere(second);
        QCOMPARE(takeHostLog(), complaint);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window), QStringList(" / 1abc"));

        // What the window does itself: the others hear of it, and it shows it all the same.
        clickEntry(*m_window, 0);
        m_window->MakeCartesian();
        QCOMPARE(takeHostLog(), complaint);
        QCOMPARE(listOf(*m_window)->count(), 2);
        m_window->SelectedClear();
        QCOMPARE(takeHostLog(), complaint);
        QCOMPARE(marks(*m_window, 0), " _ ");
        m_window->KillAll();
        QCOMPARE(takeHostLog(), complaint);
        QCOMPARE(listOf(*m_window)->count(), 0);
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(other->updates + other->adds + other->deletes, 7);
        other->onUpdate = {};
        QVERIFY(changesAreGranted());
    }

    void aNotificationThatFailsIsMadeGoodByTheNext_data() {
        QTest::addColumn<char>("next");
        for (const char* next : {"update", "addition", "deletion"})
            QTest::newRow(next) << *next;
    }

    // Also by one that has little to do with it: what was added or destroyed stands elsewhere.
    void aNotificationThatFailsIsMadeGoodByTheNext() {
        QFETCH(char, next);
        Compound* entry = addStructure("1abc");
        Compound* large = addEmpty(longName);
        Compound* water = itemAt(entry, {"A", "Groups", "HOH 2"});
        Compound* atom = addAtomTo(water, "H1");
        openWindow();
        clickEntry(*m_window, 0);
        {
            const FailingMemory memory(0, 1);
            showElsewhere(large, false);
        }
        QCOMPARE(takeHostLog().size(), 1);
        QCOMPARE(marks(*m_window, 1), " _ ");
        if (next == 'u')
            selectElsewhere(entry, true);
        else if (next == 'a')
            addAtomTo(water, "H2");
        else
            destroyElsewhere(atom);
        QCOMPARE(marks(*m_window, 1), "O_ ");
        QCOMPARE(marks(*m_window, 0), next == 'u' ? " X " : " _ ");
        QCOMPARE(takeMessages(), next == 'd' ? QStringList(deleted) : QStringList());
    }
};

REGISTER_TEST(WindowFaultTest)
#include "WindowFaultTest.moc"
