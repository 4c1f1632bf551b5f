// Mapping that ends early, or while others change the data: all of it is done, or nothing.
#include "CommandCase.h"
#include "DataPoint.h"
#include "FailingMemory.h"
#include "Mapping.h"
#include "Progress.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

using namespace command_case;
using electrostatics::mapOntoSurface;
using namespace std::chrono_literals;

namespace {

/// A fan of so many vertices around an axis.
SurfaceMesh fan(std::size_t count) {
    SurfaceMesh mesh;
    for (std::size_t i = 0; i != count; ++i) {
        const float angle = 6.28F * static_cast<float>(i) / static_cast<float>(count);
        mesh.vertices.push_back({4 + 3 * std::cos(angle), 4 + 3 * std::sin(angle), 4});
        mesh.normals.push_back({0, 0, 1});
        if (i >= 2)
            mesh.triangles.push_back({0, std::uint32_t(i - 1), std::uint32_t(i)});
    }
    return mesh;
}

Surface* addFan(std::size_t count) {
    return TAVIK::DataMaker::makeSurface(space(), "fan", fan(count));
}

Grid* addMap() {
    return addGrid("pot", {9, 9, 9}, [](int x, int y, int z) { return float(x + y - z); });
}

/// So much work that it lasts until somebody ends it.
void addCrowd() {
    Compound* const entry = addEntry("crowd", "NA 1", {{"NA", "Na", {4, 4, 4}}});
    for (int i = 0; i != 20'000; ++i)
        addResidue(entry, "CL 2",
                   {{"CL", "Cl", {float(i % 30) / 4, float(i / 30 % 30) / 4, float(i / 900) / 4}}});
}

QDialog* progressWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowTitle().contains(" on fan"))
            return qobject_cast<QDialog*>(widget);
    return nullptr;
}

const SurfaceMesh& meshOf(const Surface* surface) {
    return *TAVIK::GetSurfaceMesh(surface);
}

} // namespace

class MappingFaultsTest : public CommandCase {
    Q_OBJECT

    /// Calls `act` on the GUI thread while the mapping works, before it is done.
    QStringList during(const std::function<void()>& act) {
        QTimer::singleShot(0, this, act);
        return command(mapOntoSurface);
    }

private slots:
    void aCancelledMappingChangesNothing() {
        addCrowd();
        Surface* const surface = addFan(3'000'000);
        const SurfaceMesh before = meshOf(surface);
        QTimer timer;
        connect(&timer, &QTimer::timeout, [] {
            if (QDialog* const window = progressWindow())
                window->reject();
        });
        timer.start(5);
        refuses(mapOntoSurface, "Nothing is mapped: cancelled");
        QVERIFY(meshOf(surface) == before);
    }

    void anotherChangeRefusesIt() {
        Surface* const surface = addFan(10);
        const SurfaceMesh before = meshOf(surface);
        addMap();
        const QString line = "Nothing is mapped: another change of the data is under way";
        {
            const memory_host::SpaceLock lock;
            refuses(mapOntoSurface, line);
        }
        {
            const DataPoint<Surface> guard(nullptr, surface);
            refuses(mapOntoSurface, line);
        }
        QVERIFY(meshOf(surface) == before);
        QCOMPARE(command(mapOntoSurface).size(), 1);
        QVERIFY(!meshOf(surface).values.empty());
    }

    void anotherWorkRefusesIt() {
        Surface* const surface = addFan(10);
        addMap();
        std::atomic<bool> hasTried = false;
        QStringList said;
        QTimer::singleShot(0, this, [&] {
            said = command(mapOntoSurface);
            hasTried = true;
        });
        QVERIFY(Progress::Run("Other", [&](ProgressReporter&, std::stop_token) {
            while (!hasTried)
                std::this_thread::sleep_for(1ms);
        }));
        QCOMPARE(said, QStringList("Nothing is mapped: another work is in progress"));
        QVERIFY(meshOf(surface).values.empty());
    }

    void whoDeletesTheSurfaceMeanwhileLeavesNothing() {
        addMap();
        Surface* const surface = addFan(200'000);
        bool isGone = false;
        QCOMPARE(during([&] {
                     TAVIK::DataMaker::Destroy(surface);
                     isGone = true;
                 }),
                 QStringList("Nothing is mapped: the surface has changed meanwhile"));
        QVERIFY(isGone);
        QVERIFY(surfaces().empty());
        QVERIFY(memory_host::checkInvariants().empty());
    }

    void whoDeletesWhatHoldsTheSurfaceLikewise() {
        addMap();
        Compound* const holder = TAVIK::DataMaker::makeCore(space(), "holder", "Composite");
        TAVIK::DataMaker::makeSurface(holder, "fan", fan(200'000));
        QCOMPARE(during([&] { TAVIK::DataMaker::Destroy(holder); }),
                 QStringList("Nothing is mapped: the surface has changed meanwhile"));
        QCOMPARE(space()->ChildEnd() - space()->ChildBegin(), 1);
    }

    void aSurfaceWithAnotherShapeKeepsIt() {
        addMap();
        Surface* const surface = addFan(200'000);
        const SurfaceMesh other = fan(7);
        QCOMPARE(during([&] { QVERIFY(TAVIK::SetSurfaceMesh(surface, other)); }),
                 QStringList("Nothing is mapped: the surface has changed meanwhile"));
        QVERIFY(meshOf(surface) == other);
    }

    void guardsOfOthersAreRefusedMeanwhile() {
        addMap();
        Surface* const surface = addFan(200'000);
        bool wasGood = true;
        const QStringList said =
            during([&] { wasGood = DataPoint<Surface>(nullptr, surface).m_good; });
        QVERIFY(!wasGood);
        QVERIFY(said.value(0).startsWith("Values of pot on fan: "));
    }

    void memoryThatEndsIsSaid_data() {
        QTest::addColumn<bool>("hasMap");
        QTest::newRow("a map") << true;
        QTest::newRow("charges") << false;
    }
    void memoryThatEndsIsSaid() {
        QFETCH(bool, hasMap);
        Surface* const surface = addFan(100);
        Compound* const entry = addEntry("ions", "NA 1", {{"NA", "Na", {4, 4, 0}}});
        for (int i = 0; i != 20; ++i)
            addResidue(entry, "CL 2", {{"CL", "Cl", {float(i), 0, 0}}});
        if (hasMap)
            addMap();
        const SurfaceMesh before = meshOf(surface);
        int failed = 0;
        int refusals = 1;
        for (int granted = 0; refusals > 0; ++granted) {
            const QStringList said = command([&] {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                mapOntoSurface();
                refusals = FailingMemory::refusals();
            });
            QVERIFY(memory_host::checkInvariants().empty());
            if (meshOf(surface) == before) {
                QCOMPARE(said, QStringList("Nothing is mapped: there is not enough memory"));
                ++failed;
                continue;
            }
            QCOMPARE(meshOf(surface).values.size(), std::size_t(100));
            QCOMPARE(meshOf(surface).colors.size(), std::size_t(100));
            QVERIFY(meshOf(surface).scale.has_value());
            QVERIFY(said.filter("Nothing is mapped").isEmpty());
            QVERIFY(TAVIK::SetSurfaceMesh(surface, before));
        }
        QVERIFY2(failed > 5, qPrintable(QString::number(failed)));
    }
};

REGISTER_TEST(MappingFaultsTest)
#include "MappingFaultsTest.moc"
