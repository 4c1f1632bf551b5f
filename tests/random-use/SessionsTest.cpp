// The machinery itself: a fault is found, made short and printed; sessions that once failed.
#include "SessionTest.h"

#include <algorithm>

namespace {

Session madeUp(unsigned int seed, std::size_t steps) {
    Session session{{Start::Generated, seed, false}, {}};
    play(session, Theme::Everything, seed, steps);
    return session;
}

struct Kept {
    const char* name;
    Session session;
};

// Sessions that failed once.
const std::vector<Kept>& keptSessions() {
    static const std::vector<Kept> all = {
        {"a deletion is answered before the window has heard of it",
         {{Start::Generated, 2, false},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Answering, .edit = {EditKind::Select, 3, 1}},
           {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}}}}},
        {"the window ends before it has heard of a deletion",
         {{Start::Generated, 2, false},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Idle},
           {.action = Action::Answering, .edit = {EditKind::Kill, 0, 0}},
           {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}}}}},
        {"a refused set has a name beyond ASCII",
         {{Start::Generated, 2001952, false},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::Build},
           {.action = Action::Outside, .edit = {EditKind::AddSet, 267, 582}},
           {.action = Action::PressEntry, .target = 3},
           {.action = Action::Menu, .name = "Add > Define set", .text = "\303\251"}}}},
        {"a change of the selection comes with an addition elsewhere",
         {{Start::Generated, 40098, true},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Press},
           {.action = Action::Outside, .edit = {EditKind::AddAmong, 658, 62}},
           {.action = Action::Slot, .name = "SelectedColor()"}}}},
        {"a dialog opens while the menu of an item is open, by key",
         {{Start::Generated, 4804, true},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Answering, .edit = {EditKind::Command, 487, 241, "SelectedColor()"}},
           {.action = Action::Key, .key = Qt::Key_Menu, .edit = {EditKind::SetAtom, 86, 616}}}}},
        {"a dialog opens while the menu of an item is open, by button",
         {{Start::Generated, 4804, true},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Answering, .edit = {EditKind::Command, 487, 241, "SelectedColor()"}},
           {.action = Action::Press,
            .button = Qt::RightButton,
            .edit = {EditKind::SetAtom, 86, 616}}}}},
        {"an entry comes back before the one that is shown",
         {{Start::Generated, 1004, true},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry, .button = Qt::MiddleButton},
           {.action = Action::PressEntry},
           {.action = Action::Outside, .edit = {EditKind::Undo, 0, 0}}}}},
        {"an entry of which a set has members comes back",
         {{Start::Generated, 3021, false},
          {{.action = Action::Build, .value = 832},
           {.action = Action::Outside, .edit = {EditKind::AddLeaf, 640, 174}},
           {.action = Action::Save, .name = "b.cif.gz"},
           {.action = Action::Outside, .edit = {EditKind::AddAmong, 29, 83}},
           {.action = Action::Outside, .edit = {EditKind::AddSet, 421, 358}},
           {.action = Action::Outside, .edit = {EditKind::AddAmong, 612, 521}},
           {.action = Action::Press},
           {.action = Action::Load, .name = "b.cif.gz"},
           {.action = Action::Outside, .edit = {EditKind::Swap, 70, 657}},
           {.action = Action::Outside, .edit = {EditKind::Undo, 489, 325}}}}},
        {"selected residues come back",
         {{Start::Generated, 2, false},
          {{.action = Action::CommandC, .name = "Show"},
           {.action = Action::PressEntry},
           {.action = Action::Menu, .name = "Select > Invert"},
           {.action = Action::Menu, .name = "Delete > Residue"},
           {.action = Action::Outside, .edit = {EditKind::Undo, 0, 0}}}}}};
    return all;
}

} // namespace

class SessionsTest : public SessionTest {
    Q_OBJECT
private slots:
    void aSessionIsTheSameEachTimeItIsPlayed() {
        const Session first = madeUp(7, 60);
        QCOMPARE(text(madeUp(7, 60)), text(first));
        const Outcome again = play(first);
        QCOMPARE(again.faults.join(u'\n'), QString());
        QCOMPARE(again.steps, first.steps.size());
    }

