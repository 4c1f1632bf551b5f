// Every slot of the window while memory runs out: each allocation that the project's own code makes
// during it is refused once, alone and together with all that follow. After each, the change was
// made as a whole or not at all, nothing is left open, window and data agree, the log names the
// command, and the same command works. (FailingMemory::Of::OwnCode says why the toolkit's own
// allocations are left alone.)
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "FailingMemory.h"
#include "Kinds.h"
#include "SlotTools.h"
#include "Space.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <QFrame>
#include <QLineEdit>

#include <limits>
#include <memory>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

QString shortName(const Call& call) {
    return QString::fromLatin1(call.slot).section(u'(', 0, 0);
}

/// Slots that change no data, or here only tell plug-ins that are not there.
bool changesNothing(const Call& call) {
    return call.guard == plain::Guard::None;
}

// Names and types that no string holds without memory.
const std::string longName = "a name that does not fit into a string";

/// A structure with something in it for every command to do.
Compound* fillSpace() {
    const auto at = [](float x) { return TAVIK::Vertex(x, 0.0F, 0.0F, true); };
    Compound* entry =
        addChain("entry", {{"MET 1",
                            {{"N", "N", at(0.0F)},
                             {"CA", "C", at(1.0F), 1, 20.0F},
                             {"CA", "C", at(1.5F), 2, 30.0F},
                             {longName, "H", at(2.0F)},
                             {"CB", longName + ", an element", at(3.0F)},
                             {"HB", "H", at(4.0F)}}},
                           {longName,
                            {{"N", "N", at(5.0F)},
                             {"H", "H", at(6.0F)},
                             {"CA", longName + ", an element", at(7.0F)},
                             {"C", "C", at(20.0F)},
                             {"H2", "H", at(21.0F)}}},
                           {"GLY 3", {{"N", "N", at(7.0F)}, {longName, "C", at(30.0F), 0, 50.0F}}},
                           {"HOH 4", {{"O", "O", at(9.0F)}}}});
    addLine(longName, {0.5F, 1.5F, 50.0F});
    {
        const DataAdder<Compound> guard(nullptr, entry);
        TAVIK::DataMaker::makeCore(entry, longName, "Surface");
        Compound* chain = TAVIK::DataMaker::makeCore(entry, "B", "Molecule");
        Compound* residue = TAVIK::DataMaker::makeCore(chain, "LYS 7", "Residue");
        memory_host::addAtom(residue, {"NZ", "N", at(40.0F), 10.0F, 0});
        TAVIK::DataMaker::makeGrid(entry, longName,
                                   {{9, 9, 9},
                                    {},
                                    {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}},
                                    std::vector<float>(9 * 9 * 9)});
    }
    const DataPoint<Compound> guard(nullptr, entry);
    Compound* groups = itemAt(entry, {"A", "Groups"});
    Compound* const* residues = groups->ChildBegin();
    for (int i = 0; i != 3; ++i)
        residues[i]->SetColor(Color(QColor(10 * i, 20, 30)));
    residues[0]->SetSelected(true);
    residues[2]->SetSelected(true);
    (*residues[1]->ChildBegin())->ChildBegin()[0]->SetSelected(true);
    for (Compound** child = entry->ChildBegin() + 1; child != entry->ChildEnd(); ++child)
        (*child)->SetSelected(true);
    residues[2]->SetVisible(false); // for "Show" to show
    residues[0]->NextModel();
    (*itemAt(entry, {"A", "Bonds"})->ChildBegin())->SetSelected(true);
    return entry;
}

QString text(const QString& what, const QStringList& lines) {
    return what + QLatin1String(":\n  ") + lines.join(QLatin1String("\n  "));
}

} // namespace

class AllocationFaultTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;
    int m_tried = 0;
    int m_madeGood = 0;
    int m_takenBack = 0;

    void prepare(const Call& call) {
        m_window.reset();
        TestCase::init();
        Compound* entry = fillSpace();
        if (call.is("KillClump()"))
            selectElsewhere(entry, true);
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        clickEntry(*m_window, call.button == Qt::LeftButton ? 1 : 0);
        panelOf(*m_window)->findChildren<QLineEdit*>().at(2)->setText("[CN].*");
        mark(call);
        takeMessages();
    }

    // The slot that takes the user's selection over needs one.
    void mark(const Call& call) {
        if (call.is("SelectionChanged()"))
            treeOf(*m_window)->firstChild()->firstChild()->setSelected(true);
    }

    // Some slots leave what they changed to the next refresh.
    void showAll(const Call& call) {
        if (!call.refreshes)
            m_window->commUpdate();
    }

    /// Which allocation fails during a slot, and how many then do.
    struct Failure {
        int granted = 0;
        int refuse = 0;
        int refused = 0; ///< in the end
    };

    /// Returns what the slot threw: nothing, or what an exception says of itself.
    QString run(const Call& call, Failure& failure) {
        QTimer timer;
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, [] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                pressEnter(*dialog);
        });
        timer.start(0);
        QString thrown;
        const FailingMemory memory(failure.granted, failure.refuse, 0, FailingMemory::Of::OwnCode);
        try {
            if (!invoke(*m_window, call.slot, call.button))
                thrown = QStringLiteral("no such slot");
        } catch (const std::exception& exception) {
            thrown = QString::fromLatin1(exception.what());
        }
        failure.refused = FailingMemory::refusals();
        return thrown;
    }
    QString run(const Call& call) {
        Failure none;
        return run(call, none);
    }

    /// What one run leaves behind.
    struct Outcome {
        QStringList data;
        QStringList log;
        QStringList messages;
    };

    /// Everything that must hold after a failure; empty when it does.
    QString faultsAfter(const Call& call, const Outcome& good, const QStringList& before,
                        const QString& thrown, const OtherPlugin& other) {
        const QString failed = "Structure Editor: " + shortName(call) + " failed: ";
        const QStringList all = takeHostLog();
        QStringList log = all;
        const qsizetype told = log.removeAll(failed + "std::bad_alloc");
        const qsizetype again =
            log.removeAll(failed + "the window could not be refreshed either: std::bad_alloc");
        log.removeIf([&](const QString& line) { return good.log.contains(line); });
        const bool takenBack = log.removeIf([](const QString& line) {
            return line.endsWith(": not done, as memory is short");
        }) != 0;
        if (takenBack && dataLines() != before)
            return "what was said not to be done was done";
        // The window is told of what was taken back as of any other's change.
        const bool isAsBefore = dataLines() == before;
        if (isAsBefore)
            log.removeAll("a subscriber failed to take in a change: not enough memory");
        if (!log.isEmpty())
            return text("lines in the log", log);
        // What does without, as the log does, makes good what was refused.
        const bool madeGood =
            told == 0 && thrown.isEmpty() && all == good.log && dataLines() == good.data;
        if (madeGood)
            ++m_madeGood;
        else if (takenBack && told == 0 && thrown.isEmpty())
            ++m_takenBack;
        else if (call.isStep ? thrown != QLatin1String("std::bad_alloc") || told != 0
                             : !thrown.isEmpty() || told != 1 || again > 1)
            return QStringLiteral("told %1 and %2 times, thrown '%3'")
                .arg(told)
                .arg(again)
                .arg(thrown);
        QStringList messages = takeMessages();
        messages.removeIf([&](const QString& line) { return good.messages.contains(line); });
        if (isAsBefore)
            messages.removeAll("Vuxo::commDelete(): Did somebody killed my data?");
        if (!messages.isEmpty())
            return text("messages", messages);
        if (!changesAreGranted())
            return "a guard is still open";
        for (const std::string& fault : memory_host::checkInvariants())
            return QString::fromStdString(fault);
        const QStringList now = dataLines();
        if (now != before && now != good.data)
            return text("half a change", now) + text("\nbefore", before);
        if (now != before && other.updates + other.adds + other.deletes == 0)
            return "a change that nobody was told of";
        showAll(call);
        if (const QStringList faults = windowFaults(*m_window); !faults.isEmpty())
            return text("the window", faults);

        // And once more, with memory.
        if (!treeOf(*m_window)->firstChild())
            clickEntry(*m_window, 0);
        mark(call);
        takeMessages();
        if (const QString thrownNow = run(call); !thrownNow.isEmpty())
            return "thrown by the next: " + thrownNow;
        if (now == before && dataLines() != good.data)
            return text("the next made something else", dataLines()) +
                   text("\ninstead of", good.data);
        showAll(call);
        if (const QStringList faults = windowFaults(*m_window); !faults.isEmpty())
            return text("the window after the next", faults);
        log = takeHostLog().filter(QStringLiteral("failed"));
        return log.isEmpty() ? QString() : text("failures of the next", log);
    }

    void failAtEachAllocation(const Call& call, int refuse) {
        prepare(call);
        const QStringList before = dataLines();
        QCOMPARE(run(call), QString());
        const Outcome good{dataLines(), takeHostLog(), takeMessages()};
        QCOMPARE(good.data == before, changesNothing(call));
        showAll(call);
        QCOMPARE(windowFaults(*m_window), QStringList());
        for (int granted = 0;; ++granted) {
            prepare(call);
            OtherPlugin other;
            Failure failure{granted, refuse};
            const QString thrown = run(call, failure);
            if (failure.refused == 0) {
                m_tried += granted;
                QCOMPARE(dataLines(), good.data);
                QCOMPARE(takeHostLog(), good.log);
                takeMessages();
                break;
            }
            const QString faults = faultsAfter(call, good, before, thrown, other);
            QVERIFY2(faults.isEmpty(),
                     qPrintable(QStringLiteral("allocation %1: %2").arg(granted).arg(faults)));
        }
    }

private slots:
    void cleanup() override {
        m_window.reset();
        takeMessages();
        TestCase::cleanup();
    }

    void cleanupTestCase() {
        std::printf("INFO   : %d allocations were refused; %d of them did not matter, and for %d "
                    "all was taken back\n",
                    m_tried, m_madeGood, m_takenBack);
    }

    void everySlotSurvivesEveryRefusal_data() {
        QTest::addColumn<int>("call");
        QTest::addColumn<int>("refuse");
        const std::vector<Call> calls = allCalls();
        for (std::size_t i = 0; i != calls.size(); ++i) {
            const QByteArray name = nameOf(calls[i]);
            QTest::addRow("%s, one", name.constData()) << int(i) << 1;
            QTest::addRow("%s, all that follow", name.constData())
                << int(i) << std::numeric_limits<int>::max();
        }
    }

    void everySlotSurvivesEveryRefusal() {
        QFETCH(int, call);
        QFETCH(int, refuse);
        failAtEachAllocation(allCalls()[std::size_t(call)], refuse);
    }
};

REGISTER_TEST(AllocationFaultTest)
#include "AllocationFaultTest.moc"
