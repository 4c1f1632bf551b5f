// The commands that contour maps.
#include "CommandCase.h"
#include "Contours.h"
#include "SurfaceChecks.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

using namespace command_case;
using surface_checks::isWithin;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

std::function<void()> high(double level) {
    return [level] { solid::addContour(level, true); };
}
std::function<void()> low(double level) {
    return [level] { solid::addContour(level, false); };
}

double sphere(double radius) {
    return 4 * std::numbers::pi * radius * radius;
}
const SurfaceMesh& meshOf(std::size_t index) {
    return *TAVIK::GetSurfaceMesh(surfaces().at(index));
}
std::array<float, 2> extent(const SurfaceMesh& mesh, std::size_t axis) {
    std::array<float, 2> found = {1e9F, -1e9F};
    for (const auto& vertex : mesh.vertices) {
        found[0] = std::min(found[0], vertex[axis]);
        found[1] = std::max(found[1], vertex[axis]);
    }
    return found;
}
/// Whether the mesh is closed.
std::string problemWith(const SurfaceMesh& mesh) {
    solid::Mesh plain;
    plain.vertices = mesh.vertices;
    plain.normals = mesh.normals;
    plain.triangles = mesh.triangles;
    return surface_checks::problemWith(plain);
}
/// The share of vertices whose normals point away from a point.
double outwards(const SurfaceMesh& mesh, float centre) {
    std::size_t count = 0;
    for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
        float sum = 0;
        for (std::size_t axis = 0; axis != 3; ++axis)
            sum += (mesh.vertices[i][axis] - centre) * mesh.normals[i][axis];
        count += sum > 0;
    }
    return double(count) / double(mesh.vertices.size());
}

} // namespace

class MapContoursTest : public CommandCase {
    Q_OBJECT

