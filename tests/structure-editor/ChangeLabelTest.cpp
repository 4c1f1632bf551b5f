// What each change of the window is called: the labels that its guards carry, as a list of what can
// be undone would show them.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "FailingMemory.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "services/DataFolder.h"
#include "services/Log.h"

#include <QInputDialog>
#include <QLineEdit>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

constexpr const char* none = ""; ///< no change, or none that could be told

struct Change {
    const char* slot;
    const char* ofEverything;  ///< its label with everything in the space selected
    const char* ofAtom;        ///< and with the atom CA alone
    int button = Qt::NoButton; ///< of ListEvent
};

// With Enter pressed in each dialog. The shown entry, 1abc, holds a chain of two
// residues with a group each, five atoms and three bonds, a grid and a surface.
const Change changes[] = {
    {"SelectedClear()", "Clear selection in 1abc", "Clear selection in 1abc"},
    {"SelectedToggle()", "Invert selection of 5 atoms", "Invert selection of 5 atoms"},
    {"SelectGroups()", "Select 2 groups", "Select group Group"},
    {"SelectRadius()", "Select no atoms within radius", "Select 4 atoms within radius"},
    {"SelectGroupsG()", "Select 3 groups", "Select group Group"},
    {"SelectRadiusG()", "Select no atoms within radius", "Select 4 atoms within radius"},
    {"SelectHydrogens()", "Select atom H by type", "Select atom H by type"},
    {"SelectGridBounds()", "Fit grid map to the selection", "Fit grid map to the selection"},
    {"SelectedHide()", "Hide 5 atoms", "Hide atom CA"},
    {"UnselectedHide()", "Hide no unselected atoms", "Hide 4 unselected atoms"},
    {"UnselectedHideG()", "Hide no unselected atoms", "Hide 5 unselected atoms"},
    {"SelectedShow()", "Show 5 atoms", "Show atom CA"},
    {"SelectedColor()", "Set color of 18 items", "Set color of atom CA"},
    {"SelectedColorTemp()", "Color 5 atoms by temperature", "Color atom CA by temperature"},
    {"SelectedUnColor()", "Default color of 18 items", "Default color of atom CA"},
    {"SelectedOrigModel()", "First model of 2 residues", "First model of no residues"},
    {"SelectedPrevModel()", "Previous model of 2 residues", "Previous model of no residues"},
    {"SelectedNextModel()", "Next model of 2 residues", "Next model of no residues"},
    {"SelectedColorGrp2Atom()", "Colour atoms of 2 residues", "Colour atoms of no residues"},
    {"MakeSet()", "Define set Set", "Define set Set"},
    {"MakeCartesian()", "Add Cartesian", "Add Cartesian"},
    {"KillClump()", "Delete 1abc", none},
    {"KillMolecules()", "Delete chain A", "Delete no chains"},
    {"KillGroups()", "Delete 2 groups", "Delete no groups"},
    {"KillResidues()", "Delete 2 residues", "Delete no residues"},
    {"KillAtoms()", "Delete 5 atoms", "Delete atom CA"},
    {"KillBonds()", "Delete 3 bonds", "Delete no bonds"},
    {"KillGrids()", "Delete grid map", "Delete no grids"},
    {"KillSurfaces()", "Delete surface skin", "Delete no surfaces"},
    {"KillAll()", "Delete 2 entries", "Delete 2 entries"},
    {"applySelect()", "Select 5 atoms by name", "Select 5 atoms by name"},
    {"applyMask()", "Unselect no atoms by name", "Unselect no atoms by name"},
    {"applyDiff()", "Unselect 5 atoms by name", "Unselect 5 atoms by name"},
    {"SelectionChanged()", none, none}, // the user has changed no row
    {"KillBranch(TreeItem*)", "Delete chain A", "Delete chain A"},
    {"ListEvent(int,QListWidgetItem*,QPoint)", "Hide 1abc", "Hide 1abc", Qt::RightButton},
    {"ListEvent(int,QListWidgetItem*,QPoint)", "Delete 1abc", "Delete 1abc", Qt::MiddleButton},
};

} // namespace

class ChangeLabelTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;
    const QStringList m_residue = {"1abc", "A", "Groups", "MET 1"};
    const QStringList m_water = {"1abc", "A", "Groups", "HOH 2"};

    static void pressEnterInDialogs(QTimer& timer) {
        QObject::connect(&timer, &QTimer::timeout, [] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                pressEnter(*dialog);
        });
        timer.start(0);
    }

    /// The labels of what `act` changes.
    static QStringList labelsOf(const std::function<void()>& act) {
        takeHostLog();
        memory_host::setLogLevel(memory_host::LogLevel::Debug);
        act();
        memory_host::setLogLevel(memory_host::LogLevel::Usual);
        takeMessages();
        QStringList labels = takeHostLog();
        labels.removeIf([](const QString& line) {
            return line.startsWith("Plug-in ") || line.startsWith("Defined set ") ||
                   line.startsWith("Help page ");
        });
        return labels;
    }

    Compound* residue() const { return itemAt(m_shown, {"A", "Groups", "MET 1"}); }

    void selectAtomAlone() {
        selectElsewhere(Space::instance(), false);
        selectElsewhere(itemAt(residue(), {"Group", "CA"}), true);
    }

    void clickCell(const QStringList& path, int column) {
        TreeView* tree = treeOf(*m_window);
        const QModelIndex row = rowAt(*m_window, path);
        tree->scrollTo(row);
        const QRect cell = tree->visualRect(row.sibling(row.row(), column));
        click(tree->viewport(), cell.center(), Qt::RightButton);
    }

