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
using plain::Asks;
using plain::Guard;
using plain::Needs;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

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

    void invokeAndAnswer(const Call& slot, State state, Answer answer) {
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
        QVERIFY(invoke(*m_window, slot.slot, slot.button));
    }

    void check(const Call& slot, State state, Answer answer) {
        prepare(state);
        const bool tree = !rows(*m_window).isEmpty();
        const bool canAct = slot.needs == Needs::Nothing ||
                            (slot.needs == Needs::ShownItem ? tree : state != State::EmptySpace);
        const bool refused = state == State::Refused;
        // The colour is asked for before the tree is looked at.
        const bool asks = slot.asks == Asks::First
                              ? canAct || slot.is("SelectedColor()")
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
        if (refused && acts && slot.guard == Guard::Reported)
            messages << QStringLiteral("Cannot update CDB!");
        QCOMPARE(takeMessages(), messages);

        QString line;
        qsizetype lines = 0;
        if (slot.sendsTo) {
            line = QStringLiteral("Plug-in %1 is not loaded ").arg(slot.sendsTo);
            lines = !acts ? 0 : slot.is("SelectedRotamers()") ? residues : 1;
        } else if (slot.is("MakeSet()")) {
            line = QStringLiteral("Defined set '");
            lines = acts && !refused ? 1 : 0;
        } else if (slot.is("help()")) {
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
        QStringList named;
        for (const Call& slot : allCalls())
            named << QString::fromLatin1(slot.slot);
        named.removeDuplicates();
        QCOMPARE(named, allSlots());
    }

    void windowAndDataStayInStep_data() {
        QTest::addColumn<int>("slot");
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("answer");
        const std::vector<Call> calls = allCalls();
        for (std::size_t i = 0; i != calls.size(); ++i)
            for (const auto& [state, stateName] : states) {
                if (state == State::Destroyed && calls[i].asks == Asks::No)
                    continue;
                for (const auto& [answer, answerName] : answers)
                    if (answer == Answer::Accept || calls[i].asks != Asks::No)
                        QTest::addRow("%s, %s, %s", nameOf(calls[i]).constData(), stateName,
                                      answerName)
                            << int(i) << int(state) << int(answer);
            }
    }

    void windowAndDataStayInStep() {
        QFETCH(int, slot);
        QFETCH(int, state);
        QFETCH(int, answer);
        check(allCalls()[std::size_t(slot)], State(state), Answer(answer));
    }
};

REGISTER_TEST(AllSlotsTest)
#include "AllSlotsTest.moc"