    /// A slope of which each message names the spread: values 0 to 4, mean 2, sigma sqrt(2).
    static Grid* addSlope() {
        return addGrid("slope", {5, 4, 3}, [](int x, int, int) { return float(x); });
    }

private slots:
    void aHighContourIsAroundWhatIsAbove() {
        addDistances();
        const QStringList said = command(high(-5));
        QCOMPARE(said.size(), 1);
        QVERIFY(said[0].startsWith("High contour of map at -5 ("));
        QVERIFY(isWithin(areaOf(meshOf(0)), sphere(5), 0.02));
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), areaOf(meshOf(0)), 0.03));
        QCOMPARE(m_labels, QStringList("Add High contour"));
        QCOMPARE(m_additions, 1);
        QCOMPARE(namesOf(surfaces()), QStringList("ContourHigh map -5"));
        QCOMPARE(problemWith(meshOf(0)), std::string());
        for (const auto& v : meshOf(0).vertices)
            QVERIFY(std::abs(std::hypot(v[0] - 10, v[1] - 10, v[2] - 10) - 5) < 0.05);
        QCOMPARE(outwards(meshOf(0), 10), 1.0);
        QVERIFY(surfaces()[0]->GetColor().rgba() == 0xff4080ffU);
        QVERIFY(meshOf(0).atoms.empty() && meshOf(0).colors.empty());
    }

    void aLowContourIsAroundWhatIsBelow() {
        addGrid("map", {21, 21, 21}, [](int x, int y, int z) {
            return static_cast<float>(std::hypot(x - 10, y - 10, z - 10));
        });
        const QStringList said = command(low(5));
        QCOMPARE(said.size(), 1);
        QVERIFY(said[0].startsWith("Low contour of map at 5 ("));
        QVERIFY(isWithin(areaOf(meshOf(0)), sphere(5), 0.02));
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), areaOf(meshOf(0)), 0.03));
        QCOMPARE(namesOf(surfaces()), QStringList("ContourLow map 5"));
        QCOMPARE(outwards(meshOf(0), 10), 1.0);
        QVERIFY(surfaces()[0]->GetColor().rgba() == 0xffff4040U);
    }

    void theMessageGivesTheLevelInSigma() {
        addSlope();
        const QStringList said = command(high(3));
        QVERIFY2(said.value(0).startsWith("High contour of slope at 3 (0.71 sigma): "),
                 qPrintable(said.value(0)));
        QVERIFY(said[0].endsWith(" triangles"));
        // A large mean takes no digits from sigma.
        addGrid("high", {5, 4, 3}, [](int x, int, int) {
            return 1e6F + float(x);
        })->SetSelected(true);
        QVERIFY(command(high(1e6 + 3)).value(0).contains("(0.71 sigma)"));
    }

    void aMapThatIsTheSameEverywhereHasNoSigma() {
        addGrid("flat", {4, 4, 4}, [](int, int, int) { return 2.0F; });
        const QStringList said = command(high(2));
        QVERIFY(said.value(0).startsWith("High contour of flat at 2: "));
    }

    void aSecondContourStandsBesideTheFirst() {
        const Grid* const grid = addDistances();
        command(high(-3));
        const SurfaceMesh first = meshOf(0);
        command(high(-6));
        command(low(-8));
        QCOMPARE(namesOf(surfaces()),
                 QStringList({"ContourHigh map -3", "ContourHigh map -6", "ContourLow map -8"}));
        QVERIFY(meshOf(0) == first);
        QVERIFY(grid->IsVisible());
        // They can be told apart, and begin anew for another map.
        QVERIFY(surfaces()[0]->GetColor().rgba() != surfaces()[1]->GetColor().rgba());
        QVERIFY(surfaces()[1]->GetColor().rgba() != surfaces()[2]->GetColor().rgba());
        addDistances("map two")->SetSelected(true);
        command(high(-3));
        QCOMPARE(surfaces()[3]->GetColor().rgba(), surfaces()[0]->GetColor().rgba());
    }

    void theSelectedMapElseTheFirstThatIsShown() {
        Grid* const a = addDistances("a");
        Grid* const b = addDistances("b");
        addDistances("c");
        a->SetVisible(false);
        command(high(-5));
        b->SetSelected(true);
        command(high(-5));
        b->SetSelected(false);
        a->SetSelected(true); // though it is hidden
        command(high(-5));
        QCOMPARE(namesOf(surfaces()),
                 QStringList({"ContourHigh b -5", "ContourHigh b -5 (2)", "ContourHigh a -5"}));
    }

    void theShownPartOfTheMapBoundsIt() {
        Grid* const grid = addDistances();
        grid->m_lower[0] = 8;
        grid->m_upper[0] = 14;
        grid->m_upper[2] = 11;
        QVERIFY(command(high(-5)).value(0).startsWith("High contour"));
        const SurfaceMesh& mesh = meshOf(0);
        QVERIFY(extent(mesh, 0)[0] >= 8 && extent(mesh, 0)[1] <= 13);
        QVERIFY(extent(mesh, 1)[0] < 5.1F && extent(mesh, 1)[1] > 14.9F);
        QVERIFY(extent(mesh, 2)[0] < 5.1F && extent(mesh, 2)[1] <= 10);
        // Whoever moves the bounds later leaves it as it is.
        const SurfaceMesh before = mesh;
        grid->m_lower[0] = 0;
        QVERIFY(meshOf(0) == before);
    }

    void aLevelBelowAllValuesGivesTheBox() {
        addDistances();
        for (const auto& run : {high(-1e300), low(1e300), high(-100)}) {
            QCOMPARE(command(run).size(), 1);
            const SurfaceMesh& mesh = meshOf(surfaces().size() - 1);
            QCOMPARE(problemWith(mesh), std::string());
            for (std::size_t axis = 0; axis != 3; ++axis)
                QVERIFY((extent(mesh, axis) == std::array<float, 2>{0, 20}));
        }
        QCOMPARE(surfaces().size(), std::size_t(3));
    }

    void aLevelThatNothingReachesIsSaid() {
        addSlope();
        const QString values = QStringLiteral("; its values are 0 (-1.41 sigma) to 4 (1.41 sigma)");
        refuses(high(5), "High contour: nothing is made: no value in the shown part of slope "
                         "reaches 5 (2.12 sigma)" +
                             values);
        refuses(low(-1), "Low contour: nothing is made: no value in the shown part of slope "
                         "reaches -1 (-2.12 sigma)" +
                             values);
        refuses(high(1e300), "High contour: nothing is made: no value in the shown part of slope "
                             "reaches 1e+300 (7.1e+299 sigma)" +
                                 values);
    }

    void aLevelThatIsNoNumberIsSaid() {
        addDistances();
        const double infinite = std::numeric_limits<double>::infinity();
        for (const double level : {double(notANumber), infinite, -infinite}) {
            refuses(high(level), "High contour: nothing is made: the level is no number");
            refuses(low(level), "Low contour: nothing is made: the level is no number");
        }
    }

    void withoutAMapThereIsNone() {
        const QString none =
            QStringLiteral("High contour: nothing is made: no map is selected or shown");
        refuses(high(0), none);
        addCopper();
        TAVIK::DataMaker::makeCore(space(), "empty", "Grid");
        refuses(high(0), none);
        addDistances()->SetVisible(false);
        refuses(high(0), none);
    }

    void aMapOfOnePlaneIsSaid() {
        const QString line =
            QStringLiteral("High contour: nothing is made: the shown part of %1 is only a plane");
        addGrid("plane", {8, 8, 1}, [](int x, int, int) { return float(x); });
        refuses(high(3), line.arg("plane"));
        Grid* const grid = addDistances();
        grid->SetSelected(true);
        grid->m_lower[1] = 7;
        grid->m_upper[1] = 8;
        refuses(high(-5), line.arg("map"));
        grid->m_upper[1] = 7;
        refuses(high(-5), line.arg("map"));
    }

    void whereTheMapHasNoValueTheContourEnds() {
        addGrid("map", {21, 21, 21}, [](int x, int y, int z) {
            return x > 12 ? notANumber : -static_cast<float>(std::hypot(x - 10, y - 10, z - 10));
        });
        // The spread is that of the numbers.
        QVERIFY(!command(high(-5)).value(0).contains("nan"));
        QCOMPARE(problemWith(meshOf(0)), std::string());
        QVERIFY(extent(meshOf(0), 0)[1] <= 12);
        addGrid("nothing", {4, 4, 4}, [](int, int, int) { return notANumber; })->SetSelected(true);
        refuses(high(0), "High contour: nothing is made: no value in the shown part of nothing "
                         "reaches 0; its values are 0 to 0");
    }
};

REGISTER_TEST(MapContoursTest)
#include "MapContoursTest.moc"
