// Every slot of the window under every condition: with an empty tree, nothing or everything
// selected, changes refused, and the shown item destroyed while a question is open. After each,
// list and tree show the data as they are, and the data can be changed.
#include "CommandTools.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "SlotTools.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"

#include <QColorDialog>
#include <QInputDialog>

#include <memory>
#include <optional>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

/// What a slot needs to do anything: the item in the tree, or an entry in the list.
enum class Needs { Nothing, Tree, Entry };
/// What becomes of the change when the host refuses it.
enum class Guard { None, Said, Silent };
enum class Asks { No, First, InGuard };

struct Slot {
    const char* signature;
    Needs needs = Needs::Nothing;
    Guard guard = Guard::None;
    Asks asks = Asks::No;
    const char* line = nullptr;    ///< written at the start
    const char* sendsTo = nullptr; ///< the plug-in that is not there
    bool oddIsCancel = false;      ///< an odd answer ends it as a cancel does
    bool refreshes = true;         ///< the window shows the change at once
    int button = 0;                ///< of ListEvent
};

constexpr const char* solidVolume = "Create/SolidVolume";

const Slot slotTable[] = {
    {"help()"},
    {"MakeList()"},
    {"UpdateList()"},
    {"ListEvent(int,QListWidgetItem*,QPoint)", Needs::Entry, Guard::None, Asks::No, nullptr,
     nullptr, false, true, Qt::LeftButton},
    {"ListEvent(int,QListWidgetItem*,QPoint)", Needs::Entry, Guard::Said, Asks::No, nullptr,
     nullptr, false, true, Qt::RightButton},
    {"ListEvent(int,QListWidgetItem*,QPoint)", Needs::Entry, Guard::Silent, Asks::First, nullptr,
     nullptr, true, true, Qt::MiddleButton},
    {"ListEvent(int,QListWidgetItem*,QPoint)", Needs::Entry, Guard::None, Asks::No, nullptr,
     nullptr, false, true, Qt::BackButton},
    {"Populate(int)"},
    {"showQuery()"},
    {"SelectGroups()", Needs::Tree, Guard::Said},
    {"SelectRadius()", Needs::Tree, Guard::Said, Asks::InGuard},
    {"SelectGroupsG()", Needs::Nothing, Guard::Said},
    {"SelectHydrogens()", Needs::Nothing, Guard::Said, Asks::First},
    {"SelectRadiusG()", Needs::Nothing, Guard::Said, Asks::InGuard},
    {"SelectGridBounds()", Needs::Nothing, Guard::Said},
    {"SelectedHide()", Needs::Tree, Guard::Said},
    {"SelectedShow()", Needs::Tree, Guard::Said},
    {"SelectedClear()", Needs::Tree, Guard::Said},
    {"SelectedToggle()", Needs::Tree, Guard::Said, Asks::No, "Vuxo::InvertSelection"},
    {"SelectedColor()", Needs::Tree, Guard::Said, Asks::First, "ProteinPage::SelectedColor()",
     nullptr, true},
    {"SelectedColorTemp()", Needs::Tree, Guard::Said, Asks::No, "ProteinPage::SelectedColorTemp()"},
    {"SelectedUnColor()", Needs::Tree, Guard::Said, Asks::No, "ProteinPage::RestoreColor()"},
    {"SelectedRotamers()", Needs::Tree, Guard::None, Asks::No, nullptr, "Create/Rotamer"},
    {"SelectedPrevModel()", Needs::Tree, Guard::Said, Asks::No,
     "Change to previous model in selected Residues"},
    {"SelectedNextModel()", Needs::Tree, Guard::Said, Asks::No,
     "Change to next model in selected Residues"},
    {"SelectedOrigModel()", Needs::Tree, Guard::Said, Asks::No,
     "Change to first model in selected Residues"},
    {"SelectedColorGrp2Atom()", Needs::Tree, Guard::Said, Asks::No, "Color atoms by residue color"},
    {"UnselectedHide()", Needs::Tree, Guard::Said, Asks::No, nullptr, nullptr, false, false},
    {"UnselectedHideG()", Needs::Nothing, Guard::Said, Asks::No, nullptr, nullptr, false, false},
    {"MakeContourHi()", Needs::Nothing, Guard::None, Asks::First, nullptr, solidVolume, true},
    {"MakeContourLo()", Needs::Nothing, Guard::None, Asks::First, nullptr, solidVolume, true},
    {"MakeSurface()", Needs::Nothing, Guard::None, Asks::No, nullptr, solidVolume},
    {"MakeSurfaceED()", Needs::Nothing, Guard::None, Asks::No, nullptr, solidVolume},
    {"MakeSurfaceGauss()", Needs::Nothing, Guard::None, Asks::No, nullptr, solidVolume},
    {"MakeSurfaceVdW()", Needs::Nothing, Guard::None, Asks::No, nullptr, solidVolume},
    {"MakeSurfaceSolv()", Needs::Nothing, Guard::None, Asks::No, nullptr, solidVolume},
    {"MakeSubSurface()", Needs::Nothing, Guard::None, Asks::First, nullptr, solidVolume, true},
    {"MakeCartesian()", Needs::Nothing, Guard::Said},
    {"MakeSet()", Needs::Tree, Guard::Said, Asks::First},
    {"MapGrid2Surf()", Needs::Nothing, Guard::None, Asks::No, nullptr, "Calculate/Electrostatics"},
    {"KillAll()", Needs::Nothing, Guard::Silent},
    {"KillGroups()", Needs::Tree, Guard::Silent},
    {"KillResidues()", Needs::Tree, Guard::Silent},
    {"KillGrids()", Needs::Tree, Guard::Silent},
    {"KillSurfaces()", Needs::Tree, Guard::Silent},
    {"KillBonds()", Needs::Tree, Guard::Silent},
    {"KillAtoms()", Needs::Tree, Guard::Silent},
    {"KillMolecules()", Needs::Tree, Guard::Silent},
    {"KillClump()", Needs::Tree, Guard::Silent},
    {"KillItems()"},
    {"applySelect()", Needs::Tree, Guard::Said},
    {"applyMask()", Needs::Tree, Guard::Said},
    {"applyDiff()", Needs::Tree, Guard::Said},
    {"SelectionChanged()", Needs::Tree, Guard::Said},
    {"KillBranch(TreeItem*)", Needs::Tree, Guard::Said, Asks::First, nullptr, nullptr, true},
};

