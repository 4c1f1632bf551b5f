// That the tree is painted anew after each command, notification and gesture: rows ask the host for
// what they say, so that a repaint is all that shows a change, and nothing else would miss it.
#include "CommandTools.h"
#include "DataAdder.h"
#include "RepaintCount.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

// Whether a slot repaints what it has changed itself: others only tell plug-ins what to do.
bool needsGrant(const plain::Command& command) {
    return command.repaints > 0 && command.guard != plain::Guard::None;
}

const plain::Command* find(const QString& slot) {
    return plain::findCommand(plain::commands(), slot.toStdString());
}

// Runs `act`, and presses Enter in each dialog that it opens.
void withEnter(const std::function<void()>& act) {
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [] {
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
            pressEnter(*dialog);
    });
    timer.start(0);
    act();
}

} // namespace

class RepaintTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;

    QWidget* screen() const { return treeOf(*m_window)->viewport(); }
    static void addRows(bool (*isMeant)(const plain::Command&)) {
        QTest::addColumn<QString>("slot");
        for (const plain::Command& command : plain::commands())
            if (isMeant(command))
                QTest::newRow(command.slot) << QString::fromLatin1(command.slot);
    }
    static void takeLines() {
        takeMessages();
        takeHostLog();
    }

private slots:
    // The shown item, all of it selected, and one beside it.
    void init() override {
        TestCase::init();
        m_shown = addStructure("1abc");
        addStructure("2abc");
        m_shown->SetSelected(true);
        showWindow();
    }

    void everySlotRepaintsTheTreeAsOftenAsItShould_data() {
        addRows([](const plain::Command&) { return true; });
    }
    void everySlotRepaintsTheTreeAsOftenAsItShould() {
        QFETCH(QString, slot);
        const int expected = find(slot)->repaints;
        PaintCount paints(screen());
        const RepaintCount repaints;
        withEnter([&] { QVERIFY(invoke(*m_window, slot.toLatin1())); });
        QCOMPARE(repaints.calls(), expected);
        QVERIFY(paints.events() >= expected);
        takeLines();
    }

    void aRefusedSlotRepaintsNothing_data() { addRows(needsGrant); }
    void aRefusedSlotRepaintsNothing() {
        QFETCH(QString, slot);
        const memory_host::SpaceLock lock;
        const RepaintCount repaints;
        withEnter([&] { QVERIFY(invoke(*m_window, slot.toLatin1())); });
        QCOMPARE(repaints.calls(), 0);
        takeLines();
    }

    void whatOthersDoRepaintsTheTreeOnce_data() {
        QTest::addColumn<int>("deed");
        for (const char* deed : {"update", "add", "delete"})
            QTest::newRow(deed) << int(*deed);
    }
    void whatOthersDoRepaintsTheTreeOnce() {
        QFETCH(int, deed);
        Compound* other = itemAt(Space::instance(), {"2abc"});
        PaintCount paints(screen());
        const RepaintCount repaints;
        if (deed == 'u')
            selectElsewhere(other, true);
        else if (deed == 'a')
            addAtomTo(other, "CZ");
        else
            destroyElsewhere(other);
        QCOMPARE(repaints.calls(), 1);
        QVERIFY(paints.events() >= 1);
        takeLines();
    }

    // Nothing but the repaint that is asked for brings the new state on screen.
    void aChangeOfLooksIsPaintedOnce() {
        PaintCount paints(screen());
        QCOMPARE(paints.events(), 0);
        showElsewhere(itemAt(m_shown, {"A"}), false);
        QCOMPARE(paints.events(), 1);
        selectElsewhere(m_shown, false);
        QCOMPARE(paints.events(), 2);
    }

    void theListRepaintsTheTree_data() {
        QTest::addColumn<int>("entry");
        QTest::addColumn<int>("button");
        QTest::addColumn<int>("expected");
        QTest::newRow("left on the shown one") << 0 << int(Qt::LeftButton) << 0;
        QTest::newRow("left on another one") << 1 << int(Qt::LeftButton) << 1;
        QTest::newRow("right on the shown one") << 0 << int(Qt::RightButton) << 1;
        QTest::newRow("right on another one") << 1 << int(Qt::RightButton) << 1;
        QTest::newRow("middle on the shown one") << 0 << int(Qt::MiddleButton) << 1;
        QTest::newRow("middle on another one") << 1 << int(Qt::MiddleButton) << 1;
    }
    void theListRepaintsTheTree() {
        QFETCH(int, entry);
        QFETCH(int, button);
        QFETCH(int, expected);
        PaintCount paints(screen());
        const RepaintCount repaints;
        withEnter([&] { clickEntry(*m_window, entry, Qt::MouseButton(button)); });
        QCOMPARE(repaints.calls(), expected);
        QVERIFY(paints.events() >= expected);
    }

    void aDeletionThatIsCalledOffRepaintsNothing() {
        const RepaintCount repaints;
        QVERIFY(withQuestion([this] { clickEntry(*m_window, 0, Qt::MiddleButton); }, pressCancel));
        QVERIFY(withQuestion(
            [this] {
                clickRow(*m_window, {"1abc", "A"}, Qt::MiddleButton);
            },
            pressCancel));
        QCOMPARE(repaints.calls(), 0);
    }

    // A bond goes with its atoms, so that nothing is left to be shown.
    void aShownItemThatGoesWithWhatItListsIsPaintedAway() {
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            const std::vector<Compound*> atoms = atomsOf(m_shown);
            memory_host::addBond(Space::instance(), atoms[0], atoms[1]);
        }
        Space::instance()->SetSelected(true);
        clickEntry(*m_window, 2);
        QCOMPARE(rows(*m_window).size(), 1);
        const RepaintCount repaints;
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Atom"));
        QCOMPARE(entries(*m_window).size(), 2);
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(repaints.calls(), 1);
    }

    void aGestureRepaintsTheTreeOnce() {
        const RepaintCount repaints;
        clickRow(*m_window, {"1abc", "A"}, Qt::LeftButton, Qt::ControlModifier);
        QCOMPARE(repaints.calls(), 1);
        QTest::keyClick(treeOf(*m_window), Qt::Key_Up);
        QCOMPARE(repaints.calls(), 2);
    }

    // The rows keep the user's marks, which must be seen; nobody tells the window of anything.
    void aRefusedGestureIsPainted() {
        selectElsewhere(m_shown, false);
        const QPoint row = treeOf(*m_window)->visualRect(rowAt(*m_window, {"1abc"})).center();
        QTest::keyClick(treeOf(*m_window), Qt::Key_Up); // nothing to do: the row is current
        const memory_host::SpaceLock lock;
        PaintCount paints(screen());
        const RepaintCount repaints;
        click(screen(), row, Qt::LeftButton);
        QCOMPARE(paints.events(), 1);
        QTest::keyClick(treeOf(*m_window), Qt::Key_Space);
        QCOMPARE(paints.events(), 2);
        QCOMPARE(repaints.calls(), 0);
        QCOMPARE(takeMessages(), QStringList(2, refused));
    }
};

REGISTER_TEST(RepaintTest)
#include "RepaintTest.moc"
