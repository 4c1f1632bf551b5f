// The commands of the menu "Select", through their entries and their dialogs: those that ask for no
// radius, and what all of them have in common.
#include "SelectionTestCase.h"
#include "SlotTools.h"
#include "items/SpaceLock.h"

#include <QFrame>

#include <optional>

using namespace command_tools;
using namespace selection_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

const std::vector<Entry> commands = changingEntries("Select");

void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(commands.size()); ++i)
        QTest::newRow(commands[size_t(i)].label) << i;
}

} // namespace

class SelectionCommandsTest : public SelectionTestCase {
    Q_OBJECT

private slots:
    void clearUnselectsOnlyWhatIsBelowTheShownItem() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        shown->SetSelected(true);
        other->SetSelected(true);
        showWindow();
        select("Clear");
        QCOMPARE(selectedNames(shown), "");
        QCOMPARE(selectedNames(other), "C0 C1");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " X 2abc"}));
    }

    void clearAlsoUnselectsBonds() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* bonds = itemAt(shown, {"A", "Bonds"});
        bonds->SetSelected(true);
        showWindow();
        QVERIFY(shown->HasSelected());
        select("Clear");
        QVERIFY(!shown->HasSelected());
    }

    void invertTogglesEveryAtomAndTwiceRestores() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        select("Invert");
        QCOMPARE(selectedNames(shown), "C0 C2 C3");
        QVERIFY(!itemAt(shown, {"A", "Bonds"})->HasSelected());
        QCOMPARE(entries(*m_window), QStringList{" / 1abc"});
        select("Invert");
        QCOMPARE(selectedNames(shown), "C1");
        QCOMPARE(takeMessages(), (QStringList{"Vuxo::InvertSelection", "Vuxo::InvertSelection"}));
    }

    void invertWritesItsLineEvenWithoutATree() {
        openWindow();
        select("Invert");
        QCOMPARE(takeMessages(), QStringList{"Vuxo::InvertSelection"});
    }

    void fullGroupsSelectsWhatIsPartlySelectedAndNothingElse() {
        const std::vector<AtomSpec> two = {{"C1", "C", {}}, {"C2", "C", {}}};
        const std::vector<ResidueSpec> residues = {{"R 1", two}, {"R 2", two}};
        Compound* shown = addChain("1abc", residues);
        Compound* other = addChain("2abc", residues);
        atomsOf(shown)[1]->SetSelected(true);
        atomsOf(other)[3]->SetSelected(true);
        showWindow();
        select("Full groups");
        QVERIFY(itemAt(shown, {"A", "Groups", "R 1", "Group"})->IsSelected());
        QVERIFY(!itemAt(shown, {"A", "Groups", "R 2", "Group"})->HasSelected());
        QCOMPARE(selectedNames(other), "C2");
        select("All Fgroups");
        QCOMPARE(selectedNames(shown), "C1 C2");
        QCOMPARE(selectedNames(other), "C1 C2");
        QVERIFY(!itemAt(other, {"A", "Groups", "R 1"})->HasSelected());
    }

    void theTypeDialogAsksAsItShould() {
        openWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select("Atoms by type"); },
                                         [&](QInputDialog& dialog) {
                                             QCOMPARE(dialog.windowTitle(), "Select atoms");
                                             QCOMPARE(dialog.labelText(),
                                                      "Enter single atom type (e.g. H, O, Cu)");
                                             QCOMPARE(dialog.textValue(), "H");
                                             QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
                                             QVERIFY(!dialog.parentWidget());
                                             pressEscape(dialog);
                                         }));
    }

    void typesAreComparedExactlyAndOnlyAdded() {
        const std::vector<AtomSpec> atoms = {{"HA", "H", {}},   {"CA", "C", {}},   {"CU", "Cu", {}},
                                             {"CA2", "CA", {}}, {"X", "\xe9", {}}, {"Q", "?", {}}};
        Compound* shown = addChain("1abc", {{"R 1", atoms}});
        Compound* other = addChain("2abc", {{"R 1", atoms}});
        showWindow();
        QVERIFY(selectWith("Atoms by type", "h"));
        QCOMPARE(selectedNames(Space::instance()), "");
        QVERIFY(selectWith("Atoms by type", " H"));
        QCOMPARE(selectedNames(Space::instance()), "");
        QVERIFY(selectWith("Atoms by type", "C"));
        QCOMPARE(selectedNames(shown), "CA");
        QCOMPARE(selectedNames(other), "CA");
        QVERIFY(selectWith("Atoms by type", ".*"));
        QCOMPARE(selectedNames(shown), "CA");
        QVERIFY(selectWith("Atoms by type", QString(QChar(0xe9))));
        QCOMPARE(selectedNames(shown), "CA X");
        // What Latin-1 does not have becomes a question mark.
        QVERIFY(selectWith("Atoms by type", QString(QChar(0x3a9))));
        QCOMPARE(selectedNames(shown), "CA X Q");
    }

    void anEmptyOrCancelledTypeChangesNothing() {
        Compound* shown = addChain("1abc", {{"R 1", {{"H1", "H", {}}, {"E", "", {}}}}});
        showWindow();
        OtherPlugin other;
        QVERIFY(selectWith("Atoms by type", QString()));
        QVERIFY(withDialog<QInputDialog>([&] { select("Atoms by type"); }, pressEscape));
        QCOMPARE(selectedNames(shown), "");
        QCOMPARE(other.updates, 0);
    }

    void queryShowsThePanelAboveTheWindow() {
        // What Qt tells a window that is raised.
        class Raised : public QObject {
        public:
            int times = 0;

        protected:
            bool eventFilter(QObject*, QEvent* event) override {
                times += event->type() == QEvent::ZOrderChange;
                return false;
            }
        } raised;
        addLine("1abc", {0});
        openWindow();
        OtherPlugin other;
        QFrame* panel = panelOf(*m_window);
        panel->installEventFilter(&raised);
        QVERIFY(!panel->isVisible());
        const memory_host::SpaceLock lock; // a guard would say that it is refused
        for (const int times : {1, 2}) {
            select("Query");
            QVERIFY(panel->isVisible());
            QCOMPARE(raised.times, times);
        }
        QCOMPARE(other.updates, 0);
    }

    void aRefusedCommandChangesNothingAndSaysSoOnce_data() { addCommandRows(); }
    void aRefusedCommandChangesNothingAndSaysSoOnce() {
        QFETCH(int, index);
        const Entry& command = commands[size_t(index)];
        Compound* shown = addLine("1abc", {0, 1, 2});
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        OtherPlugin other;
        QStringList expected;
        if (command.line)
            expected << command.line;
        expected << refused;
        {
            const memory_host::SpaceLock lock;
            const bool asked = selectWith(command.label, "C");
            QCOMPARE(asked, command.asks == plain::Asks::First);
        }
        QCOMPARE(takeMessages(), expected);
        QCOMPARE(selectedNames(shown), "C0");
        QCOMPARE(shownRange(grid), before);
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        // The guard has ended: the next command goes through.
        select("Clear");
        QCOMPARE(selectedNames(shown), "");
    }

    void aHostThatRefusesOnlyAfterTheDialogOpenedIsObeyed() {
        Compound* shown = addChain("1abc", {{"R 1", {{"H1", "H", {}}}}});
        showWindow();
        std::optional<memory_host::SpaceLock> lock;
        QVERIFY(withDialog<QInputDialog>([&] { select("Atoms by type"); },
                                         [&](QInputDialog& dialog) {
                                             lock.emplace();
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(takeMessages(), QStringList{refused});
        QCOMPARE(selectedNames(shown), "");
    }

    void localCommandsDoNothingWithoutATree_data() { addCommandRows(); }
    void localCommandsDoNothingWithoutATree() {
        QFETCH(int, index);
        const Entry& command = commands[size_t(index)];
        if (!command.isLocal())
            return;
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        openWindow();
        OtherPlugin other;
        QVERIFY(!selectWith(command.label, "C"));
        QCOMPARE(takeMessages(), command.line ? QStringList{command.line} : QStringList());
        QCOMPARE(selectedNames(shown), "C0 C1");
        QCOMPARE(other.updates, 0);
    }

    void othersHearOfEachCommandOnce_data() { addCommandRows(); }
    void othersHearOfEachCommandOnce() {
        QFETCH(int, index);
        addLine("1abc", {0, 1})->SetSelected(true);
        showWindow();
        OtherPlugin other;
        selectWith(commands[size_t(index)].label, "1");
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void theWholeSpaceEmptiedWhileTheTypeIsAskedIsNoHarm() {
        Compound* shown = addLine("1abc", {0, 1});
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select("Atoms by type"); },
                                         [&](QInputDialog& dialog) {
                                             destroyElsewhere(shown);
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(entries(*m_window), QStringList());
        QCOMPARE(takeMessages(), QStringList{"Vuxo::commDelete(): Did somebody killed my data?"});
    }

    void aWindowThatGoesWhileADialogIsOpenIsNoHarm_data() {
        QTest::addColumn<QString>("entry");
        for (const char* entry : {"Within rad.", "Any w/ rad.", "Atoms by type"})
            QTest::newRow(entry) << entry;
    }
    void aWindowThatGoesWhileADialogIsOpenIsNoHarm() {
        QFETCH(QString, entry);
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select(entry); },
                                         [&](QInputDialog& dialog) {
                                             m_window.reset();
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(selectedNames(shown), "C0");
        const DataAdder<Compound> guard(nullptr, shown);
        QVERIFY(guard.m_good);
    }
};

REGISTER_TEST(SelectionCommandsTest)
#include "SelectionCommandsTest.moc"