bool is(const Slot& slot, const char* signature) {
    return qstrcmp(slot.signature, signature) == 0;
}

enum class State { EmptySpace, EmptyTree, NothingSelected, EverythingSelected, Refused, Destroyed };
const struct {
    State state;
    const char* name;
} states[] = {{State::EmptySpace, "empty space"},
              {State::EmptyTree, "empty tree"},
              {State::NothingSelected, "nothing selected"},
              {State::EverythingSelected, "everything selected"},
              {State::Refused, "changes refused"},
              {State::Destroyed, "destroyed during the question"}};

enum class Answer { Accept, Cancel, Odd };
const struct {
    Answer answer;
    const char* name;
} answers[] = {{Answer::Accept, "accept"}, {Answer::Cancel, "cancel"}, {Answer::Odd, "odd"}};

void answerDialog(QDialog& dialog, Answer answer) {
    if (answer == Answer::Cancel) {
        pressEscape(dialog);
        return;
    }
    if (auto* input = qobject_cast<QInputDialog*>(&dialog); input && answer == Answer::Odd) {
        if (input->inputMode() == QInputDialog::TextInput)
            input->setTextValue(QString::fromUtf8("/1,5 \n%1Ωé"));
        else
            input->setDoubleValue(0);
    } else if (answer == Answer::Odd) {
        dialog.close(); // there is no text to type
        return;
    }
    pressEnter(dialog);
}

// Destroys as a plug-in does: only if it may.
bool destroyPolitely(Compound* item) {
    const DataDelete<Compound> guard(nullptr, item);
    if (guard.m_good)
        TAVIK::DataMaker::Destroy(item);
    return guard.m_good;
}

// All that the host holds, and its state.
void describe(Compound* item, QStringList& out) {
    out << QStringLiteral("%1 %2 %3%4 %5")
               .arg(item->GetId())
               .arg(QString::fromLatin1(item->GetName()))
               .arg(item->IsSelected())
               .arg(item->IsVisible())
               .arg(item->GetColor().rgba());
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        describe(*child, out);
}

QStringList data() {
    QStringList out;
    describe(Space::instance(), out);
    return out;
}

} // namespace

class AllSlotsTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;
    Compound* m_shown = nullptr;
    bool m_asked = false;
    bool m_destroyed = false;

    void prepare(State state) {
        if (state != State::EmptySpace) {
            m_shown = addStructure("1abc");
            addStructure("2abc");
            addEmpty("map", "Grid");
        }
        if (state != State::NothingSelected)
            Space::instance()->SetSelected(true);
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        if (state != State::EmptySpace && state != State::EmptyTree)
            clickEntry(*m_window, 0);
    }

    void invokeAndAnswer(const Slot& slot, State state, Answer answer) {
        m_asked = false;
        m_destroyed = false;
        QTimer timer;
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            m_asked = true;
            if (state == State::Destroyed)
                m_destroyed = destroyPolitely(m_shown);
            answerDialog(*dialog, answer);
        });
        timer.start(0);
        QVERIFY(invoke(*m_window, slot.signature, slot.button));
    }

    void check(const Slot& slot, State state, Answer answer) {
        prepare(state);
        const bool tree = !rows(*m_window).isEmpty();
        const bool canAct = slot.needs == Needs::Nothing ||
                            (slot.needs == Needs::Tree ? tree : state != State::EmptySpace);
        const bool refused = state == State::Refused;
        // The colour is asked for before the tree is looked at.
        const bool asks = slot.asks == Asks::First
                              ? canAct || is(slot, "SelectedColor()")
                              : slot.asks == Asks::InGuard && canAct && !refused;
        const bool goesOn =
            !asks || answer == Answer::Accept || (answer == Answer::Odd && !slot.oddIsCancel);
        const bool destroyed = state == State::Destroyed && slot.asks == Asks::First;
        const bool acts = canAct && goesOn && (!destroyed || slot.needs == Needs::Nothing);
        const qsizetype residues = tree ? selectedResidues() : 0;
        const QStringList before = data();

        {
            std::optional<memory_host::SpaceLock> lock;
            if (refused)
                lock.emplace();
            invokeAndAnswer(slot, state, answer);
        }

        QCOMPARE(m_asked, asks);
        QCOMPARE(m_destroyed, destroyed);
        QStringList messages;
        if (slot.line)
            messages << QString::fromLatin1(slot.line);
        if (destroyed)
            messages << QStringLiteral("Vuxo::commDelete(): Did somebody killed my data?");
        if (refused && acts && slot.guard == Guard::Said)
            messages << QStringLiteral("Cannot update CDB!");
        QCOMPARE(takeMessages(), messages);

        QString line;
        qsizetype lines = 0;
        if (slot.sendsTo) {
            line = QStringLiteral("Plug-in %1 is not loaded ").arg(slot.sendsTo);
            lines = !acts ? 0 : is(slot, "SelectedRotamers()") ? residues : 1;
        } else if (is(slot, "MakeSet()")) {
            line = QStringLiteral("Defined set '");
            lines = acts && !refused ? 1 : 0;
        } else if (is(slot, "help()")) {
            line = QStringLiteral("Help page "); // there is no setting that names one
            lines = 1;
        }
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), lines);
        for (const QString& each : log)
            QVERIFY2(each.startsWith(line), qPrintable(each));

        if (!destroyed && (!acts || refused || slot.guard == Guard::None))
            QCOMPARE(data(), before);
        if (!slot.refreshes)
            m_window->commUpdate();
        QCOMPARE(windowFaults(*m_window), QStringList());
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        const DataPoint<Space> guard(nullptr, Space::instance());
        QVERIFY(guard.m_good);
    }

    qsizetype selectedResidues() const {
        std::vector<Compound*> residues;
        TAVIK::GetResidues(m_shown, residues, false);
        return qsizetype(residues.size());
    }

private slots:
    void cleanup() override {
        m_window.reset();
        m_shown = nullptr;
        TestCase::cleanup();
    }

    void theTableNamesEverySlot() {
        const QStringList all = allSlots();
        QCOMPARE(all.size(), 52);
        QStringList named;
        for (const Slot& slot : slotTable)
            named << QString::fromLatin1(slot.signature);
        named.removeDuplicates();
        QCOMPARE(named, all);
    }

    void windowAndDataStayInStep_data() {
        QTest::addColumn<int>("slot");
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("answer");
        for (int i = 0; i < int(std::size(slotTable)); ++i) {
            const Slot& slot = slotTable[i];
            for (const auto& [state, stateName] : states) {
                if (state == State::Destroyed && slot.asks == Asks::No)
                    continue;
                for (const auto& [answer, answerName] : answers)
                    if (answer == Answer::Accept || slot.asks != Asks::No)
                        QTest::addRow("%s %d, %s, %s", slot.signature, slot.button, stateName,
                                      answerName)
                            << i << int(state) << int(answer);
            }
        }
    }

    void windowAndDataStayInStep() {
        QFETCH(int, slot);
        QFETCH(int, state);
        QFETCH(int, answer);
        check(slotTable[slot], State(state), Answer(answer));
    }
};

REGISTER_TEST(AllSlotsTest)
#include "AllSlotsTest.moc"
