// CCP4/MRC maps: every mode, byte order, axis order and cell.
#include "FileTesting.h"
#include "Space.h"
#include "TestSupport.h"
#include "items/Building.h"

#include <QFile>
#include <QtEndian>

#include <cmath>

using namespace file_testing;
using memory_host::OpenedFile;

namespace {

const std::vector<float>& valuesOf(const QString& grid) {
    return TAVIK::GetGridValues(dynamic_cast<TAVIK::Grid*>(item(grid)))->values;
}

// A map whose point (x, y, z) has the value 100 * z + 10 * y + x, whatever way it is stored.
struct Map {
    std::array<int, 3> points = {4, 3, 2}; ///< along x, y and z
    std::array<int, 3> start{};            ///< likewise
    std::array<int, 3> sampling = {8, 6, 4};
    std::array<float, 6> cell = {16.0F, 12.0F, 8.0F, 90.0F, 90.0F, 90.0F};
    std::array<int, 3> axes = {1, 2, 3}; ///< of columns, rows and sections
    std::array<float, 3> origin{};
    int mode = 2;
    int symmetryBytes = 0;
    bool bigEndian = false;
    quint32 stamp = 0x44410000; ///< as it is read from left to right

    QByteArray content() const {
        QByteArray text(1024 + symmetryBytes, '\0');
        const auto set = [&](int number, auto value) {
            quint32 word = 0;
            std::memcpy(&word, &value, 4);
            if (bigEndian)
                word = qbswap(word);
            std::memcpy(text.data() + 4 * (number - 1), &word, 4);
        };
        for (int i = 0; i < 3; ++i) {
            const int axis = axes[i] - 1;
            set(1 + i, points[axis]);
            set(5 + i, start[axis]);
            set(8 + i, sampling[i]);
            set(17 + i, axes[i]);
            set(50 + i, origin[i]);
        }
        for (int i = 0; i < 6; ++i)
            set(11 + i, cell[i]);
        set(4, mode);
        set(23, 1);
        set(24, symmetryBytes);
        text.replace(208, 4, "MAP ");
        const quint32 bytes = qToBigEndian(stamp);
        std::memcpy(text.data() + 212, &bytes, 4);
        std::array<int, 3> at{};
        for (at[2] = 0; at[2] < points[axes[2] - 1]; ++at[2])
            for (at[1] = 0; at[1] < points[axes[1] - 1]; ++at[1])
                for (at[0] = 0; at[0] < points[axes[0] - 1]; ++at[0]) {
                    std::array<int, 3> xyz{};
                    for (int i = 0; i < 3; ++i)
                        xyz[axes[i] - 1] = at[i];
                    append(text, 100 * xyz[2] + 10 * xyz[1] + xyz[0]);
                }
        return text;
    }

    void append(QByteArray& text, int value) const {
        const auto add = [&](auto number) {
            QByteArray bytes(reinterpret_cast<const char*>(&number), sizeof number);
            if (bigEndian)
                std::reverse(bytes.begin(), bytes.end());
            text += bytes;
        };
        if (mode == 0)
            add(static_cast<qint8>(value));
        else if (mode == 1)
            add(static_cast<qint16>(value));
        else if (mode == 6)
            add(static_cast<quint16>(value));
        else
            add(static_cast<float>(value));
    }

    std::vector<float> values() const {
        std::vector<float> all;
        for (int z = 0; z < points[2]; ++z)
            for (int y = 0; y < points[1]; ++y)
                for (int x = 0; x < points[0]; ++x)
                    all.push_back(static_cast<float>(100 * z + 10 * y + x));
        return all;
    }
};

} // namespace

class MapFileTest : public test_support::TestCase {
    Q_OBJECT

private:
    Folder m_folder;

    TAVIK::Grid* openMap(const QByteArray& content, const QStringList& remarks = {},
                         const QString& name = QStringLiteral("test.map")) {
        const OpenedFile file = opened(m_folder.write(name, content), remarks);
        return file.items.size() == 1 ? dynamic_cast<TAVIK::Grid*>(file.items.front()) : nullptr;
    }
    QString path() const { return m_folder.path() + "/test.map"; }

