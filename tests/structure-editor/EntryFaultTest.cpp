// What is not a slot while memory runs out: the frame's commands, what the host tells, mouse and
// keys. As in AllocationFaultTest each allocation of the project's own code is refused once, alone
// and together with all that follow.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "GUIPlugin.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/Subscribers.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QApplication>
#include <QHeaderView>

#include <limits>

using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;

namespace {

using Frame = GUIPlugin<Vuxo>;

// No string holds it without memory.
const std::string longName = "a name that does not fit into a string";

constexpr int all = std::numeric_limits<int>::max();

Vuxo* frameWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<Vuxo*>(widget))
            return window;
    return nullptr;
}

/// What became of one attempt.
struct Attempt {
    bool thrown = false;
    int refused = 0;
};

Attempt attempt(int granted, int refuse, const std::function<void()>& work) {
    Attempt made;
    const FailingMemory memory(granted, refuse, 0, FailingMemory::Of::OwnCode);
    try {
        work();
    } catch (const std::bad_alloc&) {
        made.thrown = true;
    }
    made.refused = FailingMemory::refusals();
    return made;
}

/// One press or key: where it goes is found out before memory runs out.
using Gesture = std::function<std::function<void()>(const Vuxo&)>;

Gesture mouse(const QStringList& path, int column, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers = {}) {
    return [=](const Vuxo& window) {
        TreeView* const tree = treeOf(window);
        const QPoint at = tree->visualRect(rowAt(window, path).siblingAtColumn(column)).center();
        return [=] { QTest::mouseClick(tree->viewport(), button, modifiers, at); };
    };
}

Gesture key(Qt::Key code, Qt::KeyboardModifiers modifiers = {}) {
    return [=](const Vuxo& window) {
        TreeView* const tree = treeOf(window);
        return [=] { QTest::keyClick(tree, code, modifiers); };
    };
}

Gesture entryPress(int entry, Qt::MouseButton button) {
    return [=](const Vuxo& window) {
        ListBox* const list = listOf(window);
        const QPoint at = list->visualItemRect(list->item(entry)).center();
        return [=] { QTest::mouseClick(list->viewport(), button, {}, at); };
    };
}

Gesture headerClick(int column) {
    return [=](const Vuxo& window) {
        QHeaderView* const header = treeOf(window)->header();
        const QPoint at(header->sectionViewportPosition(column) + 5, header->height() / 2);
        return [=] { QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at); };
    };
}

Gesture doubleClick(const QStringList& path) {
    return [=](const Vuxo& window) {
        TreeView* const tree = treeOf(window);
        const QPoint at = tree->visualRect(rowAt(window, path)).center();
        return [=] { QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at); };
    };
}

} // namespace

class EntryFaultTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_entry = nullptr;
    Compound* m_second = nullptr;

    // The window with something selected in its tree, anew.
    void prepare() {
        m_window.reset();
        TestCase::init();
        m_entry = addStructure(longName);
        m_second = addEmpty(longName + " as well");
        selectElsewhere(itemAt(m_entry, {"A", "Groups", "HOH 2"}), true);
        openWindow();
        m_window->resize(1000, 700);
        clickEntry(*m_window, 0);
        m_window->activateWindow();
        treeOf(*m_window)->expandAll();
        takeMessages();
        takeHostLog();
    }

    // A change of nothing, which the window takes as an occasion to show all there is.
    static void tellOfAnUpdate() { const DataPointBase guard(nullptr, Publisher::Update); }

    // Empty when nothing is left open, and window and data agree once there is memory again.
    QStringList faults() {
        QStringList faults;
        for (const QString& line : takeHostLog())
            if (!line.startsWith("Structure Editor: ") &&
                !line.startsWith("a subscriber failed to take in a change: ") &&
                !line.endsWith(": not done, as memory is short"))
                faults << "in the log: " + line;
        takeMessages();
        if (!changesAreGranted())
            faults << "a guard is still open";
        takeMessages();
        for (const std::string& fault : memory_host::checkInvariants())
            faults << QString::fromStdString(fault);
        (void)m_window->grab(); // no row stands for what is gone
        tellOfAnUpdate();
        return faults << windowFaults(*m_window) << takeMessages() << takeHostLog();
    }

