// OpenDX grids: how files are written, and what is said of bad ones.
#include "FileTestCase.h"
#include "Geometry.h"
#include "Space.h"
#include "files/FileLimits.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <random>

using namespace file_testing;
using TAVIK::GridValues;

namespace {

/// A grid whose point (x, y, z) has the value 100 * z + 10 * y + x.
struct Dx {
    std::array<int, 3> points = {4, 3, 2};
    QByteArray before;
    QByteArray counts = "4 3 2";
    QByteArray origin = "origin 1.5 -2 3e1\n";
    QByteArray deltas = "delta 0.5 0 0\ndelta 0 1 0\ndelta 0 0 2\n";
    QByteArray connections = "object 2 class gridconnections counts 4 3 2\n";
    QByteArray array = "object 3 class array type double rank 0 items 24 data follows\n";
    QByteArray after = "attribute \"dep\" string \"positions\"\n"
                       "object \"regular positions regular connections\" class field\n"
                       "component \"positions\" value 1\n"
                       "component \"connections\" value 2\n"
                       "component \"data\" value 3\n";
    int inALine = 3;

    QByteArray numbers() const {
        QByteArray text;
        int count = 0;
        for (int x = 0; x < points[0]; ++x)
            for (int y = 0; y < points[1]; ++y)
                for (int z = 0; z < points[2]; ++z) {
                    text += QByteArray::number(100.0 * z + 10 * y + x, 'e', 6);
                    text += ++count % inALine == 0 ? '\n' : ' ';
                }
        return text.endsWith(' ') ? text.chopped(1) + '\n' : text;
    }
    QByteArray text() const { return beginning() + numbers() + after; }
    QByteArray beginning() const {
        return before + "object 1 class gridpositions counts " + counts + '\n' + origin + deltas +
               connections + array;
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

Dx cube(int points) {
    Dx dx;
    dx.points = {points, points, points};
    const QByteArray count = QByteArray::number(points);
    dx.counts = count + ' ' + count + ' ' + count;
    dx.connections = "object 2 class gridconnections counts " + dx.counts + '\n';
    dx.array.replace("24", QByteArray::number(points * points * points));
    return dx;
}

const QString accepted = QStringLiteral(
    "; accepted are OpenDX grids: gridpositions with counts, an origin and three deltas, and an "
    "array of as many numbers of rank 0 whose data follow as text");

/// The numbers of a file as a plain reader finds them: what stands behind "follows", in order.
std::vector<float> plainNumbers(const QByteArray& text) {
    const QByteArray data = text.mid(text.indexOf("follows") + 7);
    std::vector<float> numbers;
    for (const QByteArray& word : data.simplified().split(' ')) {
        bool isNumber = false;
        const double number = word.toDouble(&isNumber);
        if (!isNumber)
            break;
        numbers.push_back(static_cast<float>(number));
    }
    return numbers;
}

} // namespace

class OpenDxFileTest : public FileTestCase {
    Q_OBJECT
public:
    OpenDxFileTest() : FileTestCase(QStringLiteral("test.dx")) {}

private:
    const GridValues* openGrid(const QByteArray& text, const QStringList& remarks = {}) {
        init();
        openText(text, remarks);
        return TAVIK::GetGridValues(dynamic_cast<TAVIK::Grid*>(item("/test")));
    }
    /// What is said of a file behind its path.
    QString refused(const QByteArray& text) {
        const QString line = refusal(m_folder.write("test.dx", text));
        return line.startsWith(path()) ? line.mid(path().size()) : line;
    }

private slots:
    void aGridHasTheValuesAtThePositionsOfTheFile() {
        const GridValues* const grid = openGrid(Dx().text());
        QVERIFY(grid);
        QCOMPARE(grid->points, (std::array<int, 3>{4, 3, 2}));
        QCOMPARE(grid->origin, (std::array<double, 3>{1.5, -2, 30}));
        QCOMPARE(grid->steps[0], (std::array<double, 3>{0.5, 0, 0}));
        QCOMPARE(grid->steps[1], (std::array<double, 3>{0, 1, 0}));
        QCOMPARE(grid->steps[2], (std::array<double, 3>{0, 0, 2}));
        QCOMPARE(grid->values, Dx().values());
    }

