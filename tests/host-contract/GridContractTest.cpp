// Grids: the counts and the shown range, which plug-ins use directly, and the nearest point.
#include "ContractTools.h"
#include "Geometry.h"
#include "TestSupport.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

using namespace contract;
using namespace TAVIK;
using Triple = std::array<int, 3>;

namespace {

struct GridShape {
    Triple points{};                             ///< along x, y, z
    std::array<float, 3> origin{};               ///< position of the first point in Å
    std::array<std::array<float, 3>, 3> steps{}; ///< Å to the next point along each axis
};

} // namespace

class GridContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void allOfANewGridIsShown();
    void theShownRangeIsKeptAsWritten();
    void aGridWithoutValuesHasNoPoints();
    void theNearestPointOfAGridPointIsItself();
    void theNearestPointIsFoundBetweenPoints();
    void pointsOutsideAnswerIndicesOutside();
    void everyVertexGivesATripleThatCanBeCalculatedWith_data();
    void everyVertexGivesATripleThatCanBeCalculatedWith();
    void theNearestPointOfASkewedGridIsTheNearest_data();
    void theNearestPointOfASkewedGridIsTheNearest();
    void theNearestPointOfAnAllButFlatCellIsTheNearest_data();
    void theNearestPointOfAnAllButFlatCellIsTheNearest();
    void theNearestPointOfAFlatCellCostsWhatItDoesInAnyOther();
};

namespace {

// A grid in the space with all values 0.
Grid* addGrid(const char* name, const GridShape& shape) {
    GridValues values;
    values.points = shape.points;
    std::size_t count = 1;
    for (const std::size_t axis : {0, 1, 2}) {
        values.origin[axis] = shape.origin[axis];
        for (const std::size_t k : {0, 1, 2})
            values.steps[axis][k] = shape.steps[axis][k];
        count *= static_cast<std::size_t>(shape.points[axis]);
    }
    values.values.resize(count);
    return DataMaker::makeGrid(space(), name, std::move(values));
}

Vertex at(float x, float y, float z) {
    return {x, y, z, true};
}

Triple nearest(const Grid& grid, const Vertex& point, bool* inside = nullptr) {
    Triple ijk{-7, -7, -7};
    const bool result = grid.GetNearest(point, ijk.data());
    if (inside)
        *inside = result;
    return ijk;
}

// 11 x 21 x 31 points, half an Å apart, from (-1, -2, -3) on.
Grid* rectangularGrid() {
    return addGrid("density",
                   {{11, 21, 31}, {-1, -2, -3}, {{{0.5F, 0, 0}, {0, 0.5F, 0}, {0, 0, 0.5F}}}});
}

} // namespace

void GridContractTest::allOfANewGridIsShown() {
    Grid* const grid = rectangularGrid();
    QCOMPARE(childrenOf(space()), (Items{grid}));
    QCOMPARE(grid->GetName(), std::string("density"));
    QVERIFY(dynamic_cast<Composite*>(static_cast<Compound*>(grid)) == nullptr);
    const Triple points{11, 21, 31};
    for (const std::size_t axis : {0, 1, 2}) {
        QCOMPARE(grid->m_points[axis], points[axis]);
        QCOMPARE(grid->m_lower[axis], 0);
        QCOMPARE(grid->m_upper[axis], points[axis]);
    }
}

void GridContractTest::theShownRangeIsKeptAsWritten() {
    Grid* const grid = rectangularGrid();
    grid->m_lower[0] = 3;
    grid->m_upper[2] = 30;
    grid->SetSelected(true);
    grid->SetVisible(false);
    nearest(*grid, at(0, 0, 0));
    QCOMPARE(grid->m_lower[0], 3);
    QCOMPARE(grid->m_upper[2], 30);
    QCOMPARE(grid->m_points[0], 11);
}

void GridContractTest::aGridWithoutValuesHasNoPoints() {
    auto* const grid = dynamic_cast<Grid*>(make(space(), "Grid"));
    for (const std::size_t axis : {0, 1, 2})
        QCOMPARE(grid->m_points[axis], 0);
    bool inside = true;
    nearest(*grid, at(1, 2, 3), &inside);
    QVERIFY(!inside);
}

void GridContractTest::theNearestPointOfAGridPointIsItself() {
    const Grid* const grid = rectangularGrid();
    for (const Triple& ijk : {Triple{0, 0, 0}, Triple{10, 20, 30}, Triple{4, 0, 17}}) {
        bool inside = false;
        const Vertex point =
            at(-1 + 0.5F * static_cast<float>(ijk[0]), -2 + 0.5F * static_cast<float>(ijk[1]),
               -3 + 0.5F * static_cast<float>(ijk[2]));
        QVERIFY(nearest(*grid, point, &inside) == ijk);
        QVERIFY(inside);
    }
}

