// Surfaces that are not made: cancelled, refused, without memory; and who meddles meanwhile.
#include "CommandCase.h"
#include "Contours.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "FailingMemory.h"
#include "NewSurfaces.h"
#include "Progress.h"
#include "SubSurface.h"
#include "SurfaceChecks.h"
#include "Surfaces.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"

#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

using namespace command_case;
using solid::SurfaceKind;
using namespace std::chrono_literals;

namespace {

const QString title = QStringLiteral("Solvent-excluded surface");
const QString why = title + ": nothing is made: ";

void excluded() {
    solid::addAtomSurfaces(SurfaceKind::Excluded);
}

void endless() {
    solid::makeOrSay(title, [] {
        return solid::addSurfaces(title, [](ProgressReporter&, const solid::ForEach& forEach) {
            for (;;)
                forEach(1000, [](std::size_t) { std::this_thread::sleep_for(1ms); });
            return std::vector<solid::NewSurface>();
        });
    });
}

/// Atoms 3 Å apart in a cube of `side` along each edge.
Compound* addCube(int side) {
    std::vector<AtomSpec> atoms;
    for (int z = 0; z != side; ++z)
        for (int y = 0; y != side; ++y)
            for (int x = 0; x != side; ++x)
                atoms.push_back({"C", "C", {float(x) * 3, float(y) * 3, float(z) * 3}});
    return addEntry("cube", "UNL 1", atoms);
}

/// A surface whose values are its x.
void addValues() {
    addCopper();
    excluded();
    SurfaceMesh mesh = *TAVIK::GetSurfaceMesh(surfaces().back());
    for (const auto& vertex : mesh.vertices)
        mesh.values.push_back(vertex[0]);
    TAVIK::SetSurfaceMesh(surfaces().back(), mesh);
}

QDialog* progressWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowTitle() == title)
            return qobject_cast<QDialog*>(widget);
    return nullptr;
}

/// All that is at the top level, and their meshes.
struct State {
    std::vector<Compound*> items{space()->ChildBegin(), space()->ChildEnd()};
    std::vector<SurfaceMesh> meshes = [] {
        std::vector<SurfaceMesh> all;
        for (const Surface* surface : surfaces())
            all.push_back(*TAVIK::GetSurfaceMesh(surface));
        return all;
    }();

    bool operator==(const State&) const = default;
};

} // namespace

class CommandFaultsTest : public CommandCase {
    Q_OBJECT

    /// Runs each command with memory that ends at each of the places that it is asked for.
    void endMemory(std::size_t smallest, FailingMemory::Of of, const std::function<void()>& run,
                   int least) {
        const State before;
        int failed = 0;
        int refusals = 1;
        for (int granted = 0; refusals > 0; granted += 1 + granted / 50) {
            const QStringList said = command([&] {
                const FailingMemory memory(granted, 1, smallest, of);
                run();
                refusals = FailingMemory::refusals();
            });
            QVERIFY(memory_host::checkInvariants().empty());
            const std::size_t count = surfaces().size();
            if (count == before.meshes.size()) {
                QVERIFY(State() == before);
                QCOMPARE(said.size(), 1);
                QVERIFY2(said[0].endsWith(": nothing is made: there is not enough memory"),
                         qPrintable(said[0]));
                ++failed;
                continue;
            }
            QCOMPARE(count, before.meshes.size() + 1);
            QVERIFY(said.filter("nothing is made").isEmpty());
            TAVIK::DataMaker::Destroy(surfaces().back());
            QVERIFY(State() == before);
        }
        QVERIFY2(failed >= least, qPrintable(QString::number(failed)));
    }

private slots:
    void memoryThatEndsIsSaid_data() {
        QTest::addColumn<std::function<void()>>("run");
        const auto row = [](const char* name, const std::function<void()>& run) {
            QTest::newRow(name) << run;
        };
        row("excluded", excluded);
        row("Gaussian", [] { solid::addAtomSurfaces(SurfaceKind::Gaussian); });
        row("contour", [] { solid::addContour(-5, true); });
        row("part", [] { solid::addSubSurface(0); });
    }
    void memoryThatEndsIsSaid() {
        using Run = std::function<void()>;
        QFETCH(const Run, run);
        addValues();
        addDistances();
        // What this thread asks for, and then the large arrays of the others.
        endMemory(0, FailingMemory::Of::OwnCode, run, 3);
        endMemory(2000, FailingMemory::Of::Program, run, 3);
    }

    void whoCancelsGetsNothing_data() {
        QTest::addColumn<int>("after"); // milliseconds from when the window is there
        for (const int after : {0, 40, 150, 400})
            QTest::addRow("%d ms", after) << after;
    }
    void whoCancelsGetsNothing() {
        QFETCH(int, after);
        addCube(26);
        const State before;
        const auto isCancelled = [&](const std::function<void()>& run, QStringList& said) {
            QTimer timer;
            bool wasCancelled = false;
            connect(&timer, &QTimer::timeout, &timer, [&] {
                if (!progressWindow())
                    return;
                timer.stop();
                QTimer::singleShot(after, &timer, [&] {
                    if (QDialog* const window = progressWindow()) {
                        wasCancelled = true;
                        QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
                    }
                });
            });
            timer.start(5);
            said = command(run);
            return wasCancelled;
        };
        QStringList said;
        // A work without an end, and one that may end before.
        QVERIFY(isCancelled(endless, said));
        QCOMPARE(said, QStringList(why + "cancelled"));
        QVERIFY(State() == before);
        const bool wasCancelled = isCancelled(excluded, said);
        QCOMPARE(said.value(0) == why + "cancelled", wasCancelled);
        QCOMPARE(State() == before, wasCancelled);
        QCOMPARE(m_additions, wasCancelled ? 0 : 1);
        QVERIFY(!progressWindow());
        QVERIFY(DataPointBase(nullptr, Publisher::Update).m_good);
    }

