// Steps when memory runs out, and how much memory they take.
#include "ContractTools.h"
#include "DataLines.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "Geometry.h"
#include "History.h"
#include "ManyAtoms.h"
#include "TestSupport.h"
#include "history/Steps.h"
#include "items/Building.h"
#include "items/MapCrystal.h"

#include <limits>
#include <tuple>
#include <vector>

using namespace contract;
using namespace TAVIK;
using namespace memory_host;
using test_support::dataLines;
using test_support::firstDifference;

namespace {

constexpr int all = std::numeric_limits<int>::max();

// An entry of everything, and a command that does everything to it.
struct Everything {
    Chain chain{3};
    Compound* first = atom(chain.groups[0], 1, "A", 1);
    Compound* second = atom(chain.groups[0], 2, "A", 2);
    Compound* set = DataMaker::makeSet(space(), "set", {chain.residues[0], chain.atoms[5]});
    Surface* surface = DataMaker::makeSurface(space(), "surface",
                                              {{{0, 0, 0}}, {{1, 0, 0}}, {}, {}, {}, {}, {}, {}});
    Grid* grid = DataMaker::makeGrid(
        space(), "grid",
        {{2, 2, 2}, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, std::vector<float>(8, 1)});

    void change() const {
        const DataPointBase guard(nullptr, Publisher::Update, "Everything");
        if (!guard.m_good)
            return;
        chain.molecule->SetSelected(true);
        chain.atoms[1]->SetSelected(false);
        SelectAtoms(std::vector<Compound*>{chain.atoms[2], chain.atoms[3]}, false);
        chain.residues[1]->SetVisible(false);
        chain.residues[0]->SetColor(Color(5));
        dynamic_cast<Residue*>(chain.residues[0])->NextModel();
        SetAtomPosition(dynamic_cast<Atom*>(chain.atoms[0]), Vertex(7, 8, 9, true));
        SetAtomModel(dynamic_cast<Atom*>(chain.atoms[0]), 3);
        SetSurfaceColors(surface, {7});
        SetSurfaceMesh(surface, {});
        grid->m_lower[1] = 1;
        setGrid(grid, {{1, 1, 3}, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 2}}}, {4, 5, 6}});
        grid->m_upper[2] = 2;
        Compound* const made = make(space(), "Composite");
        DataMaker::makeBond(made, atom(made), chain.atoms[0]);
        DataMaker::Destroy(second);
        DataMaker::Destroy(chain.residues[0]);
        DataMaker::Destroy(chain.atoms[5]);
        DataMaker::Destroy(set);
    }
};

} // namespace

class HistoryFaultTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override {
        setHistoryBytes(defaultHistoryBytes);
        takeHostLog();
        takeMessages();
        TestCase::cleanup();
    }

    void aChangeIsMadeAsAWholeOrNotAtAll_data() {
        QTest::addColumn<int>("refuse");
        QTest::addRow("one") << 1;
        QTest::addRow("all that follow") << all;
    }
    void aChangeIsMadeAsAWholeOrNotAtAll() {
        QFETCH(const int, refuse);
        int failures = 0;
        for (int granted = 0;; ++granted) {
            const Everything everything;
            const QStringList before = dataLines();
            bool threw = false;
            int refused = 0;
            {
                const FailingMemory memory(granted, refuse, 0, FailingMemory::Of::OwnCode);
                try {
                    everything.change();
                } catch (const std::bad_alloc&) {
                    threw = true;
                }
                refused = FailingMemory::refusals();
            }
            const QStringList after = dataLines();
            QCOMPARE(faults(), QString());
            if (History::undoable().empty()) {
                QCOMPARE(firstDifference(after, before), QString());
                QVERIFY(refused > 0);
                ++failures;
            } else {
                QVERIFY(!threw && after != before);
                QVERIFY(History::undo());
                QCOMPARE(firstDifference(dataLines(), before), QString());
                QVERIFY(History::redo());
                QCOMPARE(firstDifference(dataLines(), after), QString());
            }
            QCOMPARE(faults(), QString());
            DataMaker::Destroy(everything.chain.molecule);
            if (refused == 0)
                break;
        }
        QVERIFY2(failures >= 15, qPrintable(QString::number(failures)));
        takeMessages();
    }

    // Taking back needs no memory, so that nothing can be half taken back.
    void stepsAreTakenBackWithoutMemory() {
        const Everything everything;
        const QStringList before = dataLines();
        everything.change();
        const QStringList after = dataLines();
        {
            const FailingMemory memory(0, all, 0, FailingMemory::Of::OwnCode);
            QVERIFY(History::undo());
        }
        QCOMPARE(firstDifference(dataLines(), before), QString());
        {
            const FailingMemory memory(0, all, 0, FailingMemory::Of::OwnCode);
            QVERIFY(History::redo());
        }
        QCOMPARE(firstDifference(dataLines(), after), QString());
        {
            const FailingMemory memory(0, all, 0, FailingMemory::Of::OwnCode);
            forgetHistory();
        }
        QCOMPARE(firstDifference(dataLines(), after), QString());
        QCOMPARE(faults(), QString());
    }

    void theOldestStepsGoFirst() {
        const Chain chain(1);
        for (int i = 0; i != 100; ++i) {
            const DataPointBase guard(nullptr, Publisher::Update, std::to_string(i));
            chain.atoms[0]->ToggleSelected();
        }
        QCOMPARE(History::undoable().size(), std::size_t{100});
        const std::size_t bytes = historyBytes();
        setHistoryBytes(bytes / 2);
        QVERIFY(historyBytes() <= bytes / 2);
        const auto steps = History::undoable();
        QVERIFY(steps.size() > 40 && steps.size() <= 50);
        QCOMPARE(steps.front().label, std::string("99"));
        setHistoryBytes(0);
        QVERIFY(History::undoable().empty());
        QCOMPARE(historyBytes(), std::size_t{0});
        {
            const DataPointBase guard(nullptr, Publisher::Update, "more");
            chain.atoms[0]->ToggleSelected();
        }
        QVERIFY(History::undoable().empty());
    }

    void whatIsForgottenIsFreedWhileTheProgramIsIdle() {
        const auto change = [](const auto& what) {
            const DataPointBase guard(nullptr, Publisher::Add, "change");
            what();
        };
        change([] { const Chain chain(10'000); });
        QVERIFY(History::undo());
        QVERIFY(historyBytes() > 4'000'000);
        QCOMPARE(forgottenBytes(), std::size_t{0});
        change([] { make(space(), "Composite"); });
        QVERIFY(historyBytes() < 10'000);
        const std::size_t forgotten = forgottenBytes();
        QVERIFY(forgotten > 4'000'000);
        QCoreApplication::processEvents(); // Some of it.
        QCOMPARE(forgottenBytes(), forgotten);
        QTRY_COMPARE(forgottenBytes(), std::size_t{0});
        QCOMPARE(faults(), QString());
    }

    // What waits to be freed never takes more than the steps may.
    void muchThatIsForgottenIsFreedAtOnce() {
        const auto isAbout = [](std::size_t value, std::size_t wanted) {
            return value >= wanted / 10 * 9 && value <= wanted / 10 * 11;
        };
        const auto makeAndUndo = [] {
            {
                const DataPointBase guard(nullptr, Publisher::Add, "change");
                const Chain chain(1'000);
            }
            QVERIFY(History::undo());
        };
        makeAndUndo();
        makeAndUndo();
        const std::size_t bytes = historyBytes();
        setHistoryBytes(0);
        setHistoryBytes(bytes * 5 / 2);
        for (int i = 0; i != 4; ++i) {
            makeAndUndo();
            // A step's size depends on the addresses of the items, but only a little.
            QVERIFY(isAbout(historyBytes(), bytes));
            QVERIFY(isAbout(forgottenBytes(), i < 3 ? bytes * static_cast<std::size_t>(i) : 0));
        }
        setHistoryBytes(bytes / 2);
        QCOMPARE(historyBytes(), std::size_t{0});
        QCOMPARE(forgottenBytes(), std::size_t{0});
    }

    void theMemoryForStepsIsASetting() {
        const Chain chain(1);
        const auto change = [&] {
            const DataPointBase guard(nullptr, Publisher::Update, "change");
            chain.atoms[0]->ToggleSelected();
        };
        host_under_test::setOnlySetting("History", "Megabytes", "0");
        readHistorySetting();
        change();
        QVERIFY(History::undoable().empty());
        host_under_test::setOnlySetting("History", "Megabytes", "1");
        readHistorySetting();
        change();
        QCOMPARE(History::undoable().size(), std::size_t{1});
        for (const char* wrong : {"-1", "much", "", "1.5", "99999999999"}) {
            takeHostLog();
            host_under_test::setOnlySetting("History", "Megabytes", wrong);
            readHistorySetting();
            QCOMPARE(takeHostLog(),
                     QStringList(QStringLiteral("The setting Megabytes of History is no number of "
                                                "megabytes: ") +
                                 QLatin1String(wrong)));
            QCOMPARE(History::undoable().size(), std::size_t{1});
        }
        host_under_test::setOnlySetting("Other", "Key", "");
        readHistorySetting();
        QCOMPARE(History::undoable().size(), std::size_t{1});
    }

    void whatADeletionKeepsIsCounted() {
        const Chain chain(1000);
        const std::size_t before = historyBytes();
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            DataMaker::Destroy(chain.molecule);
        }
        const std::size_t atoms = 4000;
        const std::size_t kept = historyBytes() - before;
        QVERIFY2(kept > atoms * 100 && kept < atoms * 400, qPrintable(QString::number(kept)));
        QVERIFY(History::undo());
        QVERIFY2(historyBytes() - before < 2000, qPrintable(QString::number(historyBytes())));
    }

    void whatIsLargeIsCountedHoweverDeepItStands() {
        const Chain chain(100);
        constexpr std::size_t points = 100'000;
        DataMaker::makePolyLine(chain.groups[50], "line", std::vector<Vertex>(points));
        const std::size_t before = historyBytes();
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            DataMaker::Destroy(chain.molecule);
        }
        QVERIFY(historyBytes() - before > points * sizeof(Vertex));
        QVERIFY(History::undo());
        QVERIFY2(historyBytes() - before < 2000, qPrintable(QString::number(historyBytes())));
        QCOMPARE(faults(), QString());
    }

    void otherValuesOfAGridAreTakenBack() {
        const Everything everything;
        Grid* const grid = everything.grid;
        const auto change = [](const auto& write) {
            const DataPointBase guard(nullptr, Publisher::Update, "Grid");
            write();
        };
        setCrystal(grid, {{2, 2, 2}, 19});
        change([&] { grid->m_upper[1] = 1; });
        const auto look = [&] {
            return std::tuple(*GetGridValues(grid), crystalOf(grid), grid->m_points[2],
                              std::vector<int>(grid->m_lower, grid->m_lower + 3),
                              std::vector<int>(grid->m_upper, grid->m_upper + 3));
        };
        const auto before = look();
        change([&] {
            grid->m_lower[0] = 1;
            setGrid(grid, {{1, 1, 3}, {1, 2, 3}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 2}}}, {4, 5, 6}});
            setCrystal(grid, {{1, 1, 3}, 1});
            grid->m_upper[2] = 2;
        });
        const auto after = look();
        QVERIFY(after != before);
        for (int i = 0; i != 2; ++i) {
            QVERIFY(History::undo());
            QVERIFY(look() == before);
            QVERIFY(History::redo());
            QVERIFY(look() == after);
        }
        // Without a guard, what was before cannot come back.
        setGrid(grid, {});
        QVERIFY(History::undoable().empty() && History::redoable().empty());
        QCOMPARE(faults(), QString());
    }

    void aDeletionThatIsTooLargeIsSaidNotToBeUndone() {
        const Chain chain(1000);
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Hide");
            chain.molecule->SetVisible(false);
        }
        setHistoryBytes(100'000);
        takeHostLog();
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            for (Compound* residue : chain.residues)
                DataMaker::Destroy(residue);
        }
        QCOMPARE(takeHostLog().filter("cannot be undone").size(), 1);
        QVERIFY(childrenOf(chain.molecule).empty() || !chain.molecule->HasChildren());
        QVERIFY(History::undoable().empty());
        QCOMPARE(faults(), QString());
        // What comes next can be taken back again.
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Colour");
            chain.molecule->SetColor(Color(1));
        }
        QCOMPARE(History::undoable().size(), std::size_t{1});
    }

    void whatIsTooLargeToBeDoneAgainLeavesTheStepsBefore() {
        const Chain chain(1);
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Hide");
            chain.molecule->SetVisible(false);
        }
        {
            const DataPointBase guard(nullptr, Publisher::Add, "Add");
            DataMaker::makePolyLine(space(), "line", std::vector<Vertex>(10'000));
        }
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Colour");
            chain.molecule->SetColor(Color(1));
        }
        setHistoryBytes(50'000);
        QVERIFY(History::undo(2));
        QVERIFY(History::redoable().empty());
        QCOMPARE(History::undoable().size(), std::size_t{1});
        QVERIFY(History::undo());
        QVERIFY(chain.molecule->IsVisible());
        QCOMPARE(faults(), QString());
    }

    void aGuardWithoutMemoryForAStepIsTakenBackToo() {
        const Chain chain(1);
        const QStringList before = dataLines();
        bool threw = false;
        try {
            const FailingMemory memory(0, all, 0, FailingMemory::Of::OwnCode);
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            DataMaker::Destroy(chain.molecule);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        QVERIFY(threw);
        QCOMPARE(firstDifference(dataLines(), before), QString());
    }
};

REGISTER_TEST(HistoryFaultTest)
#include "HistoryFaultTest.moc"
