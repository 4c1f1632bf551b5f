#include "Colormap.h"
#include "TestSupport.h"
#include "services/DataFolder.h"

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <limits>
#include <memory>

using namespace memory_host;

class ColormapTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_dataFolder;

    QString path() const { return m_folder->filePath("test.cm"); }
    void write(const QByteArray& text) {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(text), text.size());
        setDataFolder(m_folder->path());
    }
    static Color rgb(int red, int green, int blue, int alpha = 255) {
        return Color(QColor(red, green, blue, alpha));
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        m_dataFolder = dataFolder();
    }
    void cleanup() override {
        setDataFolder(m_dataFolder);
        m_folder.reset();
        TestCase::cleanup();
    }

    void theTemperatureMapGoesFromBlueOverWhiteToRed() {
        Colormap map("BlueRedTR.cm", 101, "No name");
        QVERIFY(map.isValid());
        map.setMinMax(0.0F, 60.0F);
        QCOMPARE(map.lookupValue(0.0F), rgb(0, 0, 255));
        QCOMPARE(map.lookupValue(30.0F), rgb(255, 255, 255));
        QCOMPARE(map.lookupValue(60.0F), rgb(255, 0, 0));
        QColor before = map.lookupValue(0.0F).toQColor();
        for (int half = 0; half <= 120; ++half) {
            const QColor color = map.lookupValue(static_cast<float>(half) / 2.0F).toQColor();
            QVERIFY(color.red() >= before.red());
            QVERIFY(color.blue() <= before.blue());
            QCOMPARE(color.alpha(), 255);
            before = color;
        }
        QCOMPARE(map.lookupValue(15.0F), rgb(128, 128, 255));
        QCOMPARE(map.lookupValue(45.0F), rgb(255, 128, 128));
    }

    void valuesOutsideOfTheRangeTakeTheEndColours() {
        Colormap map("BlueRedTR.cm", 100, "No name");
        map.setMinMax(0.0F, 60.0F);
        constexpr float inf = std::numeric_limits<float>::infinity();
        for (const float value : {-0.001F, -1e30F, std::numeric_limits<float>::lowest(), -inf})
            QCOMPARE(map.lookupValue(value), rgb(0, 0, 255));
        for (const float value : {60.001F, 1e30F, std::numeric_limits<float>::max(), inf})
            QCOMPARE(map.lookupValue(value), rgb(255, 0, 0));
    }

    void whatIsNotANumberTakesTheFirstColour() {
        Colormap map("BlueRedTR.cm", 100, "No name");
        QCOMPARE(map.lookupValue(std::nanf("")), rgb(0, 0, 255));
        map.setMinMax(std::nanf(""), 60.0F);
        QCOMPARE(map.lookupValue(30.0F), rgb(0, 0, 255));
    }

    void theRangeIsFrom0To1AtFirst() {
        const Colormap map("BlueRedTR.cm", 101, "No name");
        QCOMPARE(map.lookupValue(0.5F), rgb(255, 255, 255));
        QCOMPARE(map.lookupValue(1.0F), rgb(255, 0, 0));
    }

    void theMapIsDividedIntoItsEntries() {
        write("0 0 0 0\n1 200 100 50\n");
        Colormap map("test.cm", 3, "three");
        map.setMinMax(10.0F, 20.0F);
        QCOMPARE(map.lookupValue(10.0F), rgb(0, 0, 0));
        QCOMPARE(map.lookupValue(12.4F), rgb(0, 0, 0));
        QCOMPARE(map.lookupValue(12.6F), rgb(100, 50, 25));
        QCOMPARE(map.lookupValue(17.4F), rgb(100, 50, 25));
        QCOMPARE(map.lookupValue(17.6F), rgb(200, 100, 50));
        const Colormap one("test.cm", 1, "one");
        for (const float value : {-1.0F, 0.5F, 2.0F})
            QCOMPARE(one.lookupValue(value), rgb(0, 0, 0));
    }

    void anyRangeOfFloatsWorks() {
        write("0 0 0 0\n1 200 100 50\n");
        Colormap map("test.cm", 3, "three");
        constexpr float most = std::numeric_limits<float>::max();
        map.setMinMax(-most, most);
        QCOMPARE(map.lookupValue(0.0F), rgb(100, 50, 25));
        QCOMPARE(map.lookupValue(most), rgb(200, 100, 50));
        // Turned round, the first entry stands for the larger value.
        map.setMinMax(20.0F, 10.0F);
        QCOMPARE(map.lookupValue(25.0F), rgb(0, 0, 0));
        QCOMPARE(map.lookupValue(15.0F), rgb(100, 50, 25));
        QCOMPARE(map.lookupValue(5.0F), rgb(200, 100, 50));
        map.setMinMax(5.0F, 5.0F);
        QCOMPARE(map.lookupValue(5.0F), rgb(0, 0, 0));
        QCOMPARE(map.lookupValue(4.0F), rgb(0, 0, 0));
        QCOMPARE(map.lookupValue(6.0F), rgb(200, 100, 50));
    }

    void alphaCommentsAndEdgesAreRead() {
        write("# comment\r\n\n\t0 1 2 3 4 # transparent\r\n0.5 10 20 30 40\r\n"
              "0.5 110 120 130\r\n1e0 0 0 0");
        Colormap map("test.cm", 5, "edges");
        map.setMinMax(0.0F, 4.0F);
        QCOMPARE(map.lookupValue(0.0F), rgb(1, 2, 3, 4));
        QCOMPARE(map.lookupValue(1.0F), rgb(6, 11, 17, 22));
        QCOMPARE(map.lookupValue(2.0F), rgb(110, 120, 130));
        QCOMPARE(map.lookupValue(4.0F), rgb(0, 0, 0));
    }

    void aMapOutlivesItsFile() {
        write("0 1 1 1\n1 2 2 2\n");
        const Colormap map("test.cm", 2, "kept");
        QVERIFY(QFile::remove(path()));
        QCOMPARE(map.lookupValue(1.0F), rgb(2, 2, 2));
    }

    void anErrorIsNamedWithFileAndLine_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("problem");
        QTest::newRow("word") << QByteArray("0 0 0 0\n1 red 0 0\n")
                              << ", line 2: 'red' is no whole number from 0 to 255";
        QTest::newRow("fraction") << QByteArray("0 0 0 0.5\n1 0 0 0\n")
                                  << ", line 1: '0.5' is no whole number from 0 to 255";
        QTest::newRow("too large") << QByteArray("0 0 0 0\n\n1 0 256 0\n")
                                   << ", line 3: '256' is no whole number from 0 to 255";
        QTest::newRow("negative") << QByteArray("0 0 0 -1\n1 0 0 0\n")
                                  << ", line 1: '-1' is no whole number from 0 to 255";
        QTest::newRow("alpha") << QByteArray("0 0 0 0 300\n1 0 0 0\n")
                               << ", line 1: '300' is no whole number from 0 to 255";
        QTest::newRow("short") << QByteArray("# c\n0 0 0\n1 0 0 0\n")
                               << ", line 2: a stop needs a position, red, green and blue";
        QTest::newRow("long") << QByteArray("0 0 0 0 0 7\n1 0 0 0\n")
                              << ", line 1: '7' stands behind the alpha";
        QTest::newRow("position") << QByteArray("0 0 0 0\n1.5 0 0 0\n")
                                  << ", line 2: '1.5' is no position from 0 to 1";
        QTest::newRow("nan") << QByteArray("nan 0 0 0\n1 0 0 0\n")
                             << ", line 1: 'nan' is no position from 0 to 1";
        QTest::newRow("comma") << QByteArray("0 0 0 0\n0,5 0 0 0\n1 0 0 0\n")
                               << ", line 2: '0,5' is no position from 0 to 1";
        QTest::newRow("descending") << QByteArray("0 0 0 0\n0.6 0 0 0\n0.5 0 0 0\n1 0 0 0\n")
                                    << ", line 3: the positions must ascend";
        QTest::newRow("no first") << QByteArray("0.1 0 0 0\n1 0 0 0\n")
                                  << ", line 1: the first stop must be at position 0";
        QTest::newRow("no last") << QByteArray("0 0 0 0\n0.9 0 0 0\n# end\n")
                                 << ", line 2: the last stop must be at position 1";
        QTest::newRow("one stop") << QByteArray("0 0 0 0\n")
                                  << ", line 1: the last stop must be at position 1";
        const QString none =
            ": it holds no stops; a stop is a line 'position red green blue [alpha]'";
        QTest::newRow("empty") << QByteArray() << none;
        QTest::newRow("comments") << QByteArray("# only\n") << none;
        QTest::newRow("binary") << QByteArray("\x89PNG\x00\x01", 6)
                                << QString::fromLatin1(", line 1: '\x89PNG") + QChar(0) + QChar(1) +
                                       "' is no position from 0 to 1";
        QTest::newRow("large file")
            << QByteArray((1 << 20) + 1, '\n') << ": it is larger than 1 MB";
    }
    void anErrorIsNamedWithFileAndLine() {
        QFETCH(const QByteArray, text);
        QFETCH(const QString, problem);
        write(text);
        const Colormap map("test.cm", 100, "bad");
        QVERIFY(!map.isValid());
        QCOMPARE(map.lookupValue(0.5F), rgb(255, 255, 255));
        QCOMPARE(takeHostLog(), QStringList("Colour map 'bad' " + path() + problem));
    }

    void aFileThatIsMissingIsNamed() {
        setDataFolder(m_folder->path());
        const Colormap map("test.cm", 100, "No name");
        QVERIFY(!map.isValid());
        const Colormap folder("", 100, "No name");
        QVERIFY(!folder.isValid());
        QCOMPARE(takeHostLog(),
                 QStringList({"Colour map 'No name' " + path() + ": there is no such file",
                              "Colour map 'No name' " + m_folder->path() + ": it is not a file"}));
    }

    void aNumberOfEntriesThatMakesNoMapIsRefused() {
        for (const int entries : {0, -1, 65537, std::numeric_limits<int>::max()}) {
            const Colormap map("BlueRedTR.cm", entries, "No name");
            QVERIFY(!map.isValid());
            const QStringList log = takeHostLog();
            QCOMPARE(log.size(), 1);
            QVERIFY2(log.first().endsWith(
                         QString("BlueRedTR.cm: %1 entries are asked for; 1 to 65536 are possible")
                             .arg(entries)),
                     qPrintable(log.first()));
        }
    }
};

REGISTER_TEST(ColormapTest)
#include "ColormapTest.moc"