private slots:
    void init() override {
        TestCase::init();
        const auto at = [](float x) { return TAVIK::Vertex(x, 0.0F, 0.0F, true); };
        m_shown = addChain(
            "1abc", {{"MET 1", {{"N", "N", at(0.0F)}, {"CA", "C", at(1.0F)}, {"C", "C", at(2.0F)}}},
                     {"HOH 2", {{"O", "O", at(3.0F)}, {"H", "H", at(4.0F)}}}});
        {
            const DataAdder<Compound> guard(nullptr, m_shown);
            TAVIK::DataMaker::makeGrid(m_shown, "map",
                                       {{9, 9, 9},
                                        {},
                                        {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}},
                                        std::vector<float>(9 * 9 * 9)});
            TAVIK::DataMaker::makeCore(m_shown, "skin", "Surface");
        }
        addLine("2abc", {50.0F});
        showWindow();
    }
    void cleanup() override {
        memory_host::setLogLevel(memory_host::LogLevel::Usual);
        WindowTestCase::cleanup();
    }

    void eachChangeSaysWhatItDid_data() {
        QTest::addColumn<const Change*>("change");
        QTest::addColumn<bool>("everything");
        for (const Change& change : changes)
            for (const bool everything : {true, false})
                QTest::addRow("%s %d, %s selected", change.slot, change.button,
                              everything ? "everything" : "an atom")
                    << &change << everything;
    }
    void eachChangeSaysWhatItDid() {
        QFETCH(const Change*, change);
        QFETCH(bool, everything);
        if (everything)
            selectElsewhere(Space::instance(), true);
        else
            selectAtomAlone();
        const QString expected = everything ? change->ofEverything : change->ofAtom;
        QTimer timer;
        pressEnterInDialogs(timer);
        const QStringList labels =
            labelsOf([&] { QVERIFY(invoke(*m_window, change->slot, change->button)); });
        QCOMPARE(labels, expected.isEmpty() ? QStringList() : QStringList(expected));
    }

    void everySlotLabelsEachOfItsChanges_data() {
        QTest::addColumn<QString>("slot");
        for (const QString& slot : allSlots())
            QTest::newRow(qPrintable(slot)) << slot;
    }
    void everySlotLabelsEachOfItsChanges() {
        QFETCH(QString, slot);
        selectElsewhere(Space::instance(), true);
        treeOf(*m_window)->firstChild()->setSelected(false); // for SelectionChanged()
        OtherPlugin other;
        QTimer timer;
        pressEnterInDialogs(timer);
        const QStringList labels =
            labelsOf([&] { QVERIFY(invoke(*m_window, slot.toLatin1(), Qt::RightButton)); });
        QCOMPARE(labels.size(), other.updates + other.adds + other.deletes);
        QVERIFY2(!labels.filter("%1").size(), qPrintable(labels.join(u'|')));
    }

    void aRefusedChangeHasNoLabel() {
        const memory_host::SpaceLock lock;
        for (const Change& change : changes) {
            QTimer timer;
            pressEnterInDialogs(timer);
            QCOMPARE(labelsOf([&] { QVERIFY(invoke(*m_window, change.slot, change.button)); }),
                     QStringList());
        }
    }

    void aQuestionThatIsCancelledLeavesNoLabel() {
        selectElsewhere(m_shown, true);
        bool asked = false;
        const QStringList labels = labelsOf([&] {
            asked = withDialog<QInputDialog>([&] { trigger(*m_window, "Select", "Within rad."); },
                                             [](QInputDialog& dialog) { pressEscape(dialog); });
        });
        QVERIFY(asked);
        QCOMPARE(labels, QStringList());
    }

    void anExpressionThatIsCutOffLeavesNoLabel() {
        panelOf(*m_window)->findChildren<QLineEdit*>().at(0)->setText("(.{0,900}){0,900}");
        const QStringList lines = labelsOf([&] { QVERIFY(invoke(*m_window, "applySelect()")); });
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().contains("cut off"), qPrintable(lines.first()));
    }

    void withoutAColourMapNothingIsColoured() {
        selectElsewhere(m_shown, true);
        const QString folder = memory_host::dataFolder();
        memory_host::setDataFolder("/nowhere");
        const QStringList lines =
            labelsOf([&] { QVERIFY(invoke(*m_window, "SelectedColorTemp()")); });
        memory_host::setDataFolder(folder);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith("Colour map"), qPrintable(lines.first()));
    }

    void colouringWithNothingSelectedIsOfNoItems() {
        selectElsewhere(Space::instance(), false);
        QTimer timer;
        pressEnterInDialogs(timer);
        QCOMPARE(labelsOf([&] { QVERIFY(invoke(*m_window, "SelectedColor()")); }),
                 QStringList("Set color of no items"));
        QCOMPARE(labelsOf([&] { QVERIFY(invoke(*m_window, "SelectedUnColor()")); }),
                 QStringList("Default color of no items"));
    }

    void deletingAllNeedsNoLargeBlock() {
        constexpr int many = FailingMemory::largeBlock / sizeof(void*) + 1;
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            for (int i = 0; i != many; ++i)
                TAVIK::DataMaker::makeCore(Space::instance(), "entry", "Composite");
        }
        QStringList labels;
        {
            const FailingMemory memory(0, 1);
            labels = labelsOf([&] { m_window->KillAll(); });
            QCOMPARE(FailingMemory::refusals(), 0);
        }
        QCOMPARE(labels, QStringList(QStringLiteral("Delete %1 entries").arg(many + 2)));
        QVERIFY(!Space::instance()->HasChildren());
    }

    void aSetThatIsRefusedLeavesNoLabel() {
        addEmpty("grid", "Grid");
        clickEntry(*m_window, 2);
        QTimer timer;
        pressEnterInDialogs(timer);
        QCOMPARE(labelsOf([&] { QVERIFY(invoke(*m_window, "MakeSet()")); }), QStringList());
    }

    void theSecondRightClickShowsTheEntryAgain() {
        QCOMPARE(labelsOf([&] { clickEntry(*m_window, 1, Qt::RightButton); }),
                 QStringList{"Hide 2abc"});
        QCOMPARE(labelsOf([&] { clickEntry(*m_window, 1, Qt::RightButton); }),
                 QStringList{"Show 2abc"});
    }

    void gesturesInTheTreeSayWhatWasSelected() {
        const auto click = [&](const QStringList& path, Qt::KeyboardModifiers modifiers) {
            return labelsOf([&] { clickRow(*m_window, path, Qt::LeftButton, modifiers); });
        };
        QCOMPARE(click(m_residue, Qt::NoModifier), QStringList{"Select residue MET 1"});
        QCOMPARE(click(m_water, Qt::ControlModifier), QStringList{"Select residue HOH 2"});
        QCOMPARE(click(m_water, Qt::ControlModifier), QStringList{"Unselect residue HOH 2"});
        QCOMPARE(click({"1abc"}, Qt::NoModifier), QStringList{"Select 1abc"});
    }

    void aGestureOnSeveralRowsCountsThem() {
        TreeView* tree = treeOf(*m_window);
        clickRow(*m_window, m_residue);
        selectElsewhere(m_shown, false);
        const QStringList two =
            labelsOf([&] { QTest::keyClick(tree, Qt::Key_Down, Qt::ShiftModifier); });
        QCOMPARE(two, QStringList{"Select 2 residues"});
        clickRow(*m_window, {"1abc", "map"});
        selectElsewhere(m_shown, false);
        const QStringList mixed =
            labelsOf([&] { QTest::keyClick(tree, Qt::Key_Down, Qt::ShiftModifier); });
        QCOMPARE(mixed, QStringList{"Select 2 items"});
    }

    void cellsSayWhatTheyToggle() {
        const char* const expected[][2] = {{"Hide residue MET 1", "Show residue MET 1"},
                                           {"Select residue MET 1", "Unselect residue MET 1"},
                                           {"Select residue MET 1", "Unselect residue MET 1"}};
        for (int column = 1; column != 4; ++column)
            for (const char* label : expected[column - 1])
                QCOMPARE(labelsOf([&] { clickCell(m_residue, column); }), QStringList{label});
        selectElsewhere(itemAt(residue(), {"Group", "CA"}), true);
        QCOMPARE(labelsOf([&] { clickCell(m_residue, 2); }), QStringList{"Select residue MET 1"});
        QCOMPARE(labelsOf([&] {
                     clickCell({"1abc", "A", "Bonds"}, 1);
                 }),
                 QStringList{"Hide Bonds"});
    }

    void aBranchIsDeletedByItsName() {
        bool asked = false;
        const QStringList labels = labelsOf([&] {
            asked =
                withQuestion([&] { clickRow(*m_window, m_residue, Qt::MiddleButton); }, pressOk);
        });
        QVERIFY(asked);
        QCOMPARE(labels, QStringList{"Delete residue MET 1"});
    }

    void oneOfAKindIsDeletedByItsName() {
        selectElsewhere(residue(), true);
        QCOMPARE(labelsOf([&] { trigger(*m_window, "Delete", "Residue"); }),
                 QStringList{"Delete residue MET 1"});
    }
};

REGISTER_TEST(ChangeLabelTest)
#include "ChangeLabelTest.moc"