    // Whether the point nearest to a position is this one.
    static bool isAt(const TAVIK::Grid* grid, std::array<int, 3> point,
                     std::array<double, 3> position) {
        std::array<int, 3> nearest{};
        grid->GetNearest(TAVIK::Vertex(static_cast<float>(position[0]),
                                       static_cast<float>(position[1]),
                                       static_cast<float>(position[2]), true),
                         nearest.data());
        return nearest == point;
    }

private slots:
    void aRealMapHasTheExtentAndTheValuesOfTheFile() {
        QFile file(structure("1jzv.ccp4"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const auto word = [&bytes](int number) {
            return qFromLittleEndian<qint32>(bytes.constData() + 4 * (number - 1));
        };
        opened(file.fileName().toStdString());
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("1jzv"));
        auto* const grid = dynamic_cast<TAVIK::Grid*>(item("/1jzv"));
        QVERIFY(grid);
        // Columns are along y, rows along x, sections along z.
        QCOMPARE(word(17), 2);
        QCOMPARE(word(18), 1);
        QCOMPARE(grid->m_points[0], word(2));
        QCOMPARE(grid->m_points[1], word(1));
        QCOMPARE(grid->m_points[2], word(3));
        const std::vector<float>& values = TAVIK::GetGridValues(grid)->values;
        const std::size_t offset = static_cast<std::size_t>(1024 + word(24));
        std::size_t stored = 0;
        for (int z = 0; z < word(3); ++z)
            for (int x = 0; x < word(2); ++x)
                for (int y = 0; y < word(1); ++y, ++stored) {
                    const auto expected =
                        qFromLittleEndian<float>(bytes.constData() + offset + 4 * stored);
                    const auto at = static_cast<std::size_t>(
                        (z * grid->m_points[1] + y) * grid->m_points[0] + x);
                    if (values[at] != expected)
                        QFAIL("another value");
                }
        QCOMPARE(values.size(), stored);
        // The cell is orthogonal; the start is given in the order of the storage.
        const auto cell = [&bytes](int number) {
            return static_cast<double>(
                qFromLittleEndian<float>(bytes.constData() + 4 * (number - 1)));
        };
        const std::array<double, 3> step = {cell(11) / word(8), cell(12) / word(9),
                                            cell(13) / word(10)};
        const std::array<int, 3> start = {word(6), word(5), word(7)};
        QVERIFY(
            isAt(grid, {0, 0, 0}, {start[0] * step[0], start[1] * step[1], start[2] * step[2]}));
        QVERIFY(
            isAt(grid, {7, 8, 9},
                 {(start[0] + 7) * step[0], (start[1] + 8) * step[1], (start[2] + 9) * step[2]}));
        QCOMPARE(grid->m_upper[0], grid->m_points[0]);
    }

    void valuesOfAllModesAndByteOrdersAreRead_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("bigEndian");
        QTest::addColumn<quint32>("stamp");
        for (const int mode : {0, 1, 2, 6}) {
            QTest::addRow("little endian, mode %d", mode) << mode << false << quint32(0x44410000);
            QTest::addRow("big endian, mode %d", mode) << mode << true << quint32(0x11110000);
            QTest::addRow("no stamp, mode %d", mode) << mode << false << quint32(0);
            QTest::addRow("wrong stamp, mode %d", mode) << mode << true << quint32(0x44410000);
        }
    }
    void valuesOfAllModesAndByteOrdersAreRead() {
        QFETCH(int, mode);
        QFETCH(bool, bigEndian);
        QFETCH(quint32, stamp);
        Map map;
        map.mode = mode;
        map.bigEndian = bigEndian;
        map.stamp = stamp;
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        QCOMPARE(valuesOf("/test"), map.values());
        QVERIFY(isAt(grid, {3, 2, 1}, {6.0, 4.0, 2.0}));
    }

