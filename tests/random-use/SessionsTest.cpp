// The machinery itself: a fault is found, made short and printed; sessions that once failed.
#include "SessionTest.h"

#include <algorithm>

namespace {

Session madeUp(unsigned int seed, std::size_t steps) {
    Session session{{Start::Generated, seed, false}, {}};
    play(session, Theme::Everything, seed, steps);
    return session;
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
                               {.action = Action::Build, .a = 9},
                               {.action = Action::Lock},
                               {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}},
                               {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}},
                               {.action = Action::Build, .a = 4},
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
                        .target = 1,
                        .a = 2,
                        .b = 3,
                        .c = 4,
                        .answer = Answer::Cancel,
                        .text = "a\"\\\xC3\xA9",
                        .edit = {EditKind::SetAtom, 5, 6}};
        QCOMPARE(text(step), QStringLiteral("{.action = Action::Menu, .target = 1, .a = 2, .b = 3, "
                                            ".c = 4, .answer = Answer::Cancel, "
                                            ".text = \"a\\\"\\\\\\303\\251\", "
                                            ".edit = {EditKind::SetAtom, 5, 6}}"));
    }

    void aSessionWithoutStepsIsPrintedAsItIsWritten() {
        QCOMPARE(text(Session{{Start::Sample, 4, true}, {}}),
                 QStringLiteral("{{Start::Sample, 4, true},\n {}}"));
    }

    void sessionsThatFailedOnce_data() {
        QTest::addColumn<Session>("session");
        QTest::newRow("a deletion is answered before the window has heard of it")
            << Session{{Start::Generated, 2, false},
                       {{.action = Action::Call, .a = 1},
                        {.action = Action::PressEntry},
                        {.action = Action::Answering, .edit = {EditKind::Select, 3, 1}},
                        {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}}}};
        QTest::newRow("the window ends before it has heard of a deletion")
            << Session{{Start::Generated, 2, false},
                       {{.action = Action::Call, .a = 1},
                        {.action = Action::PressEntry},
                        {.action = Action::Idle},
                        {.action = Action::Answering, .edit = {EditKind::Kill, 0, 0}},
                        {.action = Action::Outside, .edit = {EditKind::Destroy, 0, 0}}}};
        QTest::newRow("a refused set has a name beyond ASCII")
            << Session{{Start::Generated, 2001952, false},
                       {{.action = Action::Call, .a = 1},
                        {.action = Action::Build},
                        {.action = Action::Outside, .edit = {EditKind::AddSet, 267, 582}},
                        {.action = Action::PressEntry, .target = 3},
                        {.action = Action::Menu, .a = 766, .text = "\303\251"}}};
        QTest::newRow("a change of the selection comes with an addition elsewhere")
            << Session{{Start::Generated, 40098, true},
                       {{.action = Action::Call, .a = 1},
                        {.action = Action::PressEntry},
                        {.action = Action::Press},
                        {.action = Action::Outside, .edit = {EditKind::AddAmong, 658, 62}},
                        {.action = Action::Slot, .a = 16}}};
    }
    void sessionsThatFailedOnce() {
        QFETCH(Session, session);
        QCOMPARE(play(session).faults.join(u'\n'), QString());
    }
};

REGISTER_TEST(SessionsTest)
#include "SessionsTest.moc"
