// Maps that are written are what they were, to this reader and to gemmi's.
#include "files/WriteMap.h"
#include "FileTesting.h"
#include "Space.h"
#include "TestFiles.h"
#include "TestSupport.h"
#include "files/SaveReport.h"
#include "files/SavedTables.h"
#include "items/Building.h"

#include <gemmi/ccp4.hpp>

#include <QFile>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace file_testing;
using memory_host::MapCrystal;
using memory_host::SavedContent;
using memory_host::SaveError;
using memory_host::SaveReport;
using TAVIK::GridValues;

namespace {

using Triple = std::array<double, 3>;
using test_support::contentOf;

/// Point (x, y, z) has the value 100 z + 10 y + x.
GridValues gridOf(std::array<int, 3> points, Triple origin, std::array<Triple, 3> steps) {
    GridValues grid{points, origin, steps, {}};
    for (int z = 0; z < points[2]; ++z)
        for (int y = 0; y < points[1]; ++y)
            for (int x = 0; x < points[0]; ++x)
                grid.values.push_back(static_cast<float>(100 * z + 10 * y + x));
    return grid;
}

std::array<Triple, 3> rightSteps(double x, double y, double z) {
    return {{{x, 0, 0}, {0, y, 0}, {0, 0, z}}};
}

std::array<Triple, 3> stepsOf(const gemmi::UnitCell& cell, std::array<int, 3> sampling) {
    std::array<Triple, 3> steps{};
    for (int axis = 0; axis != 3; ++axis)
        for (int k = 0; k != 3; ++k)
            steps[axis][k] = cell.orth.mat[k][axis] / sampling[axis];
    return steps;
}

Triple positionOf(const GridValues& grid, std::array<int, 3> at) {
    Triple position = grid.origin;
    for (int axis = 0; axis != 3; ++axis)
        for (int k = 0; k != 3; ++k)
            position[k] += at[axis] * grid.steps[axis][k];
    return position;
}

double distance(const Triple& a, const Triple& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// The farthest that a corner of one grid is from that of the other.
double farthestCorner(const GridValues& a, const GridValues& b) {
    double farthest = 0.0;
    for (int corner = 0; corner != 8; ++corner) {
        std::array<int, 3> at{};
        for (int axis = 0; axis != 3; ++axis)
            at[axis] = corner >> axis & 1 ? a.points[axis] - 1 : 0;
        farthest = std::max(farthest, distance(positionOf(a, at), positionOf(b, at)));
    }
    return farthest;
}

bool areSame(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

/// What a writer makes of a grid.
struct Written {
    explicit Written(const GridValues& grid, const MapCrystal& crystal = {}) {
        SavedContent content;
        content.grid = grid;
        content.crystal = crystal;
        SaveReport report("out.map");
        text = QByteArray::fromStdString(memory_host::writeMap(content, report));
        for (const std::string& line : report.remarks())
            remarks << QString::fromStdString(line);
    }
    gemmi::Ccp4<float> byGemmi() const {
        gemmi::Ccp4<float> map;
        map.read_ccp4_from_memory(text.constData(), static_cast<std::size_t>(text.size()), "map");
        return map;
    }
    QByteArray text;
    QStringList remarks;
};

QString refusalOf(const GridValues& grid, const MapCrystal& crystal = {}) {
    try {
        const Written written(grid, crystal);
        return {};
    } catch (const SaveError& error) {
        return QString::fromStdString(error.what());
    }
}

} // namespace

class WriteMapTest : public test_support::TestCase {
    Q_OBJECT

    Folder m_folder;

    /// Opens a written map again.
    TAVIK::Grid* opened(const Written& written, const QString& name = "again.map") {
        const memory_host::OpenedFile file =
            file_testing::opened(m_folder.write(name, written.text));
        return file.items.size() == 1 ? dynamic_cast<TAVIK::Grid*>(file.items.front()) : nullptr;
    }
    const GridValues& readBack(const Written& written) {
        static const GridValues none;
        const TAVIK::Grid* const grid = opened(written);
        return grid ? *TAVIK::GetGridValues(grid) : none;
    }

private slots:
    void pointsAndValuesAreReadBack_data() {
        QTest::addColumn<GridValues>("grid");
        QTest::addColumn<MapCrystal>("crystal");
        const gemmi::UnitCell monoclinic(45.65, 38.2, 77.13, 90, 101.57, 90);
        const gemmi::UnitCell triclinic(27.24, 31.87, 34.23, 88.52, 108.53, 111.89);
        const std::array<int, 3> sampling = {90, 76, 154};
        QTest::newRow("right angles")
            << gridOf({4, 3, 2}, {}, rightSteps(0.5, 0.7, 1.1)) << MapCrystal();
        QTest::newRow("away from the origin")
            << gridOf({4, 3, 2}, {5, -7, 2.2}, rightSteps(0.5, 0.7, 1.1)) << MapCrystal();
        QTest::newRow("a part of a cell")
            << gridOf({4, 3, 2}, {5, -7, 2.2}, rightSteps(0.5, 0.7, 1.1))
            << MapCrystal{{90, 80, 70}, 19};
        for (const gemmi::UnitCell& cell : {monoclinic, triclinic}) {
            GridValues grid = gridOf({7, 8, 9}, {}, stepsOf(cell, sampling));
            grid.origin = positionOf(grid, {20, -11, 300});
            const QByteArray name = cell.gamma == 90 ? "monoclinic" : "triclinic";
            QTest::newRow(name) << grid << MapCrystal{sampling, 1};
            QTest::newRow(name + ", cell unknown") << grid << MapCrystal();
        }
        QTest::newRow("one point")
            << gridOf({1, 1, 1}, {3, 3, 3}, rightSteps(1, 1, 1)) << MapCrystal();
    }
    void pointsAndValuesAreReadBack() {
        QFETCH(const GridValues, grid);
        QFETCH(const MapCrystal, crystal);
        const Written written(grid, crystal);
        QCOMPARE(written.remarks, QStringList());
        const GridValues& again = readBack(written);
        QCOMPARE(again.points, grid.points);
        QVERIFY(areSame(again.values, grid.values));
        QVERIFY(farthestCorner(again, grid) < 1e-3);

        // gemmi numbers the points from the corner of the cell.
        gemmi::Ccp4<float> map = written.byGemmi();
        map.setup(std::numeric_limits<float>::quiet_NaN(), gemmi::MapSetup::NoSymmetry);
        const std::array<int, 3> last = {grid.points[0] - 1, grid.points[1] - 1,
                                         grid.points[2] - 1};
        for (const std::array<int, 3>& at : {std::array<int, 3>{}, last}) {
            const Triple position = positionOf(grid, at);
            const gemmi::Fractional place = map.grid.unit_cell.fractionalize(
                gemmi::Position(position[0], position[1], position[2]));
            const auto nearest = [](double fraction, int steps) {
                const double whole = std::round(fraction * steps);
                return std::abs(fraction * steps - whole) < 0.01 ? static_cast<int>(whole) : 0;
            };
            QCOMPARE(map.grid.get_value(nearest(place.x, map.grid.nu),
                                        nearest(place.y, map.grid.nv),
                                        nearest(place.z, map.grid.nw)),
                     static_cast<float>(100 * at[2] + 10 * at[1] + at[0]));
        }
    }

    void pointsOnNoLatticeFromTheCornerHaveAnOriginInAngstrom() {
        const GridValues grid = gridOf({4, 3, 2}, {5.2, -7.1, 2.3}, rightSteps(0.5, 0.7, 1.1));
        const Written written(grid);
        QCOMPARE(written.remarks.size(), 1);
        QVERIFY(written.remarks.constFirst().contains("an origin in Angstrom"));
        const GridValues& again = readBack(written);
        QVERIFY(areSame(again.values, grid.values));
        QVERIFY(farthestCorner(again, grid) < 1e-5);
        const gemmi::Ccp4<float> map = written.byGemmi();
        QCOMPARE(map.header_3i32(5), (std::array<int, 3>{0, 0, 0}));
        QCOMPARE(map.header_float(50), 5.2F);
        QCOMPARE(map.header_float(51), -7.1F);
        QCOMPARE(map.header_float(52), 2.3F);
    }

    void stepsThatAreNotThoseOfACellAreRefused_data() {
        QTest::addColumn<GridValues>("grid");
        const auto add = [](const char* name, const std::array<Triple, 3>& steps) {
            QTest::newRow(name) << gridOf({4, 3, 2}, {}, steps);
        };
        add("turned", {{{0.6, 0.8, 0}, {-0.8, 0.6, 0}, {0, 0, 1}}});
        add("axes in another order", {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}});
        add("left-handed", {{{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}});
        add("in a plane", {{{1, 0, 0}, {0, 1, 0}, {1, 1, 0}}});
        add("shorter than the cell's decimals", rightSteps(1e-7, 1, 1));
    }
    void stepsThatAreNotThoseOfACellAreRefused() {
        QFETCH(const GridValues, grid);
        const QString refusal = refusalOf(grid);
        QVERIFY2(
            refusal.startsWith("out.map: the map's axes are not those of a cell in a map file"),
            qPrintable(refusal));
        QVERIFY(refusal.contains("accepted are axes"));
    }

    void theHeaderHasTheStatisticsOfWhatIsWritten() {
        GridValues grid = gridOf({2, 2, 1}, {}, rightSteps(1, 1, 1));
        grid.values = {1.0F, 2.0F, 3.0F, 6.0F};
        const gemmi::Ccp4<float> map = Written(grid).byGemmi();
        QCOMPARE(map.hstats.dmin, 1.0);
        QCOMPARE(map.hstats.dmax, 6.0);
        QCOMPARE(map.hstats.dmean, 3.0);
        QCOMPARE(map.hstats.rms, static_cast<double>(std::sqrt(3.5F)));
        QCOMPARE(map.header_i32(4), 2);
        QVERIFY(map.same_byte_order);
    }

    void pointsWithoutAValueStaySoAndAreSaid() {
        GridValues grid = gridOf({2, 2, 1}, {}, rightSteps(1, 1, 1));
        constexpr float none = std::numeric_limits<float>::quiet_NaN();
        grid.values = {1.0F, none, 3.0F, none};
        const Written written(grid);
        QCOMPARE(written.remarks,
                 QStringList("out.map: 2 points of the map have no finite value: the file "
                             "says so, which some programs do not expect"));
        QCOMPARE(written.byGemmi().hstats.dmean, 2.0);
        QVERIFY(areSame(readBack(written).values, grid.values));

        grid.values = {none, none, none, none};
        const gemmi::Ccp4<float> map = Written(grid).byGemmi();
        QVERIFY(map.hstats.dmax < map.hstats.dmin);
        QVERIFY(map.hstats.rms < 0);
    }

    void cellAndSpaceGroupAreKept() {
        GridValues grid = gridOf({4, 3, 2}, {}, rightSteps(45.65 / 90, 0.5, 77.13 / 154));
        const Written written(grid, {{90, 76, 154}, 19});
        const gemmi::Ccp4<float> map = written.byGemmi();
        QCOMPARE(map.grid.unit_cell.a, 45.65);
        QCOMPARE(map.grid.unit_cell.b, 38.0);
        QCOMPARE(map.grid.unit_cell.c, 77.13);
        QCOMPARE(map.header_3i32(8), (std::array<int, 3>{90, 76, 154}));
        QVERIFY(map.grid.spacegroup);
        QCOMPARE(map.grid.spacegroup->number, 19);
        QCOMPARE(map.header_i32(24), 4 * 80);
        QCOMPARE(QByteArray::fromStdString(map.header_str(257 + 20)).trimmed(),
                 QByteArray::fromStdString(map.grid.spacegroup->operations().sym_ops[1].triplet()));
        const TAVIK::Grid* const again = opened(written);
        QVERIFY(again);
        QCOMPARE(memory_host::crystalOf(again), (MapCrystal{{90, 76, 154}, 19}));
        // A number that is no group's, as stacks of volumes have.
        QCOMPARE(Written(grid, {{90, 76, 154}, 401}).byGemmi().header_i32(23), 1);
    }

    void aPartHasThePointsWithinItsBounds() {
        const GridValues grid = gridOf({5, 6, 7}, {1, 2, 3}, rightSteps(0.5, 0.7, 1.1));
        const GridValues part = memory_host::partOf(grid, {1, 2, 3}, {3, 5, 7});
        QCOMPARE(part.points, (std::array<int, 3>{2, 3, 4}));
        QVERIFY(distance(part.origin, positionOf(grid, {1, 2, 3})) < 1e-12);
        QCOMPARE(part.steps, grid.steps);
        QCOMPARE(part.values.size(), std::size_t{24});
        QCOMPARE(part.values.front(), 321.0F);
        QCOMPARE(part.values[1], 322.0F);
        QCOMPARE(part.values[2], 331.0F);
        QCOMPARE(part.values.back(), 642.0F);
        QCOMPARE(memory_host::partOf(grid, {-5, 0, 0}, {99, 6, 7}), grid);
    }

    void aPartWithoutPointsIsRefused() {
        const GridValues grid = gridOf({5, 6, 7}, {}, rightSteps(1, 1, 1));
        using Bounds = std::array<int, 3>;
        for (const auto& [lower, upper] : {std::pair<Bounds, Bounds>{{2, 0, 0}, {2, 6, 7}},
                                           {{0, 5, 0}, {5, 3, 7}},
                                           {{9, 0, 0}, {12, 6, 7}},
                                           {{0, 0, 0}, {5, 6, -1}}}) {
            const GridValues part = memory_host::partOf(grid, lower, upper);
            QVERIFY(part.values.empty());
            QVERIFY(refusalOf(part).startsWith("out.map: nothing of a map is within its bounds"));
        }
    }

    void theShownPartOfAGridIsSavedAlsoGzipped() {
        const auto file = file_testing::opened(structure("1jzv.ccp4").toStdString());
        auto* const grid = dynamic_cast<TAVIK::Grid*>(file.items.front());
        QVERIFY(grid);
        for (const int axis : {0, 1, 2}) {
            grid->m_lower[axis] = 3 + axis;
            grid->m_upper[axis] = 9 + 2 * axis;
        }
        const GridValues part =
            memory_host::partOf(*TAVIK::GetGridValues(grid), {3, 4, 5}, {9, 11, 13});
        for (const char* const name : {"part.map", "part.ccp4.gz"}) {
            const std::string path = (m_folder.path() + u'/' + name).toStdString();
            QVERIFY(memory_host::saveFile(file.items, path).empty());
            const auto again = file_testing::opened(path);
            const auto* const read = dynamic_cast<TAVIK::Grid*>(again.items.front());
            QVERIFY(read);
            QCOMPARE(TAVIK::GetGridValues(read)->points, (std::array<int, 3>{6, 7, 8}));
            QVERIFY(areSame(TAVIK::GetGridValues(read)->values, part.values));
            QVERIFY(farthestCorner(*TAVIK::GetGridValues(read), part) < 1e-4);
        }
        grid->m_upper[1] = grid->m_lower[1];
        const QString path = m_folder.path() + "/none.map";
        QVERIFY_EXCEPTION_THROWN(memory_host::saveFile(file.items, path.toStdString()), SaveError);
        QVERIFY(!QFile::exists(path));
    }

    void aWholeMapKeepsTheBytesOfItsFile_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("real") << contentOf(structure("1jzv.ccp4"));
        gemmi::Ccp4<float> made;
        made.grid.unit_cell.set(20, 30, 40, 90, 101.5, 90);
        made.grid.spacegroup = gemmi::find_spacegroup_by_number(4);
        made.grid.set_size(10, 12, 16);
        for (std::size_t i = 0; i != made.grid.data.size(); ++i)
            made.grid.data[i] = static_cast<float>(std::sin(0.1 * static_cast<double>(i)));
        constexpr int singlePrecision = 2;
        made.update_ccp4_header(singlePrecision);
        const QString path = m_folder.path() + "/made.ccp4";
        made.write_ccp4_map(path.toStdString());
        QTest::newRow("made") << contentOf(path);
    }
    void aWholeMapKeepsTheBytesOfItsFile() {
        QFETCH(const QByteArray, bytes);
        const QString own = QString::fromStdString(m_folder.write("own.ccp4", bytes));
        const auto file = file_testing::opened(own.toStdString());
        const QString copy = m_folder.path() + "/copy.map";
        QVERIFY(memory_host::saveFile(file.items, (copy + ".gz").toStdString()).empty());
        const auto packed = file_testing::opened((copy + ".gz").toStdString());
        for (const auto& [items, path] :
             {std::pair(file.items, copy), {file.items, own}, {packed.items, copy}}) {
            QVERIFY(memory_host::saveFile(items, path.toStdString()).empty());
            QCOMPARE(contentOf(path), bytes);
        }

        // What someone else wrote there since is not this map.
        QVERIFY(QFile::remove(own) && QFile::copy(structure("griddata.dx"), own));
        QVERIFY(memory_host::saveFile(file.items, copy.toStdString()).empty());
        const auto again = file_testing::opened(copy.toStdString());
        const auto values = [](const TAVIK::Compound* item) {
            return TAVIK::GetGridValues(dynamic_cast<const TAVIK::Grid*>(item))->values;
        };
        QVERIFY(areSame(values(again.items.front()), values(file.items.front())));
    }

    void otherValuesOfAMapAreSaved() {
        const QString path = m_folder.path() + "/other.map";
        QVERIFY(QFile::copy(structure("1jzv.ccp4"), path));
        const auto file = file_testing::opened(path.toStdString());
        GridValues other =
            *TAVIK::GetGridValues(dynamic_cast<const TAVIK::Grid*>(file.items.front()));
        std::ranges::fill(other.values, 3.0F);
        memory_host::setGrid(file.items.front(), GridValues(other));
        QVERIFY(memory_host::saveFile(file.items, path.toStdString()).empty());
        const auto again = file_testing::opened(path.toStdString());
        const auto* const read = dynamic_cast<const TAVIK::Grid*>(again.items.front());
        QVERIFY(areSame(TAVIK::GetGridValues(read)->values, other.values));
    }

    void aRealMapIsTheSameAgain() {
        const auto file = file_testing::opened(structure("1jzv.ccp4").toStdString());
        const auto* const first = dynamic_cast<TAVIK::Grid*>(file.items.front());
        QVERIFY(first);
        const GridValues& grid = *TAVIK::GetGridValues(first);
        const Written written(grid, memory_host::crystalOf(first));
        QCOMPARE(written.remarks, QStringList());
        const TAVIK::Grid* const again = opened(written);
        QVERIFY(again);
        const GridValues& values = *TAVIK::GetGridValues(again);
        QCOMPARE(values.points, grid.points);
        QVERIFY(areSame(values.values, grid.values));
        QVERIFY(farthestCorner(values, grid) < 1e-4);
        QCOMPARE(memory_host::crystalOf(again), memory_host::crystalOf(first));

        // The same to gemmi, expanded by symmetry; and saved once more it is the same file.
        gemmi::Ccp4<float> before;
        before.read_ccp4_file(structure("1jzv.ccp4").toStdString());
        before.setup(std::numeric_limits<float>::quiet_NaN());
        gemmi::Ccp4<float> after = written.byGemmi();
        after.setup(std::numeric_limits<float>::quiet_NaN());
        QCOMPARE(after.grid.unit_cell, before.grid.unit_cell);
        QCOMPARE(after.grid.spacegroup, before.grid.spacegroup);
        QVERIFY(areSame(after.grid.data, before.grid.data));
        QVERIFY(Written(values, memory_host::crystalOf(again)).text == written.text);
    }
};

REGISTER_TEST(WriteMapTest)
#include "WriteMapTest.moc"