    void aFaultIsFoundAndTheSessionMadeShort() {
        Session session = madeUp(1, 80);
        const auto at = std::find_if(session.steps.begin() + 20, session.steps.end(),
                                     [](const Step& step) { return step.action == Action::Slot; });
        session.steps.insert(at, {.action = Action::Sabotage});
        const Outcome outcome = play(session);
        QVERIFY(!outcome.faults.isEmpty());
        QVERIFY(outcome.steps < session.steps.size());
        const Session shorter = shortened(session);
        QCOMPARE(text(shorter), QStringLiteral("{{Start::Generated, 1, false},\n"
                                               " {{.action = Action::Sabotage}}}"));
        QVERIFY(!play(shorter).faults.isEmpty());
    }

    void aCrashIsFoundAndTheSessionMadeShort() {
        Session session = madeUp(1, 80);
        session.steps.insert(session.steps.begin() + 50, {.action = Action::Crash});
        // Another fault behind it, or instead of it, is not what is looked for.
        session.steps.push_back({.action = Action::Sabotage});
        const Outcome outcome = playApart(session);
        QVERIFY(outcome.crashed);
        QCOMPARE(outcome.steps, std::size_t(51));
        QVERIFY(outcome.faults.join(u'\n').startsWith("the program ended with signal 6"));
        const Session shorter = shortened(session);
        QCOMPARE(text(shorter), QStringLiteral("{{Start::Generated, 1, false},\n"
                                               " {{.action = Action::Crash}}}"));
        const QString said = report(session, outcome);
        QVERIFY(said.contains("shortened to 1 steps") && said.contains("signal 6"));
    }

    void aSessionGoesTheSameWayInAProcessOfItsOwn() {
        Session here{{Start::Generated, 11, true}, {}};
        Session apart = here;
        const Outcome outcome = play(here, Theme::Everything, 11, 40);
        const Outcome outcomeApart = playApart(apart, Theme::Everything, 11, 40);
        QCOMPARE(text(apart), text(here));
        QCOMPARE(outcomeApart.steps, outcome.steps);
        QVERIFY(!outcomeApart.crashed);
        QCOMPARE(outcomeApart.faults, outcome.faults);
    }

