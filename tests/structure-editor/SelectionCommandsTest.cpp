// The commands of the menu "Select", through their entries and their dialogs.
#include "Building.h"
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "Files.h"
#include "Kinds.h"
#include "ListBox.h"
#include "Selecting.h"
#include "Space.h"
#include "Traversal.h"
#include "TreeView.h"
#include "WindowTestCase.h"

#include <QFrame>
#include <QInputDialog>

#include <limits>
#include <optional>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;
using TAVIK::Vertex;

namespace {

const QString refused = QStringLiteral("Cannot update CDB!");

struct Command {
    const char* label;
    bool local;
    bool asks;                  ///< opens a dialog
    bool asksInGuard;           ///< and that only when the guard is good
    const char* line = nullptr; ///< written before anything else
};

const Command commands[] = {
    {"Clear", true, false, false},         {"Invert", true, false, false, "Vuxo::InvertSelection"},
    {"Full groups", true, false, false},   {"Within rad.", true, true, true},
    {"All Fgroups", false, false, false},  {"Any w/ rad.", false, true, true},
    {"Atoms by type", false, true, false}, {"Nearby Grids", false, false, false}};

void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(commands)); ++i)
        QTest::newRow(commands[i].label) << i;
}

// A grid of 10 x 20 x 30 points, 1 Å apart, from the origin on.
TAVIK::Grid* addGridItem(const std::string& name) {
    memory_host::GridRecord record;
    record.points = {10, 20, 30};
    record.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    record.values.resize(10 * 20 * 30);
    const DataAdder<Space> guard(nullptr, Space::instance());
    return memory_host::addGrid(Space::instance(), name, std::move(record));
}

std::vector<int> shownRange(const TAVIK::Grid* grid) {
    std::vector<int> range(grid->m_lower, grid->m_lower + 3);
    range.insert(range.end(), grid->m_upper, grid->m_upper + 3);
    return range;
}

} // namespace

class SelectionCommandsTest : public WindowTestCase {
    Q_OBJECT

    void select(const QString& label) { trigger(*m_window, QStringLiteral("Select"), label); }
    // Calls a command and types `text` into the dialog that it opens.
    bool selectWith(const QString& label, const QString& text) {
        return withDialog<QInputDialog>([&] { select(label); },
                                        [&](QInputDialog& dialog) {
                                            if (dialog.inputMode() == QInputDialog::DoubleInput)
                                                dialog.setDoubleValue(text.toDouble());
                                            else
                                                dialog.setTextValue(text);
                                            pressEnter(dialog);
                                        });
    }

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