void GridContractTest::theNearestPointIsFoundBetweenPoints() {
    const Grid* const grid = rectangularGrid();
    QVERIFY(nearest(*grid, at(-0.76F, -2.24F, 0.01F)) == (Triple{0, 0, 6}));
    QVERIFY(nearest(*grid, at(-0.74F, -1.76F, 0.24F)) == (Triple{1, 0, 6}));
}

void GridContractTest::pointsOutsideAnswerIndicesOutside() {
    const Grid* const grid = rectangularGrid();
    bool inside = true;
    QVERIFY(nearest(*grid, at(-2, -2, -3), &inside) == (Triple{-2, 0, 0}));
    QVERIFY(!inside);
    QVERIFY(nearest(*grid, at(-1, -2, 13), &inside) == (Triple{0, 0, 32}));
    QVERIFY(!inside);
    QVERIFY(nearest(*grid, at(-1, 998, -3), &inside) == (Triple{0, 2000, 0}));
    QVERIFY(!inside);
}

void GridContractTest::everyVertexGivesATripleThatCanBeCalculatedWith_data() {
    QTest::addColumn<float>("coordinate");
    QTest::newRow("largest") << std::numeric_limits<float>::max();
    QTest::newRow("lowest") << std::numeric_limits<float>::lowest();
    QTest::newRow("infinity") << std::numeric_limits<float>::infinity();
    QTest::newRow("minus infinity") << -std::numeric_limits<float>::infinity();
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("ten thousand million") << 1e10F;
}

void GridContractTest::everyVertexGivesATripleThatCanBeCalculatedWith() {
    QFETCH(float, coordinate);
    const Grid* const rectangular = rectangularGrid();
    const Grid* const skewed =
        addGrid("skewed", {{5, 5, 5}, {0, 0, 0}, {{{1, 0, 0}, {-0.5F, 0.9F, 0}, {0, 0.3F, 2}}}});
    for (const Grid* grid : {rectangular, skewed})
        for (const bool valid : {false, true}) {
            bool inside = true;
            const Triple ijk =
                nearest(*grid, Vertex(coordinate, coordinate, coordinate, valid), &inside);
            QVERIFY(!inside);
            // Plug-ins add small margins to what comes back.
            for (const int index : ijk)
                QVERIFY(index > std::numeric_limits<int>::min() + 1000 &&
                        index < std::numeric_limits<int>::max() - 1000);
        }
}

void GridContractTest::theNearestPointOfASkewedGridIsTheNearest_data() {
    QTest::addColumn<GridShape>("shape");
    const auto row = [](const char* name, std::array<std::array<float, 3>, 3> steps) {
        QTest::newRow(name) << GridShape{{6, 6, 6}, {1, -2, 3}, steps};
    };
    row("monoclinic", {{{0.5F, 0, 0}, {0, 0.7F, 0}, {-0.25F, 0, 0.6F}}});
    row("hexagonal", {{{0.5F, 0, 0}, {-0.25F, 0.433F, 0}, {0, 0, 0.8F}}});
    row("triclinic", {{{0.4F, 0, 0}, {0.15F, 0.5F, 0}, {-0.2F, 0.25F, 0.6F}}});
    row("strongly skewed", {{{0.5F, 0, 0}, {0.9F, 0.3F, 0}, {0.4F, 0.9F, 0.4F}}});
    row("left-handed", {{{0, 0.5F, 0}, {0.5F, 0, 0}, {0, 0.1F, 0.5F}}});
}

void GridContractTest::theNearestPointOfASkewedGridIsTheNearest() {
    QFETCH(GridShape, shape);
    const Grid* const grid = addGrid("skewed", shape);
    const auto squaredDistance = [&](const Triple& ijk, const Vertex& point) {
        double sum = 0.0;
        for (const std::size_t k : {0, 1, 2}) {
            double difference = static_cast<double>(point[k]) - shape.origin[k];
            for (const std::size_t axis : {0, 1, 2})
                difference -= static_cast<double>(ijk[axis]) * shape.steps[axis][k];
            sum += difference * difference;
        }
        return sum;
    };
    std::mt19937 random(17);
    std::uniform_real_distribution<float> fraction(0.0F, 5.0F);
    for (int i = 0; i != 300; ++i) {
        const std::array<float, 3> f{fraction(random), fraction(random), fraction(random)};
        Vertex point(shape.origin[0], shape.origin[1], shape.origin[2], true);
        for (const std::size_t k : {0, 1, 2})
            for (const std::size_t axis : {0, 1, 2})
                point[k] += f[axis] * shape.steps[axis][k];
        double least = std::numeric_limits<double>::max();
        for (int a = -8; a != 14; ++a)
            for (int b = -8; b != 14; ++b)
                for (int c = -8; c != 14; ++c)
                    least = std::min(least, squaredDistance({a, b, c}, point));
        QVERIFY(squaredDistance(nearest(*grid, point), point) <= least * (1 + 1e-9) + 1e-12);
    }
}