    void axesInAnyOrderAreBroughtIntoTheirOwn_data() {
        QTest::addColumn<int>("axes");
        for (const int axes : {123, 132, 213, 231, 312, 321})
            QTest::addRow("%d", axes) << axes;
    }
    void axesInAnyOrderAreBroughtIntoTheirOwn() {
        QFETCH(int, axes);
        Map map;
        map.axes = {axes / 100, axes / 10 % 10, axes % 10};
        map.start = {1, -2, 3};
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        QCOMPARE(grid->m_points[0], 4);
        QCOMPARE(grid->m_points[1], 3);
        QCOMPARE(grid->m_points[2], 2);
        QCOMPARE(valuesOf("/test"), map.values());
        QVERIFY(isAt(grid, {0, 0, 0}, {2.0, -4.0, 6.0}));
        QVERIFY(isAt(grid, {3, 2, 1}, {8.0, 0.0, 8.0}));
    }

    void aMapOfTheWholeCellIsNotTurned() {
        Map map;
        map.points = map.sampling = {4, 3, 2};
        map.cell = {4.0F, 3.0F, 2.0F, 90.0F, 90.0F, 90.0F};
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        QCOMPARE(valuesOf("/test"), map.values());
        QVERIFY(isAt(grid, {3, 2, 1}, {3.0, 2.0, 1.0}));
    }

    void aCellNeedNotHaveRightAngles() {
        Map map;
        map.cell = {16.0F, 12.0F, 8.0F, 90.0F, 120.0F, 90.0F};
        map.start = {0, 0, 1};
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        // A step along z is 2 Å at 120 degrees to x.
        const double dx = -1.0;
        const double dz = std::sqrt(3.0);
        QVERIFY(isAt(grid, {0, 0, 0}, {dx, 0.0, dz}));
        QVERIFY(isAt(grid, {3, 2, 1}, {6.0 + 2 * dx, 4.0, 2 * dz}));
    }

    void anOriginInAngstromReplacesTheStart() {
        Map map;
        map.start = {5, 5, 5};
        map.origin = {100.0F, -20.0F, 3.5F};
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        QVERIFY(isAt(grid, {0, 0, 0}, {100.0, -20.0, 3.5}));
        QVERIFY(isAt(grid, {1, 1, 1}, {102.0, -18.0, 5.5}));
    }

    void aMapWithoutACellHasPointsOneAngstromApart() {
        Map map;
        map.cell = {};
        map.sampling = {};
        const TAVIK::Grid* grid = openMap(
            map.content(), {path() + ": the map's header has no cell: its points were taken "
                                     "to be 1 Angstrom apart"});
        QVERIFY(grid);
        QVERIFY(isAt(grid, {3, 2, 1}, {3.0, 2.0, 1.0}));
    }

    void anglesThatAreLeftOutAreRight() {
        Map map;
        map.cell = {16.0F, 12.0F, 8.0F, 0.0F, 0.0F, 0.0F};
        const TAVIK::Grid* grid = openMap(map.content());
        QVERIFY(grid);
        QVERIFY(isAt(grid, {3, 2, 1}, {6.0, 4.0, 2.0}));
    }

    void symmetryRecordsAreSkipped() {
        Map map;
        map.symmetryBytes = 160;
        QVERIFY(openMap(map.content()));
        QCOMPARE(valuesOf("/test"), map.values());
    }

    void bytesBehindTheValuesAreTold() {
        QVERIFY(
            openMap(Map().content() + "12345",
                    {path() + ": the file has 5 bytes more than the map's header promises; they "
                              "were left out"}));
        QCOMPARE(valuesOf("/test"), Map().values());
    }

    void contentDecidesAndMapsMayBePacked() {
        QVERIFY(openMap(Map().content(), {}, "a.pdb"));
        QVERIFY(openMap(gzipped(Map().content()), {}, "b.mrc.gz"));
        QVERIFY(openMap(Map().content(), {}, "c.CCP4"));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"a", "b", "c"}));
    }
};

REGISTER_TEST(MapFileTest)
#include "MapFileTest.moc"