    // Whoever wants to change the data meanwhile is refused, and so they are what was read.
    void nobodyChangesTheDataMeanwhile() {
        Compound* const entry = addCube(8);
        bool wasLocked = false;
        int good = 0;
        QTimer::singleShot(0, this, [&] {
            wasLocked = memory_host::isSpaceLocked();
            if (const DataDelete<TAVIK::Space> guard(nullptr, space()); guard.m_good) {
                ++good;
                TAVIK::DataMaker::Destroy(entry);
            }
            good += DataPoint<TAVIK::Space>(nullptr, space()).m_good;
            good += DataAdder<TAVIK::Space>(nullptr, space()).m_good;
        });
        const QStringList said = command(excluded);
        QVERIFY(wasLocked);
        QCOMPARE(good, 0);
        QVERIFY(said.value(0).endsWith("around 512 atoms"));
        QCOMPARE(surfaces().size(), std::size_t(1));
    }

    void theEntryMayGoAfterwards() {
        Compound* const entry = addCopper();
        command(excluded);
        const SurfaceMesh before = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        TAVIK::DataMaker::Destroy(entry);
        QVERIFY(*TAVIK::GetSurfaceMesh(surfaces()[0]) == before);
        TAVIK::DataMaker::Destroy(surfaces()[0]);
        QVERIFY(memory_host::checkInvariants().empty());
    }

    void anotherWorkInProgressIsSaid() {
        addCopper();
        const State before;
        std::atomic<bool> hasTried = false;
        QStringList said;
        QStringList log;
        QTimer::singleShot(0, this, [&] {
            said = command(excluded);
            log = m_labels;
            hasTried = true;
        });
        QVERIFY(Progress::Run("Something else", [&](ProgressReporter&, const std::stop_token&) {
            while (!hasTried)
                std::this_thread::sleep_for(1ms);
        }));
        QCOMPARE(said, QStringList(why + "another work is in progress"));
        QCOMPARE(log, QStringList("\"Solvent-excluded surface\" is refused: another work is in "
                                  "progress"));
        QVERIFY(State() == before);
    }

    void aRefusedChangeIsSaid() {
        addValues();
        addDistances();
        takeHostLog();
        const QString refusal = QStringLiteral("another change of the data is under way");
        m_additions = 0;
        const memory_host::SpaceLock lock;
        refuses(excluded, why + refusal);
        refuses([] { solid::addContour(-5, true); }, "High contour: nothing is made: " + refusal);
        refuses([] { solid::addSubSurface(0); }, "Part of a surface: nothing is made: " + refusal);
    }

    void belowAChangeOfTheCallerNothingIsMade() {
        addCopper();
        const State before;
        const DataPoint<TAVIK::Space> guard(nullptr, space());
        QCOMPARE(command(excluded), QStringList(why + "another change of the data is under way"));
        QVERIFY(State() == before);
    }

    void whatTheWorkThrowsIsSaid() {
        const auto make = [](const solid::Compute& compute) {
            return [compute] {
                solid::makeOrSay("Thing", [&] { return solid::addSurfaces("Thing", compute); });
            };
        };
        refuses(make([](ProgressReporter&, const solid::ForEach& forEach) {
                    forEach(100, [](std::size_t i) {
                        if (i == 50)
                            throw std::runtime_error("it is 50 Å");
                    });
                    return std::vector<solid::NewSurface>();
                }),
                "Thing: nothing is made: it is 50 Å");
        refuses(
            make([](ProgressReporter&, const solid::ForEach&) -> std::vector<solid::NewSurface> {
                throw std::length_error("too long");
            }),
            "Thing: nothing is made: too long");
    }

    // Of several surfaces all are made or none.
    void aMeshThatTheHostRefusesIsSaid() {
        const auto run = [] {
            solid::makeOrSay("Thing", [] {
                return solid::addSurfaces("Thing", [](ProgressReporter&, const solid::ForEach&) {
                    std::vector<solid::NewSurface> all(2);
                    all[0].name = "good";
                    all[0].mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
                    all[0].mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
                    all[0].mesh.triangles = {{0, 1, 2}};
                    all[1] = all[0];
                    all[1].name = "bad";
                    all[1].mesh.normals.clear();
                    return all;
                });
            });
        };
        addCopper();
        const State before;
        QCOMPARE(command(run), QStringList("Thing: nothing is made: the host refuses it"));
        QVERIFY(State() == before);
        QCOMPARE(takeMessages().size(), 1);
    }
};

REGISTER_TEST(CommandFaultsTest)
#include "CommandFaultsTest.moc"