    void stepsMayBeSkewedAndBackwards() {
        Dx dx;
        dx.deltas = "delta 0.5 0.1 0\ndelta -.25 1 0.5\ndelta 0 +0.5 -2\n";
        const GridValues* const grid = openGrid(dx.text());
        QVERIFY(grid);
        QCOMPARE(grid->steps[0], (std::array<double, 3>{0.5, double(0.1F), 0}));
        QCOMPARE(grid->steps[1], (std::array<double, 3>{-0.25, 1, 0.5}));
        QCOMPARE(grid->steps[2], (std::array<double, 3>{0, 0.5, -2}));
        QCOMPARE(grid->values, dx.values());
    }

    void manyPlanesAreTurnedToo() {
        for (const int points : {1, 15, 16, 17, 33}) {
            const Dx dx = cube(points);
            const GridValues* const grid = openGrid(dx.text());
            QVERIFY(grid);
            QCOMPARE(grid->values, dx.values());
        }
    }

    void itMayBeWrittenInManyWays_data() {
        QTest::addColumn<QByteArray>("text");
        Dx dx;
        dx.before = "# Data from a solver\n#\n# POTENTIAL (kT/e)\n#\n\n";
        QTest::newRow("comments") << dx.text();
        QTest::newRow("line ends of another system") << dx.text().replace("\n", "\r\n");
        QTest::newRow("line ends of an old system") << dx.text().replace("\n", "\r");
        QTest::newRow("a byte order mark") << "\xef\xbb\xbf" + dx.text();
        QTest::newRow("comments between values")
            << dx.text().replace("1.000000e+00", "1.000000e+00 # one\n#\n");
        dx = Dx();
        dx.after.clear();
        QTest::newRow("no attributes") << dx.text();
        QTest::newRow("no last line end") << dx.text().chopped(1);
        dx.connections.clear();
        QTest::newRow("no connections") << dx.text();
        dx.after = "end\n";
        QTest::newRow("an end") << dx.text();
        dx = Dx();
        dx.inALine = 1;
        QTest::newRow("a value a line") << dx.text();
        dx.inALine = 1000;
        QTest::newRow("all values in a line") << dx.text();
        dx.array = "object 3 class array type \"double\" category real rank 0\n  items 24\n"
                   "attribute_free text data follows\n";
        dx.array.replace("attribute_free ", "");
        QTest::newRow("an object over several lines") << dx.text();
        dx.array = "object \"values\" class array items 24 data follows\n";
        QTest::newRow("neither type nor rank") << dx.text();
        dx.deltas.replace('\n', ' ').replace("delta", "\tdelta ");
        dx.deltas += '\n';
        QTest::newRow("deltas in a line") << dx.text();
    }
    void itMayBeWrittenInManyWays() {
        QFETCH(QByteArray, text);
        const GridValues* const grid = openGrid(text);
        QVERIFY(grid);
        QCOMPARE(grid->steps[1], (std::array<double, 3>{0, 1, 0}));
        QCOMPARE(grid->values, Dx().values());
    }

    void itIsKnownByItsContentUnderAnyName() {
        openText(Dx().text(), {}, "any.txt");
        QVERIFY(TAVIK::GetGridValues(dynamic_cast<TAVIK::Grid*>(item("/any.txt"))));
        openText(gzipped(Dx().text()), {}, "packed.dx.gz");
        QVERIFY(TAVIK::GetGridValues(dynamic_cast<TAVIK::Grid*>(item("/packed"))));
    }

    void realFilesHaveTheNumbersOfAPlainReader() {
        for (const char* const name : {"griddata.dx", "griddata-fields.dx.gz"}) {
            init();
            const QString path = structure(name);
            opened(path.toStdString());
            const auto* const grid = TAVIK::GetGridValues(
                dynamic_cast<TAVIK::Grid*>(TAVIK::Space::instance()->ChildBegin()[0]));
            QVERIFY(grid);
            QProcess unpack;
            unpack.start("gzip", {"-dcf", path});
            QVERIFY(unpack.waitForFinished());
            const std::vector<float> numbers = plainNumbers(unpack.readAllStandardOutput());
            QCOMPARE(grid->points, (std::array<int, 3>{2, 2, 2}));
            QCOMPARE(numbers.size(), std::size_t(8));
            for (std::size_t x = 0; x != 2; ++x)
                for (std::size_t y = 0; y != 2; ++y)
                    for (std::size_t z = 0; z != 2; ++z)
                        QCOMPARE(grid->values[x + 2 * (y + 2 * z)], numbers[(x * 2 + y) * 2 + z]);
            QCOMPARE(grid->origin, (std::array<double, 3>{double(20.1F), 3, -10}));
        }
    }