    void whatIsNeededTogetherStaysTogether() {
        // Without a window nobody reads the list, and the fault is in the data alone.
        const Session session{{Start::Generated, 3, false},
                              {{.action = Action::Idle},
                               {.action = Action::Lock},
                               {.action = Action::Build, .value = 9},
                               {.action = Action::Lock},
                               {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}},
                               {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}},
                               {.action = Action::Build, .value = 4},
                               {.action = Action::Sabotage}}};
        Session empty = session;
        empty.start.kind = Start::Empty;
        const Session shorter = shortened(empty);
        QCOMPARE(text(shorter), QStringLiteral("{{Start::Empty, 3, false},\n"
                                               " {{.action = Action::Build},\n"
                                               "  {.action = Action::Sabotage}}}"));
    }

    void aStepIsPrintedAsItIsWritten() {
        const Step step{.action = Action::Menu,
                        .name = "Select > Any w/ rad.",
                        .target = 1,
                        .button = Qt::RightButton,
                        .place = Place::MarkEnd,
                        .key = Qt::Key_PageDown,
                        .modifiers = Qt::ShiftModifier | Qt::ControlModifier,
                        .value = 4,
                        .answer = Answer::Cancel,
                        .text = "a\"\\\xC3\xA9",
                        .edit = {EditKind::SetAtom, 5, 6}};
        QCOMPARE(text(step),
                 QStringLiteral("{.action = Action::Menu, .name = \"Select > Any w/ rad.\", "
                                ".target = 1, .button = Qt::RightButton, .place = Place::MarkEnd, "
                                ".key = Qt::Key_PageDown, "
                                ".modifiers = Qt::ShiftModifier | Qt::ControlModifier, "
                                ".value = 4, .answer = Answer::Cancel, "
                                ".text = \"a\\\"\\\\\\303\\251\", "
                                ".edit = {EditKind::SetAtom, 5, 6}}"));
        QCOMPARE(text(Step{.edit = {EditKind::Command, 0, 0, "KillAtoms()"}}),
                 QStringLiteral("{.action = Action::Idle, "
                                ".edit = {EditKind::Command, 0, 0, \"KillAtoms()\"}}"));
    }

    void aSessionWithoutStepsIsPrintedAsItIsWritten() {
        QCOMPARE(text(Session{{Start::Sample, 4, true}, {}}),
                 QStringLiteral("{{Start::Sample, 4, true},\n {}}"));
    }

    // Wherever a menu entry and its slot come to stand.
    void aNewCommandChangesNoKeptSession_data() {
        QTest::addColumn<int>("entry");
        QTest::addColumn<int>("slot");
        QTest::newRow("before all") << 0 << 0;
        QTest::newRow("among them") << int(menuEntries().size() / 2) << int(commands().size() / 2);
        QTest::newRow("behind all") << int(menuEntries().size()) << int(commands().size());
    }
    void aNewCommandChangesNoKeptSession() {
        QFETCH(int, entry);
        QFETCH(int, slot);
        std::vector<MenuEntry> entries = menuEntries();
        entries.insert(entries.begin() + entry,
                       {.menu = "Select", .label = "New", .slot = "DoNew()"});
        std::vector<Command> longer = commands();
        longer.insert(longer.begin() + slot,
                      {.slot = "DoNew()", .run = [](Model&, const Step&) {}});
        const Tables tables{longer, entries};
        Model model;
        int named = 0;
        for (const Kept& kept : keptSessions())
            for (const Step& step : kept.session.steps) {
                const Meaning before = meaningOf(step, model);
                const Meaning after = meaningOf(step, model, tables);
                QCOMPARE(unknownName(step, tables), QString());
                QCOMPARE(after.command != nullptr, step.action == Action::Slot);
                QCOMPARE(after.entry != nullptr, step.action == Action::Menu);
                if (after.command)
                    QCOMPARE(after.command->slot, before.command->slot);
                if (after.entry)
                    QCOMPARE(nameOf(*after.entry), nameOf(*before.entry));
                QCOMPARE(after.at, before.at);
                named += after.command || after.entry;
            }
        QVERIFY(named > 1);
    }

    void whatANameStandsForNoMoreIsSaid_data() {
        QTest::addColumn<Step>("step");
        QTest::addColumn<QString>("fault");
        const auto add = [](const Step& step, const char* fault) {
            QTest::newRow(fault) << step << QString::fromLatin1(fault);
        };
        add({.action = Action::Slot, .name = "Gone()"}, "there is no slot \"Gone()\"");
        add({.action = Action::Menu, .name = "Select > Gone"},
            "there is no menu entry \"Select > Gone\"");
        add({.action = Action::Field, .name = "Gone"}, "there is no field \"Gone\"");
        add({.action = Action::Button, .name = "Gone"}, "there is no button \"Gone\"");
        add({.action = Action::Answering, .edit = {EditKind::Command, 0, 0, "Lost()"}},
            "there is no slot \"Lost()\"");
    }
    void whatANameStandsForNoMoreIsSaid() {
        QFETCH(Step, step);
        QFETCH(QString, fault);
        const Outcome outcome = play({{Start::Empty, 1, false}, {step}});
        QCOMPARE(outcome.faults, QStringList{fault});
    }

    void sessionsThatFailedOnce_data() {
        QTest::addColumn<Session>("session");
        for (const auto& [name, session] : keptSessions())
            QTest::newRow(name) << session;
    }
    void sessionsThatFailedOnce() {
        QFETCH(Session, session);
        QCOMPARE(play(session).faults.join(u'\n'), QString());
    }
};

REGISTER_TEST(SessionsTest)
#include "SessionsTest.moc"
