// "Color by Temp": the colours of temperature factors, and colour maps that cannot be read.
#include "Colormap.h"
#include "ColourTestCase.h"
#include "Kinds.h"
#include "Space.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "services/DataFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <limits>

using namespace colour_tools;
using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

// The host reads its data from another folder while one lives.
class DataFolder {
public:
    explicit DataFolder(const QString& folder) { memory_host::setDataFolder(folder); }
    ~DataFolder() { memory_host::setDataFolder(m_before); }
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

private:
    const QString m_before = memory_host::dataFolder();
};

} // namespace

class ColourByTemperatureTest : public ColourTestCase {
    Q_OBJECT

private slots:
    void temperaturesAreColouredFromZeroToSixty_data() {
        QTest::addColumn<float>("temperature");
        QTest::addColumn<unsigned int>("rgba");
        constexpr float infinity = std::numeric_limits<float>::infinity();
        QTest::newRow("low end") << 0.0F << blue.rgba();
        QTest::newRow("high end") << 60.0F << red.rgba();
        QTest::newRow("between") << 15.0F << 0xff8181ffU; // entry 25 of 0 to 99
        QTest::newRow("below") << -5.0F << blue.rgba();
        QTest::newRow("above") << 60.5F << red.rgba();
        QTest::newRow("far above") << std::numeric_limits<float>::max() << red.rgba();
        QTest::newRow("infinite") << infinity << red.rgba();
        QTest::newRow("infinitely low") << -infinity << blue.rgba();
        QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << blue.rgba();
    }
    void temperaturesAreColouredFromZeroToSixty() {
        QFETCH(float, temperature);
        QFETCH(unsigned int, rgba);
        // Alone, so that no range could be found in the atoms.
        Compound* shown = addWarm("1abc", {temperature});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(!run(byTemperature));
        QCOMPARE(QString::number(atomsOf(shown)[0]->GetColor().rgba(), 16),
                 QString::number(rgba, 16));
        QCOMPARE(takeMessages(), QStringList{byTemperature.line});
    }

