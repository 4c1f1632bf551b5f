// The first picture of files, as the view shows them before anybody asks for anything.
#include "Ancestry.h"
#include "ViewTestCase.h"
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"

#include <QMap>

#include <map>
#include <set>

using namespace view_tools;

namespace {

using Drawn = QMap<QString, QString>;

} // namespace

class FirstPictureTest : public ViewTestCase {
    Q_OBJECT

    /// The letters of how the atoms of residues are drawn, by the residues' names without a number:
    /// "b" as balls, "r" as a ribbon through one of them, "s" as sticks.
    static Drawn drawn(const view::Look& look) {
        view::DataReader reader;
        reader.read();
        const view::Snapshot& snapshot = reader.snapshot();
        const auto scene = view::SceneMaker().scene(snapshot, look);
        std::map<QString, std::set<QChar>> all;
        const auto add = [&](view::Id id, char as) {
            const TAVIK::Compound* item = reader.item(id, snapshot.generation);
            while (!dynamic_cast<const TAVIK::Residue*>(item))
                item = TAVIK::GetParent(item);
            all[QString::fromStdString(item->GetName()).section(' ', 0, 0)].insert(QLatin1Char(as));
        };
        for (const auto& mesh : scene->meshes)
            for (const view::Id id : mesh->ids)
                add(id, 'r');
        for (const view::Segment& stick : scene->sticks)
            for (const std::uint32_t point : {stick.from, stick.to})
                add(scene->ids[point], 's');
        for (const view::Ball& ball : scene->balls)
            add(scene->ids[ball.point], 'b');
        Drawn letters;
        for (const auto& [name, ways] : all)
            for (const QChar way : ways)
                letters[name] += way;
        return letters;
    }
    /// Opens a file as the program does, with a view that is new.
    Drawn firstPicture(const QString& path) {
        memory_host::openFile(path.toStdString());
        m_view = std::make_unique<view::View3D>();
        m_view->resize(400, 300);
        show();
        // All of it is in sight.
        const QImage& image = canvas().drawn().image;
        const QRgb plain = image.pixel(0, 0);
        int something = 0;
        for (int y = 0; y != image.height(); ++y) {
            for (int x = 0; x != image.width(); ++x)
                something += image.pixel(x, y) != plain ? 1 : 0;
            if (image.pixel(0, y) != plain || image.pixel(image.width() - 1, y) != plain)
                return {};
        }
        if (something * 100 < image.width() * image.height())
            return {};
        return drawn(canvas().order().look);
    }

private slots:
    void theSampleHasARibbonSticksForLigandsAndNoWaters() {
        const Drawn first = firstPicture(SOURCE_DIR "/data/sample.pdb");
        QCOMPARE(first.value("VAL"), "r");
        QCOMPARE(first.value("GLY"), "r");
        QCOMPARE(first.value("NAG"), "s");
        QCOMPARE(first.value("BMA"), "s");
        QCOMPARE(first.value("SO4"), "s");
        // They hold sugars.
        QCOMPARE(first.value("ASN"), "rs");
        QVERIFY(!first.contains("HOH"));
        // But where they are asked for.
        QTest::keyClick(&canvas(), Qt::Key_W);
        QCOMPARE(drawn(canvas().order().look).value("HOH"), "b");
    }

    void aFileOfYourOwnIsDrawnAsSuitsIt_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("residue");
        QTest::addColumn<QString>("ways");
        QTest::newRow("a protein") << "1cbs.cif.gz"
                                   << "ARG"
                                   << "r";
        QTest::newRow("its ligand") << "1cbs.cif.gz"
                                    << "REA"
                                    << "s";
        QTest::newRow("a peptide, with hydrogens") << "3al1.pdb"
                                                   << "LEU"
                                                   << "r";
        QTest::newRow("what caps it") << "3al1.pdb"
                                      << "ACE"
                                      << "s";
        QTest::newRow("a protein of a ribosome") << "6zu5.cif"
                                                 << "LYS"
                                                 << "r";
        QTest::newRow("its RNA") << "6zu5.cif"
                                 << "G"
                                 << "r";
    }
    void aFileOfYourOwnIsDrawnAsSuitsIt() {
        QFETCH(QString, file);
        QFETCH(QString, residue);
        QFETCH(QString, ways);
        QCOMPARE(firstPicture(structure(file)).value(residue), ways);
    }
};

REGISTER_TEST(FirstPictureTest)
#include "FirstPictureTest.moc"
