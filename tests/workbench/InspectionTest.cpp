// What the inspector says, against values that were put in and closed forms.
#include "Inspection.h"
#include "AtomTable.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "SelectedInOrder.h"
#include "TestData.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>

#include <sys/stat.h>

using namespace workbench;
using Items = std::vector<TAVIK::Compound*>;

class InspectionTest : public test_support::TestCase {
    Q_OBJECT

    static TAVIK::Compound* makeEntry() {
        return TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "made", "Composite");
    }
    static void select(const Items& items) {
        const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        for (TAVIK::Compound* item : items)
            item->SetSelected(true);
    }

private slots:
    void anAtomIsSaidWithAllThatIsKnownOfIt() {
        TAVIK::Atom* atom = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::AtomDetails details;
            details.occupancy = 0.35F;
            details.alternative = 'B';
            details.formalCharge = 2;
            details.serial = 77;
            details.isHetero = true;
            TAVIK::AtomValues values;
            values.name = "ZN";
            values.type = "Zn";
            values.position = TAVIK::Vertex(1.25F, -2.5F, 3.0F, true);
            values.temperature = 21.5F;
            values.model = 2;
            values.partial = {1.5F, 1.39F, true};
            values.details = details;
            atom = TAVIK::DataMaker::makeAtom(makeEntry(), values);
        }
        const Inspection seen = inspectItem(atom);
        QCOMPARE(seen.title, "/made/ZN");
        QCOMPARE(seen.value("Kind"), "Atom");
        QCOMPARE(seen.value("Element"), "Zn");
        QCOMPARE(seen.value("Position"), QString::fromUtf8("1.250, -2.500, 3.000 Å"));
        QCOMPARE(seen.value("Occupancy"), "0.35");
        QCOMPARE(seen.value("Temperature factor"), QString::fromUtf8("21.50 Å²"));
        QCOMPARE(seen.value("Alternative"), "B (model 2)");
        QCOMPARE(seen.value("Charge"), QString::fromUtf8("+2; partial 1.5000 e, radius 1.390 Å"));
        QCOMPARE(seen.value("Serial"), "77");
        QCOMPARE(seen.value("Record"), "HETATM");
        QVERIFY(seen.text().startsWith("/made/ZN\nName\tZN\n"));
    }

    void nothingIsSaidOfNothing() {
        QVERIFY(inspectItem(nullptr).title.isEmpty());
        QVERIFY(inspectSelection({}).title.isEmpty());
        QVERIFY(inspectItem(nullptr).text().isEmpty());
    }

    void aCompositeIsCountedAndAveraged() {
        const test_data::Chains chains(2, 3);
        const Inspection seen = inspectItem(chains.entry);
        QCOMPARE(seen.value("Residues"), "6");
        QCOMPARE(seen.value("Atoms"), "12");
        QCOMPARE(seen.value("Centre"), QString::fromUtf8("5.000, 3.000, 0.500 Å"));
        QCOMPARE(seen.value("Extent"), QString::fromUtf8("10.0 × 6.0 × 1.0 Å"));
        QCOMPARE(seen.value("Temperature factor"),
                 QString::fromUtf8("mean 10.00, 10.00 to 10.00 Å²"));
    }

    void aResidueSaysWhichOfItsModelsIsShown() {
        const test_data::Chains chains(1, 2);
        TAVIK::Compound* const residue = chains.residue(0, 0);
        QCOMPARE(inspectItem(residue).value("Models"), "");
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomModel(dynamic_cast<TAVIK::Atom*>(chains.atom(0, 0, 1)), 1);
            for (const unsigned int model : {2U, 7U})
                TAVIK::SetAtomModel(test_data::addAtom(residue, "CA", "C", 0, 0, 0), model);
            residue->NextModel();
        }
        QCOMPARE(inspectItem(residue).value("Models"), "3; number 2 is shown");
        QCOMPARE(inspectItem(chains.entry).value("Models"), "");
        select({residue});
        QCOMPARE(inspectSelection({}).value("Models"), "3; number 2 is shown");
        residue->NextModel();
        QCOMPARE(inspectSelection({}).value("Models"), "3; number 7 is shown");
        select({chains.residue(0, 1)});
        QCOMPARE(inspectSelection({}).value("Models"), ""); // two residues
    }

    void twoThreeAndFourAtomsAreMeasuredInTheirOrder() {
        TAVIK::Compound *a = nullptr, *b = nullptr, *c = nullptr, *d = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::Compound* const entry = makeEntry();
            a = test_data::addAtom(entry, "A", "C", 2, 0, 0);
            b = test_data::addAtom(entry, "B", "C", 0, 0, 0);
            c = test_data::addAtom(entry, "C", "C", 0, 0, 3);
            d = test_data::addAtom(entry, "D", "C", 0, 5, 3);
        }
        SelectedInOrder order;
        const auto seenAfter = [&](TAVIK::Compound* atom) {
            select({atom});
            order.update();
            return inspectSelection(order.atoms());
        };
        // Selected from the last to the first, against the order of the data.
        QCOMPARE(seenAfter(d).title, "/made/D");
        QCOMPARE(seenAfter(c).value("Distance"), QString::fromUtf8("5.000 Å"));
        Inspection seen = seenAfter(b);
        QCOMPARE(seen.value("Angle"), QString::fromUtf8("90.00°"));
        QCOMPARE(seen.value("Atom 1"), "/made/D");
        QCOMPARE(seen.value("Atom 2"), "/made/C");
        QCOMPARE(seen.value("Atom 3"), "/made/B");
        seen = seenAfter(a);
        QCOMPARE(seen.value("Torsion"), QString::fromUtf8("90.00°"));
        QCOMPARE(seen.value("Atoms"), "4");
    }

    void whatIsSelectedAtOnceStandsInTheOrderOfTheData() {
        const test_data::Chains chains(1, 4);
        SelectedInOrder order;
        select({chains.residue(0, 2)});
        order.update();
        select({chains.residue(0, 0)});
        order.update();
        QVERIFY((order.atoms() == Items{chains.atom(0, 2, 0), chains.atom(0, 2, 1),
                                        chains.atom(0, 0, 0), chains.atom(0, 0, 1)}));
        select({chains.residue(0, 1)});
        order.update();
        QVERIFY(order.atoms().empty());
        QVERIFY(inspectSelection(order.atoms()).value("Torsion").isEmpty());
        QCOMPARE(inspectSelection(order.atoms()).value("Residues"), "3, of which 3 wholly");
    }

    void aMapIsSaidWithItsStatistics() {
        TAVIK::Compound* grid = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::GridValues values;
            values.points = {2, 3, 4};
            values.origin = {1, 2, 3};
            values.steps = {{{0.5, 0, 0}, {0, 2, 0}, {1, 0, 1}}};
            for (int i = 1; i <= 24; ++i)
                values.values.push_back(static_cast<float>(i));
            grid = TAVIK::DataMaker::makeGrid(TAVIK::Space::instance(), "map", std::move(values));
        }
        QVERIFY(grid);
        const Inspection seen = inspectItem(grid);
        QCOMPARE(seen.value("Points"), QString::fromUtf8("2 × 3 × 4"));
        QCOMPARE(seen.value("Minimum"), "1");
        QCOMPARE(seen.value("Maximum"), "24");
        QCOMPARE(seen.value("Mean"), "12.5");
        // The root of (24² - 1) / 12.
        QCOMPARE(seen.value("Deviation"), "6.9222");
        // Edges of 2 x 0.5, 3 x 2 and 4 x root 2; the third axis at 45 degrees to the first.
        QCOMPARE(seen.value("Size"), QString::fromUtf8("1.00, 6.00, 5.66 Å; 90.00, 45.00, 90.00°"));
        QCOMPARE(seen.value("Origin"), QString::fromUtf8("1.000, 2.000, 3.000 Å"));
    }

    void aTableHasALineForEachAtom() {
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::Compound* const entry =
                TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "a \"b\", c\xe9", "Composite");
            TAVIK::AtomDetails details;
            details.alternative = ',';
            details.formalCharge = -1;
            test_data::addAtom(entry, "O", "O", 1, 2, -3.5F, details)->SetSelected(true);
            test_data::addAtom(entry, "H", "H", 1, 2, 3);
        }
        QBuffer buffer;
        QVERIFY(buffer.open(QIODevice::WriteOnly));
        QVERIFY(AtomTable::ofSelected(TAVIK::Space::instance()).write(buffer));
        QCOMPARE(QString::fromUtf8(buffer.data()),
                 QString::fromUtf8("name,element,x,y,z,occupancy,temperature factor,alternative,"
                                   "charge,partial charge\r\n"
                                   "\"/a \"\"b\"\", cé/O\",O,1.000,2.000,-3.500,1.00,10.00,\",\","
                                   "-1,\r\n"));
    }

    void aTableThatCannotBeWrittenIsSaidInOneLine() {
        const QString problem = AtomTable().save("/nowhere/atoms.csv");
        QVERIFY2(problem.startsWith("/nowhere/atoms.csv cannot be written: "), qPrintable(problem));
        const QTemporaryDir folder;
        QCOMPARE(AtomTable().save(folder.filePath("atoms.csv")), QString());
        const QString pipe = folder.filePath("pipe");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QCOMPARE(AtomTable().save(pipe), pipe + " cannot be written: it is no regular file");
        struct stat found {};
        QCOMPARE(stat(QFile::encodeName(pipe).constData(), &found), 0);
        QVERIFY(S_ISFIFO(found.st_mode));
    }

    void aSurfaceWithItsAreaAndItsValues() {
        // The halves of a rectangle of 3 x 4 Å, and a vertex of no triangle.
        TAVIK::SurfaceMesh mesh;
        mesh.vertices = {{0, 0, 0}, {3, 0, 0}, {3, 4, 0}, {0, 4, 0}, {0, 0, 5}};
        mesh.normals.assign(5, {0, 0, 1});
        mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
        const test_data::Chains chains(1, 1);
        TAVIK::Surface* surface = nullptr;
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            surface = TAVIK::DataMaker::makeSurface(TAVIK::Space::instance(), "skin", mesh);
        }
        QVERIFY(surface);
        Inspection seen = inspectItem(surface);
        QCOMPARE(seen.title, "/skin");
        QCOMPARE(seen.value("Vertices"), "5");
        QCOMPARE(seen.value("Triangles"), "2");
        QCOMPARE(seen.value("Area"), "12.0 Å²");
        QCOMPARE(seen.value("Mean"), "");
        mesh.values = {-2, 4, 1, std::nanf(""), 3};
        mesh.scale = TAVIK::ValueScale{"Values of pot on skin", -5, 5, {0xffff0000U, 0xff0000ffU}};
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            QVERIFY(TAVIK::SetSurfaceMesh(surface, mesh));
        }
        seen = inspectItem(surface);
        QCOMPARE(seen.value("Values"), "Values of pot on skin");
        QCOMPARE(seen.value("Minimum"), "-2");
        QCOMPARE(seen.value("Maximum"), "4");
        QCOMPARE(seen.value("Mean"), "1.5");
        QCOMPARE(seen.value("Without value"), "1 of the vertices");
        QCOMPARE(seen.value("Colours"), "from -5 to 5");

        // An own colour hides them; the maker may know the area better than the triangles tell.
        mesh.area = 12.34;
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            QVERIFY(TAVIK::SetSurfaceMesh(surface, mesh));
            surface->SetColor(Color(0xff123456U));
        }
        seen = inspectItem(surface);
        QCOMPARE(seen.value("Colours"), "");
        QCOMPARE(seen.value("Area"), "12.3 Å²");
    }
};

REGISTER_TEST(InspectionTest)
#include "InspectionTest.moc"