    void onlySelectedAtomsAreColouredByTemperature() {
        Compound* shown = addWarm("1abc", {0, 60, 60});
        Compound* other = addWarm("2abc", {0});
        other->SetSelected(true);
        shown->SetSelected(true);
        atomsOf(shown)[2]->SetSelected(false);
        showWindow();
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red, carbon}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), carbon);
        for (const QStringList& path : {QStringList{"A"}, {"A", "Bonds"}, {"A", "Groups"}})
            QCOMPARE(itemAt(shown, path)->GetColor(), white);
        QCOMPARE(itemAt(shown, {"A", "Bonds"})->ChildBegin()[0]->GetColor(), white);
        QVERIFY(itemAt(shown, {"A", "Bonds"})->IsSelected());
        QCOMPARE(selectedNames(shown), "C C"); // the selection stays
        QCOMPARE(takeMessages().size(), 1);
    }

    void atomsWithoutARowAreColouredByTemperatureToo() {
        Compound* shown = addWarm("1abc", {0});
        showWindow();
        Compound* group = itemAt(shown, {"A", "Groups", "UNL 1", "Group"});
        memory_host::addAtom(group, {"X", "C", {}, 60.0F, 0}); // nobody is told
        shown->SetSelected(true);
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aColourMapThatIsMissingIsSaidAndTheAtomsKeepTheirColours() {
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        atomsOf(shown)[0]->SetColor(teal);
        showWindow();
        OtherPlugin other;
        const QTemporaryDir empty;
        {
            const DataFolder folder(empty.path());
            run(byTemperature);
        }
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{teal, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().startsWith("Colour map 'No name' " +
                                        empty.filePath(QStringLiteral("BlueRedTR.cm")) + ": "),
                 qPrintable(log.front()));
        QCOMPARE(other.updates, 1);
        // The next time it may be there.
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red}));
        QCOMPARE(takeMessages(), (QStringList{byTemperature.line, byTemperature.line}));
    }

    void aColourMapThatIsDamagedIsSaidWithItsLine_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("said"); // behind the file's name
        const auto row = [](const char* name, const QByteArray& content, const char* said) {
            QTest::newRow(name) << content << said;
        };
        const QByteArray end = "1 255 0 0\n";
        row("a word", "0 0 0 255\n0.5 255 255 white\n" + end, ", line 2: 'white' is no whole");
        row("empty", "", ": it holds no stops");
        row("comments alone", "# no\n\n  # stops\n", ": it holds no stops");
        row("zero bytes", QByteArray(100, '\0'), ", line 1: ");
        row("noise", QByteArray("\x89PNG\r\n\x1a\n\xff\xfe\x00\x01", 12), ", line 1: ");
        row("one endless line", QByteArray(100'000, '7'), ", line 1: ");
        row("no number as position", "0 0 0 255\nnan 0 0 0\n" + end, ", line 2: 'nan'");
        row("infinite position", "0 0 0 255\n1e400 0 0 0\n" + end, ", line 2: '1e400'");
        row("comma", "0 0 0 255\n0,5 0 0 0\n" + end, ", line 2: '0,5'");
        row("cut off", "0 0 0 255\n0.5 255", ", line 2: a stop needs");
        row("starts late", "0.1 0 0 255\n" + end, ", line 1: the first stop");
        row("ends early", "0 0 0 255\n0.9 0 0 0\n", ", line 2: the last stop");
        row("goes back", "0 0 0 0\n0.5 0 0 0\n0.4 0 0 0\n" + end, ", line 3: the positions");
        row("too bright", "0 0 0 256\n" + end, ", line 1: '256'");
        row("negative", "0 0 -1 255\n" + end, ", line 1: '-1'");
        row("a fifth value", "0 0 0 255 255 1\n" + end, ", line 1: '1' stands behind");
    }
    void aColourMapThatIsDamagedIsSaidWithItsLine() {
        QFETCH(QByteArray, content);
        QFETCH(QString, said);
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        showWindow();
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("BlueRedTR.cm")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const DataFolder damaged(folder.path());
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().contains("BlueRedTR.cm" + said), qPrintable(log.front()));
        QVERIFY(log.front().size() < 1000);
        QCOMPARE(takeMessages().size(), 1);
    }

    void aFolderInTheColourMapsPlaceIsSaid() {
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        showWindow();
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("BlueRedTR.cm")));
        const DataFolder damaged(folder.path());
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().contains("BlueRedTR.cm: "), qPrintable(log.front()));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aRefusedCommandDoesNotEvenReadTheColourMap() {
        addWarm("1abc", {0})->SetSelected(true);
        showWindow();
        const QTemporaryDir empty;
        const DataFolder folder(empty.path());
        const memory_host::SpaceLock lock;
        run(byTemperature);
        QCOMPARE(takeHostLog(), QStringList());
        QCOMPARE(takeMessages(), (QStringList{byTemperature.line, refused}));
    }

    void aRealStructureIsColouredAsTheMapSays() {
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        shown->SetSelected(true);
        showWindow();
        run(byTemperature);
        Colormap map("BlueRedTR.cm", 100, "expected");
        map.setMinMax(0.0F, 60.0F);
        int different = 0;
        Color last;
        for (const Compound* item : atomsOf(shown)) {
            const auto* atom = dynamic_cast<const TAVIK::Atom*>(item);
            QVERIFY(atom);
            const Color expected = map.lookupValue(atom->GetTemperature());
            QCOMPARE(atom->GetColor(), expected);
            different += expected != last;
            last = expected;
        }
        QVERIFY(different > 100);
        QCOMPARE(takeMessages().size(), 1);
    }
};

REGISTER_TEST(ColourByTemperatureTest)
#include "ColourByTemperatureTest.moc"