private slots:
    void startingFailsAsAWhole_data() {
        QTest::addColumn<int>("refuse");
        QTest::newRow("one") << 1;
        QTest::newRow("all that follow") << all;
    }

    void startingFailsAsAWhole() {
        QFETCH(int, refuse);
        addStructure(longName);
        const std::size_t subscribers = memory_host::subscriberCount();
        PluginResult result;
        int failures = 0;
        bool failed = true;
        for (int granted = 0; failed; ++granted) {
            const Attempt made =
                attempt(granted, refuse, [&] { Frame::CommandC("Show", nullptr, &result); });
            failed = made.refused > 0;
            if (made.thrown) {
                ++failures;
                QVERIFY(Frame::IsDone());
                QVERIFY(!frameWindow());
                QCOMPARE(memory_host::subscriberCount(), subscribers);
            }
            takeMessages(); // there may be tables already
            Frame::CommandC("Show", nullptr, &result);
            QVERIFY(!Frame::IsDone());
            QCOMPARE(windowFaults(*frameWindow()), QStringList());
            Frame::CommandC("Kill", nullptr, &result);
            QVERIFY(!frameWindow());
            takeMessages();
        }
        QVERIFY2(failures > 10, qPrintable(QString::number(failures)));
    }

    void endingNeedsNoMemory() {
        addStructure(longName);
        PluginResult result;
        for (const bool cleanUp : {false, true}) {
            Frame::CommandC("Show", nullptr, &result);
            clickEntry(*frameWindow(), 0);
            const Attempt made = attempt(0, all, [&] {
                if (cleanUp)
                    Frame::Cleanup();
                else
                    Frame::CommandC("Kill", nullptr, &result);
            });
            QVERIFY(!made.thrown);
            QVERIFY(!frameWindow());
            QVERIFY(Frame::IsDone());
            takeMessages();
        }
        tellOfAnUpdate(); // nobody is told who is gone
    }

    void anUnknownCommandIsRefusedOrFails() {
        PluginResult result;
        Frame::CommandC("Show", nullptr, &result);
        for (int granted = 0;; ++granted) {
            PluginResult unknown;
            const Attempt made =
                attempt(granted, 1, [&] { Frame::Command(longName.c_str(), nullptr, &unknown); });
            takeMessages();
            QVERIFY(!Frame::IsDone());
            if (made.refused == 0) {
                QCOMPARE(int(unknown.GetResultCode()), 10);
                break;
            }
        }
        Frame::Cleanup();
        takeMessages();
    }

    void whatIsToldIsTakenInOnceThereIsMemory_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("refuse");
        const char* const kinds[] = {"update", "add", "delete"};
        for (const int kind : {0, 1, 2}) {
            QTest::addRow("%s, one", kinds[kind]) << kind << 1;
            QTest::addRow("%s, all that follow", kinds[kind]) << kind << all;
        }
    }

    void whatIsToldIsTakenInOnceThereIsMemory() {
        QFETCH(int, kind);
        QFETCH(int, refuse);
        int failures = 0;
        bool failed = true;
        for (int granted = 0; failed; ++granted) {
            prepare();
            auto guard =
                std::make_unique<DataPointBase>(nullptr, static_cast<Publisher::ActionType>(kind));
            QVERIFY(guard->m_good);
            if (kind == Publisher::Update) {
                m_entry->SetSelected(true);
            } else if (kind == Publisher::Add) {
                Compound* residue = itemAt(m_entry, {"A", "Groups", "HOH 2"});
                memory_host::addAtom(residue, {longName, "H", {}, 0.0F, 0});
                memory_host::addAtom(itemAt(m_entry, {"A", "Groups"}), {"X", "H", {}, 0.0F, 0});
                TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), longName, "Composite");
            } else {
                TAVIK::DataMaker::Destroy(m_second);
            }
            const Attempt made = attempt(granted, refuse, [&] { guard.reset(); });
            QVERIFY(!made.thrown);
            failed = made.refused > 0;
            failures += failed;
            const QStringList left = faults();
            QVERIFY2(
                left.isEmpty(),
                qPrintable(QStringLiteral("allocation %1: %2").arg(granted).arg(left.join(u'\n'))));
        }
        QVERIFY2(failures > 0, qPrintable(QString::number(failures)));
    }

    void gesturesSurviveEveryRefusal_data() {
        QTest::addColumn<Gesture>("gesture");
        QTest::addColumn<int>("refuse");
        const QString top = QString::fromStdString(longName);
        const QStringList chain = {top, "A"};
        const QStringList atom = {top, "A", "Groups", "MET 1", "Backbone", "CA"};
        const auto add = [](const char* name, const Gesture& gesture) {
            QTest::addRow("%s, one", name) << gesture << 1;
            QTest::addRow("%s, all that follow", name) << gesture << all;
        };
        add("press", mouse(atom, 0, Qt::LeftButton));
        add("press with Ctrl", mouse(chain, 0, Qt::LeftButton, Qt::ControlModifier));
        add("press with Shift", mouse(atom, 0, Qt::LeftButton, Qt::ShiftModifier));
        add("double click", doubleClick(chain));
        add("right press on Show", mouse(atom, 1, Qt::RightButton));
        add("right press on Select", mouse(chain, 2, Qt::RightButton));
        add("right press on Partial", mouse(chain, 3, Qt::RightButton));
        add("Down", key(Qt::Key_Down));
        add("Shift+End", key(Qt::Key_End, Qt::ShiftModifier));
        add("Page down", key(Qt::Key_PageDown));
        add("Left", key(Qt::Key_Left));
        add("Space", key(Qt::Key_Space));
        add("Ctrl+A", key(Qt::Key_A, Qt::ControlModifier));
        add("a letter", key(Qt::Key_M));
        add("a shortcut", key(Qt::Key_N));
        add("header", headerClick(1));
        add("left press on another entry", entryPress(1, Qt::LeftButton));
        add("right press on an entry", entryPress(0, Qt::RightButton));
    }

    void gesturesSurviveEveryRefusal() {
        QFETCH(Gesture, gesture);
        QFETCH(int, refuse);
        prepare();
        const QStringList before = dataLines();
        gesture (*m_window)();
        const QStringList good = dataLines();
        bool failed = true;
        for (int granted = 0; failed; ++granted) {
            prepare();
            const OtherPlugin other;
            const Attempt made = attempt(granted, refuse, gesture(*m_window));
            failed = made.refused > 0;
            const QStringList now = dataLines();
            QVERIFY(failed || now == good);
            QVERIFY2(now == before || now == good, qPrintable(now.join(u'\n')));
            QVERIFY(now == before || other.updates > 0);
            const QStringList left = faults();
            QVERIFY2(
                left.isEmpty(),
                qPrintable(QStringLiteral("allocation %1: %2").arg(granted).arg(left.join(u'\n'))));
        }
    }
};

REGISTER_TEST(EntryFaultTest)
#include "EntryFaultTest.moc"