void GridContractTest::theNearestPointOfAnAllButFlatCellIsTheNearest_data() {
    QTest::addColumn<GridShape>("shape");
    QTest::addColumn<std::array<float, 3>>("spacing");
    const auto row = [](const char* name, std::array<std::array<float, 3>, 3> steps,
                        std::array<float, 3> spacing) {
        QTest::newRow(name) << GridShape{{6, 6, 6}, {1, -2, 3}, steps} << spacing;
    };
    const float thin = 1.0F / 1024; // so that sums are exact
    row("two steps apart by a hair", {{{1, 0, 0}, {1, thin, 0}, {0, 0, 1}}}, {1, thin, 1});
    row("far skewed", {{{1, 0, 0}, {1000, thin, 0}, {-700, 32 * thin, 1}}}, {1, thin, 1});
    row("all three apart by a hair", {{{1, 0, 0}, {1, thin, 0}, {1, thin, thin}}}, {1, thin, thin});
    row("two steps on one line", {{{2, 0, 0}, {3, 0, 0}, {0, 0, 1}}}, {1, 0, 1});
    row("one step in the plane of the others", {{{1, 0, 0}, {0, 1, 0}, {5, 3, 0}}}, {1, 1, 0});
    row("no third step", {{{0.5F, 0, 0}, {0, 0.25F, 0}, {0, 0, 0}}}, {0.5F, 0.25F, 0});
}

// Each of these cells makes a lattice with right angles, in which the nearest point is plain.
void GridContractTest::theNearestPointOfAnAllButFlatCellIsTheNearest() {
    using Spacing = std::array<float, 3>;
    QFETCH(GridShape, shape);
    QFETCH(Spacing, spacing);
    const Grid* const grid = addGrid("flat", shape);
    std::mt19937 random(5);
    std::uniform_real_distribution<float> coordinate(-3.0F, 3.0F);
    for (int i = 0; i != 300; ++i) {
        Vertex point(0, 0, 0, true);
        double least = 0.0;
        for (const std::size_t k : {0, 1, 2}) {
            const float away = coordinate(random);
            point[k] = shape.origin[k] + away;
            const double exactly = static_cast<double>(point[k]) - shape.origin[k];
            const double distance =
                spacing[k] > 0 ? std::remainder(exactly, static_cast<double>(spacing[k])) : exactly;
            least += distance * distance;
        }
        const Triple ijk = nearest(*grid, point);
        double found = 0.0;
        for (const std::size_t k : {0, 1, 2}) {
            double distance = static_cast<double>(point[k]) - shape.origin[k];
            for (const std::size_t axis : {0, 1, 2})
                distance -= static_cast<double>(ijk[axis]) * shape.steps[axis][k];
            found += distance * distance;
        }
        QVERIFY2(found <= least * (1 + 1e-6) + 1e-9,
                 qPrintable(QStringLiteral("%1 instead of %2").arg(found).arg(least)));
    }
}

void GridContractTest::theNearestPointOfAFlatCellCostsWhatItDoesInAnyOther() {
    const auto secondsFor = [](const Grid& grid) {
        double least = std::numeric_limits<double>::max();
        for (int round = 0; round != 7; ++round) {
            std::mt19937 random(9);
            std::uniform_real_distribution<float> coordinate(-2.0F, 2.0F);
            QElapsedTimer timer;
            timer.start();
            for (int i = 0; i != 3000; ++i)
                nearest(grid, at(coordinate(random), coordinate(random), coordinate(random)));
            least = std::min(least, static_cast<double>(timer.nsecsElapsed()));
        }
        return least;
    };
    const auto made = [](std::array<std::array<float, 3>, 3> steps) {
        return addGrid("grid", {{6, 6, 6}, {0, 0, 0}, steps});
    };
    const double usual =
        secondsFor(*made({{{0.4F, 0, 0}, {0.15F, 0.5F, 0}, {-0.2F, 0.25F, 0.6F}}}));
    for (const Grid* flat : {made({{{1, 0, 0}, {1, 1e-4F, 0}, {1, 0, 1e-4F}}}),
                             made({{{1, 0, 0}, {0.7F, 0.001F, 0}, {0.3F, 0.0005F, 0.001F}}}),
                             made({{{1, 0, 0}, {2.5F, 0, 0}, {0, 0, 0}}}),
                             made({{{1, 0, 0}, {1.41421356F, 0, 0}, {0, 1e-5F, 1e-5F}}})}) {
        const double flatTime = secondsFor(*flat);
        QVERIFY2(flatTime < 8 * usual, qPrintable(QString::number(flatTime / usual)));
    }
}

REGISTER_TEST(GridContractTest)
#include "GridContractTest.moc"