    void numbersAreReadToTheLastBit() {
        std::mt19937 random(7);
        std::uniform_real_distribution<double> exponent(-30, 30);
        Dx dx = cube(12);
        QByteArray text = dx.beginning();
        for (int i = 0; i != 12 * 12 * 12; ++i) {
            const double value = std::pow(10.0, exponent(random)) * (i % 2 ? -1 : 1);
            text += QByteArray::number(value, i % 3 ? 'e' : 'g', 6 + i % 11) + ' ';
        }
        const GridValues* const grid = openGrid(text);
        QVERIFY(grid);
        const std::vector<float> numbers = plainNumbers(text);
        for (std::size_t i = 0; i != numbers.size(); ++i) {
            const std::size_t x = i / 144;
            const std::size_t y = i / 12 % 12;
            const std::size_t z = i % 12;
            QCOMPARE(grid->values[x + 12 * (y + 12 * z)], numbers[i]);
        }
    }

    void furtherValuesAreLeftOutWithARemark() {
        Dx dx;
        dx.after = "object 4 class array type double rank 0 items 1 data follows\n1\n";
        QVERIFY(openGrid(dx.text(), {path() + ":16: the file has further values; only the first "
                                              "ones were read"}));
    }

    void whatIsNoGridIsRefused_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("said");
        const auto add = [](const char* name, const QByteArray& text, const QString& said) {
            QTest::newRow(name) << text << said + accepted;
        };
        const auto counted = [](const QByteArray& counts) {
            Dx dx;
            dx.counts = counts;
            return dx.text();
        };
        const QString between = ", and not between 1 and 1073741824";
        add("negative", counted("-4 3 2"), ":1: a number of points is \"-4\"" + between);
        add("zero", counted("0 3 2"),
            ":1: the grid has a number of points that is not between 1 and 1073741824");
        add("1e12 points", counted("10000 10000 10000"),
            ":1: the grid has a number of points that is not between 1 and 1073741824");
        add("huge", counted("99999999999999999999 1 1"),
            ":1: a number of points is \"99999999999999999999\"" + between);
        add("a fraction", counted("4.5 3 2"), ":1: \"4.5\" stands where a whole number should be");
        add("two counts", counted("4 3"), ":2: \"origin\" stands where a whole number should be");
        add("other counts", counted("4 3 3"),
            ":7: the grid has 4 x 3 x 3 points, and its array 24 values");
        Dx dx;
        dx.counts = "1000 1000 1000";
        dx.array.replace("24", "1000000000");
        const auto bytes = dx.text().size() - dx.beginning().size() + 1;
        add("a promise of a billion", dx.text(),
            QString(":7: the grid has 1000 x 1000 x 1000 points, and only %1 bytes of values "
                    "follow: the file is cut")
                .arg(bytes));
        dx = Dx();
        dx.origin.clear();
        add("no origin", dx.text(), ":5: \"object\" stands where the origin should be");
        dx.origin = "origin 1 nan 2\n";
        add("an origin that is NaN", dx.text(),
            ":2: \"nan\" stands where a number of the origin should be");
        dx = Dx();
        dx.deltas = "delta 0.5 0 0\ndelta 0 1 0\n";
        add("two deltas", dx.text(), ":5: \"object\" stands where the delta of an axis should be");
        const QString flat =
            ": the grid's three deltas are no steps in space: one is 0, or all lie in a plane";
        dx.deltas = "delta 0.5 0 0\ndelta 0 0 0\ndelta 0 0 2\n";
        add("a step of 0", dx.text(), ":5" + flat);
        dx.deltas = "delta 0.5 0 0\ndelta 0 1 0\ndelta 1 1 0\n";
        add("steps in a plane", dx.text(), ":5" + flat);
        dx.deltas = "delta 1e30 0 0\ndelta 0 inf 0\ndelta 0 0 2\n";
        add("an infinite step", dx.text(),
            ":4: \"inf\" stands where a number of the delta should be");
        dx = Dx();
        add("cut in the values", dx.text().left(dx.beginning().size() + 104),
            ":10: the array promises 24 values, and has 8");
        add("cut in the array", dx.beginning().chopped(8),
            ":7: the file ends where \"follows\" behind the array's \"data\" should be: it is cut");
        add("cut in the positions", dx.text().left(60),
            ":3: the file ends where the delta of an axis should be: it is cut");
        add("cut in a word", dx.text().left(20),
            ":1: the file ends where an object of gridpositions should be: it is cut");
        add("cut before the array", dx.text().left(dx.text().indexOf("object 2")),
            ":6: the file ends where the array of the grid's values should be: it is cut");
        dx.array.replace("24", "23");
        add("an array of fewer", dx.text(),
            ":7: the grid has 4 x 3 x 2 points, and its array 23 values");
        dx.array = "object 3 class array type double rank 0 data follows\n";
        add("an array of unknown size", dx.text(),
            ":7: the grid has 4 x 3 x 2 points, and its array does not say how many values");
        dx.array = "object 3 class array type double rank 1 shape 3 items 24 data follows\n";
        add("vectors", dx.text(), ":7: the array's values are of rank \"1\"");
        dx.array = "object 3 class array type float rank 0 items 24 lsb ieee data 0\n";
        add("binary", dx.text(),
            ":7: \"lsb\" stands where the array's \"items\" or \"data follows\" should be");
        dx.array = "object 3 class array type float rank 0 items 24 data file values.bin\n";
        add("another file", dx.text(),
            ":7: \"file\" stands where \"follows\" behind the array's \"data\" should be");
        dx = Dx();
        const QByteArray value = "1.110000e+02";
        QVERIFY(dx.text().contains(value));
        add("fewer values", dx.text().replace(value, ""),
            ":16: the array promises 24 values, and has 23");
        add("more values", dx.text().replace(value, value + " 1"),
            ":15: more values follow than the 24 that the array promises");
        add("a word", dx.text().replace(value, "many"), ":11: the value \"many\" is no number");
        add("two numbers in one", dx.text().replace(value, "1.5.5"),
            ":11: the value \"1.5.5\" is no number");
        add("NaN", dx.text().replace(value, "nan"), ":11: the value \"nan\" is no number");
        add("infinite", dx.text().replace(value, "-inf"), ":11: the value \"-inf\" is no number");
        add("beyond a float", dx.text().replace(value, "1e39"),
            ":11: the value \"1e39\" is no number");
        dx.after = "thank you\n";
        add("something else behind", dx.text(),
            ":16: \"thank\" stands where an attribute or an object behind the values should be");
        dx = Dx();
        add("the array first", dx.array + dx.numbers(),
            ":1: an array comes before the gridpositions");
        dx.connections = "object 2 class gridpositions counts 1 1 1\n";
        add("two grids", dx.text(), ":6: the file has several grids");
        dx.connections = "object 2 of another kind\n";
        add("an object without a class", dx.text(),
            ":6: \"of\" stands where the object's \"class\" should be");
        add("no grid", "object 1 class field\n",
            ":2: the file ends where an object of gridpositions should be: it is cut");
    }
    void whatIsNoGridIsRefused() {
        QFETCH(QByteArray, text);
        QFETCH(QString, said);
        QCOMPARE(refused(text), said);
        QVERIFY(!TAVIK::Space::instance()->HasChildren());
    }

    void everyBeginningIsRefusedOrWhole() {
        Dx dx;
        const QByteArray text = dx.text();
        const auto whole = text.indexOf("attribute");
        for (qsizetype size = 1; size < whole - 1; ++size) {
            // The last digits of the last number may be missing: that cannot be seen.
            if (size > whole - 14)
                break;
            QVERIFY2(!refused(text.left(size)).isEmpty(), qPrintable(QString::number(size)));
        }
    }

    void valuesThatDoNotFitIntoMemoryAreRefused() {
        auto& limits = memory_host::fileLimits();
        const auto before = limits.freeMemory;
        const Dx dx = cube(80);
        limits.freeMemory = [] { return std::size_t{2'000'000}; };
        const std::string file = m_folder.write("test.dx", gzipped(dx.text()));
        const QString line = refusal(file);
        limits.freeMemory = before;
        QVERIFY2(line.contains(" MB of memory to go on, and 2 MB are free; "), qPrintable(line));
    }
};

REGISTER_TEST(OpenDxFileTest)
#include "OpenDxFileTest.moc"
