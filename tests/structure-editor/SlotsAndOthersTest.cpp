// Every slot of the window while others make it hard: what another plug-in does when it is told of
// the change, or inside of a command that it is sent, and that everything is destroyed.
#include "CommandTools.h"
#include "DataPoint.h"
#include "RecordingPlugins.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"

#include <stdexcept>
#include <utility>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

constexpr const char* deeds[] = {"throws",
                                 "adds to the shown item and beside it",
                                 "destroys the shown item",
                                 "destroys a residue",
                                 "destroys everything",
                                 "hides and selects",
                                 "calls KillAll()",
                                 "calls KillAtoms()",
                                 "calls KillResidues()",
                                 "calls KillClump()",
                                 "calls MakeCartesian()",
                                 "calls SelectedColorTemp()",
                                 "calls SelectedNextModel()",
                                 "calls UnselectedHideG()",
                                 "calls Populate(int)",
                                 "calls MakeSurface()",
                                 "ends the window"};

// Slots that leave the refresh to others, and deeds that do: when others add or delete, the marks
// of what stays are left as they are.
bool isSilent(const QString& slotOrDeed) {
    const QString slot = slotOrDeed.startsWith(u"calls ") ? slotOrDeed.mid(6) : slotOrDeed;
    const plain::Command* const command = plain::findCommand(plain::commands(), slot.toStdString());
    return (command && !command->refreshes) || slotOrDeed.startsWith(u"adds") ||
           slotOrDeed == u"destroys a residue";
}

} // namespace

class SlotsAndOthersTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;

    void fillSpace() {
        m_shown = addStructure("1abc");
        addStructure("2abc");
        addEmpty("map", "Grid");
        Space::instance()->SetSelected(true);
    }
    void showWindow() {
        fillSpace();
        WindowTestCase::showWindow();
    }

    // Calls a slot, and answers what it asks for as Enter does.
    void call(const QString& slot, int button = 0) {
        withDialog<QDialog>([&] { QVERIFY(invoke(*m_window, slot.toLatin1(), button)); },
                            pressEnter);
    }

    bool isShownThere() const {
        Compound** const end = Space::instance()->ChildEnd();
        return std::find(Space::instance()->ChildBegin(), end, m_shown) != end;
    }

    // What another plug-in does, as far as there still is something to do it with.
    void act(const QString& deed) {
        if (deed == "throws")
            throw std::runtime_error("cannot take this");
        if (deed.startsWith("adds")) {
            addEmpty("new", "Surface");
            if (isShownThere())
                addAtomTo(m_shown, "X");
        }
        if (deed == "destroys the shown item" && isShownThere())
            destroyElsewhere(m_shown);
        if (deed == "destroys a residue" && isShownThere())
            if (Compound* residue = itemAt(m_shown, {"A", "Groups", "HOH 2"}))
                destroyElsewhere(residue);
        if (deed == "destroys everything")
            while (Space::instance()->HasChildren())
                destroyElsewhere(*Space::instance()->ChildBegin());
        if (deed == "hides and selects") {
            showElsewhere(Space::instance(), false);
            selectElsewhere(Space::instance(), true);
        }
        if (deed.startsWith("calls "))
            QVERIFY(invoke(*m_window, deed.mid(6).toLatin1()));
        if (deed == "ends the window")
            m_window.reset();
    }

    // Window and data are in step, and nothing is said but what belongs to slots.
    void checkAll(bool silent) {
        QStringList known = {deleted, refused};
        for (const plain::Command& command : plain::commands())
            if (command.line)
                known << QString::fromLatin1(command.line);
        for (const QString& line : takeMessages())
            QVERIFY2(known.contains(line), qPrintable(line));
        for (const QString& line : takeHostLog())
            QVERIFY2(!line.startsWith("Structure Editor:"), qPrintable(line));
        if (m_window) {
            if (silent)
                m_window->commUpdate();
            QCOMPARE(windowFaults(*m_window).join(u'\n'), QString());
        }
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        const DataPoint<Space> guard(nullptr, Space::instance());
        QVERIFY(guard.m_good);
    }

private slots:
    void cleanup() override {
        m_shown = nullptr;
        WindowTestCase::cleanup();
    }

    void whatOthersDoWhenTheyAreToldIsNoHarm_data() {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("deed");
        for (const Call& call : allCalls())
            for (const char* deed : deeds)
                QTest::addRow("%s, %s", nameOf(call).constData(), deed)
                    << QString::fromLatin1(call.slot) << call.button << deed;
    }
    void whatOthersDoWhenTheyAreToldIsNoHarm() {
        QFETCH(QString, slot);
        QFETCH(int, button);
        QFETCH(QString, deed);
        showWindow();
        OtherPlugin other;
        const auto once = [&, done = false]() mutable {
            if (!std::exchange(done, true))
                act(deed);
        };
        other.onUpdate = other.onAdd = other.onDelete = once;
        call(slot, button);
        other.onUpdate = other.onAdd = other.onDelete = {};
        checkAll(isSilent(slot) || isSilent(deed));
    }

    void whatAPluginDoesInsideItsCommandIsNoHarm_data() {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("deed");
        for (const plain::Command& command : plain::commands())
            if (RecordingPlugins::names().contains(command.sendsTo))
                for (const char* deed : deeds)
                    QTest::addRow("%s, %s", command.slot, deed)
                        << QString::fromLatin1(command.slot) << deed;
    }
    void whatAPluginDoesInsideItsCommandIsNoHarm() {
        QFETCH(QString, slot);
        QFETCH(QString, deed);
        RecordingPlugins plugins;
        showWindow();
        plugins.during([&, done = false]() mutable {
            if (!std::exchange(done, true))
                act(deed);
        });
        call(slot);
        if (deed == "calls MakeSurface()")
            QCOMPARE(takeHostLog().size(), 2); // the command inside went out as well
        checkAll(isSilent(deed));
        m_window.reset();
    }

    // The window is as good as new after everything went, and again with new data.
    void everySlotWorksAgainAfterAllWasDestroyed() {
        showWindow();
        call("KillAll()");
        QVERIFY(!Space::instance()->HasChildren());
        for (int turn = 0; turn < 3; ++turn) {
            for (const Call& each : allCalls())
                for (int again = 0; again < 3; ++again) {
                    if (turn == 1 && !Space::instance()->HasChildren()) {
                        fillSpace();
                        m_window->commUpdate();
                    }
                    m_window->Populate(0);
                    call(each.slot, each.button);
                    // A set without members is visible, and so is then what holds it.
                    checkAll(!each.refreshes || each.is("MakeSet()"));
                    QVERIFY2(!QTest::currentTestFailed(), each.slot);
                    if (turn == 2)
                        call("KillAll()");
                }
            call("KillAll()");
            checkAll(false);
            QVERIFY(entries(*m_window).isEmpty());
            QVERIFY(rows(*m_window).isEmpty());
        }
    }
};

REGISTER_TEST(SlotsAndOthersTest)
#include "SlotsAndOthersTest.moc"