    void theRadiusDialogAsksAsItShould_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("label");
        QTest::newRow("local") << "Within rad."
                               << "Enter (local) selection radius";
        QTest::newRow("global") << "Any w/ rad."
                                << "Enter (global) selection radius";
    }
    void theRadiusDialogAsksAsItShould() {
        QFETCH(QString, entry);
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 4, 5});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select(entry); },
                                         [&](QInputDialog& dialog) {
                                             QCOMPARE(dialog.windowTitle(), "Radius");
                                             QCOMPARE(dialog.labelText(), label);
                                             QCOMPARE(dialog.doubleValue(), 4.0);
                                             QCOMPARE(dialog.doubleMinimum(), 0.0);
                                             QCOMPARE(dialog.doubleMaximum(), 10000.0);
                                             QCOMPARE(dialog.doubleDecimals(), 3);
                                             QVERIFY(!dialog.parentWidget());
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void aCancelledRadiusChangesNothing() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        for (const char* entry : {"Within rad.", "Any w/ rad."})
            QVERIFY(withDialog<QInputDialog>([&] { select(entry); }, pressEscape));
        QCOMPARE(selectedNames(shown), "C0");
    }

    void aRadiusAroundNothingSelectsNothing() {
        Compound* shown = addLine("1abc", {0, 0, 1});
        showWindow();
        QVERIFY(selectWith("Within rad.", "10000"));
        QCOMPARE(selectedNames(shown), "");
    }

    void radiusZeroSelectsTheSamePlaceOnly() {
        Compound* shown = addLine("1abc", {1, 1, std::nextafter(1.0F, 2.0F)});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "0"));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void whatLiesExactlyAtTheRadiusIsSelected() {
        Compound* shown = addLine("1abc", {0, 2.5F, std::nextafter(2.5F, 3.0F)});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "2.5"));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void theSelectionGrowsByOneStepOnly() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1");
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1 C2");
    }

    void anAtomWithoutAPositionIsNotSelectedButCountsAsACentre() {
        Compound* shown = addChain("1abc", {{"R 1",
                                             {{"C0", "C", {0, 0, 0, false}},
                                              {"C1", "C", {0, 0, 0, true}},
                                              {"C2", "C", {9, 0, 0, false}},
                                              {"C3", "C", {9, 0, 0, true}}}}});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[3]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1 C3");
    }

    void positionsThatAreNoNumbersAreNearNothing() {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinity = std::numeric_limits<float>::infinity();
        Compound* shown = addLine("1abc", {0, nan, infinity, infinity, 1});
        for (const int i : {0, 1, 2})
            atomsOf(shown)[std::size_t(i)]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "10000"));
        QCOMPARE(selectedNames(shown), "C0 C1 C2 C4");
    }

    void theLocalRadiusStaysInTheShownItemAndTheGlobalOneDoesNot() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {1, 2});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(other)[1]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "0.5"));
        QCOMPARE(selectedNames(shown), "C0");
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1");
        QCOMPARE(selectedNames(other), "C1");
        QVERIFY(selectWith("Any w/ rad.", "0"));
        QCOMPARE(selectedNames(other), "C0 C1");
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " X 2abc"}));
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

    void nearbyGridsFitsTheShownRangeWithTheUnevenMargin() {
        TAVIK::Grid* grid = addGridItem("map");
        Compound* shown = addChain("1abc", {{"R 1",
                                             {{"C0", "C", {4.2F, 5.0F, 6.0F, true}},
                                              {"C1", "C", {5.0F, 7.4F, 26.0F, true}},
                                              {"C2", "C", {-50.0F, 1.0F, 1.0F, false}},
                                              {"C3", "C", {9.0F, 9.0F, 9.0F, true}}}}});
        for (const std::size_t i : {0, 1, 2})
            atomsOf(shown)[i]->SetSelected(true);
        showWindow(1);
        OtherPlugin other;
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), (std::vector<int>{2, 3, 4, 9, 11, 30}));
        QCOMPARE(other.updates, 1);
    }

    void nearbyGridsLeavesWhatIsFarAway_data() {
        QTest::addColumn<double>("x");
        QTest::addColumn<bool>("changes");
        QTest::newRow("just near enough below") << -3.0 << true;
        QTest::newRow("too far below") << -4.0 << false;
        QTest::newRow("far below") << -1000.0 << false;
        QTest::newRow("just near enough above") << 11.0 << true;
        QTest::newRow("too far above") << 12.0 << false;
        QTest::newRow("out of all bounds") << 3e38 << false;
    }
    void nearbyGridsLeavesWhatIsFarAway() {
        QFETCH(double, x);
        QFETCH(bool, changes);
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        Compound* shown = addLine("1abc", {float(x)});
        shown->SetSelected(true);
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid) != before, changes);
    }

    void nearbyGridsDoesNothingWithoutASelection() {
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        addLine("1abc", {3});
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), before);
    }

    // Only the atoms that have a position count; with none, the bounds are upside down.
    void nearbyGridsWithoutAPositionLeavesTheRange() {
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        addChain("1abc", {{"R 1", {{"C0", "C", {3, 3, 3, false}}}}})->SetSelected(true);
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), before);
    }

    void nearbyGridsDoesNotRefreshTheWindow() {
        addGridItem("map");
        Compound* shown = addLine("1abc", {3});
        showWindow(1);
        shown->SetSelected(true);
        QCOMPARE(entries(*m_window)[1], " _ 1abc");
        select("Nearby Grids");
        QCOMPARE(entries(*m_window)[1], " _ 1abc");
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
        const Command& command = commands[index];
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
            QCOMPARE(asked, command.asks && !command.asksInGuard);
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
        const Command& command = commands[index];
        if (!command.local)
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
        selectWith(commands[index].label, "1");
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    // While the question about the radius is open the guard is, too: others are refused.
    void othersCannotDestroyWhileTheRadiusIsAsked() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select("Within rad."); },
                                         [&](QInputDialog& dialog) {
                                             const DataDelete<Compound> guard(nullptr, shown);
                                             QVERIFY(!guard.m_good);
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    // One that does not care about guards, and destroys all the same.
    void anItemDestroyedWhileTheRadiusIsAskedEndsTheCommand_data() {
        QTest::addColumn<QString>("entry");
        QTest::newRow("local") << "Within rad.";
        QTest::newRow("global") << "Any w/ rad.";
    }
    void anItemDestroyedWhileTheRadiusIsAskedEndsTheCommand() {
        QFETCH(QString, entry);
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        shown->SetSelected(true);
        atomsOf(other)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select(entry); },
                                         [&](QInputDialog& dialog) {
                                             TAVIK::DataMaker::Destroy(shown);
                                             m_window->commDelete();
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(entries(*m_window), QStringList{entry == "Within rad." ? " / 2abc" : " X 2abc"});
        QCOMPARE(takeMessages(), QStringList{"Vuxo::commDelete(): Did somebody killed my data?"});
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

    // The whole way on a real structure: what the command selects is what the plain definition
    // says.
    void aRealStructureIsSelectedToTheBit() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        const std::vector<Compound*> atoms = atomsOf(shown);
        std::size_t selected = 0;
        for (const double radius : {0.0, 1.5, 4.0, 7.25, 30.0}) {
            shown->SetSelected(false);
            for (std::size_t i = 0; i < atoms.size(); i += 97)
                atoms[i]->SetSelected(true);
            std::vector<bool> expected;
            for (const Compound* atom : atoms) {
                bool near = atom->IsSelected();
                for (std::size_t i = 0; i < atoms.size() && !near; i += 97) {
                    const Vertex p = atom->GetPosition();
                    const Vertex c = atoms[i]->GetPosition();
                    const float dx = p[0] - c[0], dy = p[1] - c[1], dz = p[2] - c[2];
                    const float d2 = dx * dx + dy * dy + dz * dz;
                    near = p.isValid() && radius * radius >= static_cast<double>(d2);
                }
                expected.push_back(near);
            }
            m_window.reset();
            showWindow();
            QVERIFY(selectWith("Within rad.", QString::number(radius)));
            for (std::size_t i = 0; i != atoms.size(); ++i)
                QCOMPARE(atoms[i]->IsSelected(), expected[i]);
            selected += std::size_t(std::count(expected.begin(), expected.end(), true));
        }
        QVERIFY(selected > atoms.size());
    }
};

REGISTER_TEST(SelectionCommandsTest)
#include "SelectionCommandsTest.moc"
