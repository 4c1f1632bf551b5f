// What the view reads of the data space, and how it follows changes.
#include "scene/DataReader.h"

#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "SceneTools.h"
#include "TestSupport.h"

using namespace scene_tools;
using view::DataReader;
using view::ResidueKind;

namespace {

/// The kinds of the residues, a letter each; small for those that are no part of a polymer.
QString kinds(const view::Contents& contents) {
    QString letters;
    for (const view::ResidueEntry& residue : contents.residues) {
        const char letter = "ANWIMO"[int(residue.kind)];
        letters += QChar::fromLatin1(residue.isPolymer ? letter : char(letter + 32));
    }
    return letters;
}

} // namespace

class DataReaderTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anEmptySpaceGivesNothing() {
        DataReader reader;
        reader.read();
        QCOMPARE(reader.snapshot().contents->itemCount(), std::size_t(0));
        QVERIFY(reader.snapshot().contents->entries.empty());
        QVERIFY(!reader.item(1, reader.snapshot().generation));
    }

    void atomsComeInTheOrderOfTheDataWithPositionElementAndColour() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.add("HOH 2", {{"O", "O", {9, 8, 7}}});
        made.bond(1, 2);
        made.attach();
        made.atoms[3]->SetColor(Color(0xff123456U));
        DataReader reader;
        reader.read();
        const view::Contents& contents = *reader.snapshot().contents;
        QCOMPARE(contents.atomCount(), std::size_t(6));
        QCOMPARE(contents.positions[1], (view::Point{1.3F, 0.5F, 0}));
        QCOMPARE(contents.positions[5], (view::Point{9, 8, 7}));
        QCOMPARE(contents.atomicNumbers, (std::vector<std::uint8_t>{7, 6, 6, 8, 6, 8}));
        QCOMPARE(reader.snapshot().marks->colours[3], 0xff123456U);
        QCOMPARE(reader.snapshot().marks->colours[1], made.atoms[1]->GetColor().rgba());
        QCOMPARE(contents.bonds.size(), std::size_t(1));
        QCOMPARE(contents.bonds[0].from, 1U);
        QCOMPARE(contents.bonds[0].to, 2U);
        for (std::size_t i = 0; i != made.atoms.size(); ++i) {
            const view::Id id = view::idOf(i);
            QCOMPARE(reader.item(id, reader.snapshot().generation), made.atoms[i]);
            QCOMPARE(reader.id(made.atoms[i]), id);
        }
        QCOMPARE(reader.id(made.entry), view::noId);
        QCOMPARE(reader.id(nullptr), view::noId);
    }

    void bondsFindTheirAtomsAcrossEntriesOfAnyOrder() {
        Structure one("1one");
        one.add("UNL 1", {{"C1", "C", {0, 0, 0}}, {"C2", "C", {1, 0, 0}}});
        Structure two("2two");
        two.add("UNL 1", {{"C1", "C", {0, 5, 0}}, {"C2", "C", {1, 5, 0}}});
        // Identifiers rise in order of creation: those of the first entry are the higher ones.
        two.attach();
        one.attach();
        memory_host::addBond(two.bonds, two.atoms[1], one.atoms[0]);
        one.bond(0, 1);
        DataReader reader;
        reader.read();
        const view::Contents& contents = *reader.snapshot().contents;
        QCOMPARE(contents.bonds.size(), std::size_t(2));
        QCOMPARE(contents.bonds[0].from, 1U);
        QCOMPARE(contents.bonds[0].to, 2U);
        QCOMPARE(contents.bonds[1].from, 2U);
        QCOMPARE(contents.bonds[1].to, 3U);
        QCOMPARE(contents.entries.size(), std::size_t(2));
    }

    void residuesAreToldByNameAndAtoms() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.add("MSE 2", alanine(3.8F));
        made.add("GLY 9", alanine(90));
        made.add("HOH 3", {{"O", "O", {9, 8, 7}}});
        made.add("CA 4", {{"CA", "CA", {9, 8, 9}}});
        made.add("LIG 5", {{"C1", "C", {20, 8, 9}}, {"C2", "C", {21, 8, 9}}});
        made.add("DUM 6", {{"N", "N", {30, 8, 9}}});
        made.add("HOH 7", {{"O", "O", {9, 18, 7}}, {"H1", "H", {10, 18, 7}}});
        made.attach();
        DataReader reader;
        reader.read();
        const view::Contents& contents = *reader.snapshot().contents;
        QCOMPARE(kinds(contents), QString("AAawiomw"));
        QVERIFY(contents.residues[0].isStandard);
        QVERIFY(!contents.residues[1].isStandard);
        QVERIFY(!contents.residues[0].isLinkedToPrevious);
        QVERIFY(contents.residues[1].isLinkedToPrevious);
    }

    void alternativesOfAResidueOrAWaterChangeNoKind() {
        Structure made;
        made.add("PRO,SER 1", alanine(0));
        made.add("ALA,MSE 2", alanine(3.8F));
        made.add("HOH 3", {{"O", "O", {9, 8, 7}, 1}, {"O", "O", {9, 8, 8}, 2}});
        made.attach();
        DataReader reader;
        reader.read();
        const view::Contents& contents = *reader.snapshot().contents;
        QCOMPARE(kinds(contents), QString("AAw"));
        QVERIFY(contents.residues[0].isStandard);
        QVERIFY(!contents.residues[1].isStandard);
    }

    void tracesAndNucleotidesAreChains() {
        Structure made;
        for (int i = 0; i != 3; ++i)
            made.add("ALA " + std::to_string(i), {{"CA", "C", {3.8F * float(i), 0, 0}}});
        for (int i = 0; i != 2; ++i)
            made.add("G " + std::to_string(i), {{"P", "P", {6.0F * float(i), 20, 0}}});
        for (int i = 0; i != 2; ++i) {
            const float x = 6.0F * float(i);
            made.add("DA " + std::to_string(i), {{"P", "P", {x, 40, 0}},
                                                 {"C4'", "C", {x + 2, 40, 0}},
                                                 {"C3'", "C", {x + 3, 40, 0}},
                                                 {"C1'", "C", {x + 3, 41, 0}},
                                                 {"N9", "N", {x + 3, 42, 0}},
                                                 {"O3'", "O", {x + 4.4F, 40, 0}}});
        }
        made.attach();
        DataReader reader;
        reader.read();
        QCOMPARE(kinds(*reader.snapshot().contents), QString("AAANNNN"));
        const auto& residues = reader.snapshot().contents->residues;
        QVERIFY(!residues[3].isLinkedToPrevious);
        QVERIFY(!residues[5].isLinkedToPrevious);
        QVERIFY(residues[6].isLinkedToPrevious);
    }

    void atomsOutsideOfResiduesAreThereToo() {
        TAVIK::Compound* entry = memory_host::makeDetached("loose", "Composite");
        memory_host::addAtom(entry, {"X", "C", TAVIK::Vertex(1, 2, 3, true)});
        memory_host::addAtom(entry, {"Y", "C", TAVIK::Vertex(0, 0, 0, false)});
        TAVIK::DataMaker::makeCore(entry, "EMP 1", "Residue");
        memory_host::attach(entry, space());
        memory_host::addAtom(space(), {"Z", "C", TAVIK::Vertex(4, 5, 6, true)});
        DataReader reader;
        reader.read();
        const view::Contents& contents = *reader.snapshot().contents;
        QCOMPARE(contents.atomCount(), std::size_t(3));
        QVERIFY(std::isnan(contents.positions[1][0]));
        QCOMPARE(contents.entries.size(), std::size_t(2));
        QCOMPARE(contents.residues.size(), std::size_t(2));
        QCOMPARE(contents.atomEnd(0), 2U);
    }

    void anUpdateReadsColoursVisibilityAndSelectionAsANewReadingWould() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.add("ALA 2",
                 {{"N", "N", {0, 0, 0}}, {"CB", "C", {1, 0, 0}, 1}, {"CB", "C", {1, 1, 0}, 2}});
        made.bond(0, 1);
        TAVIK::Compound* bond = made.bond(1, 2);
        made.attach();
        DataReader reader;
        reader.read();
        const std::uint64_t generation = reader.snapshot().generation;
        const auto contents = reader.snapshot().contents;
        made.atoms[0]->SetColor(Color(0xff00ff00U));
        made.atoms[1]->SetVisible(false);
        made.atoms[2]->SetSelected(true);
        bond->SetVisible(false);
        made.residues[1]->NextModel();
        reader.refresh();
        QCOMPARE(reader.snapshot().contents, contents);
        QCOMPARE(reader.snapshot().generation, generation);
        DataReader other;
        other.read();
        QCOMPARE(*reader.snapshot().marks, *other.snapshot().marks);
        QCOMPARE(*reader.snapshot().selection, *other.snapshot().selection);
        QCOMPARE(reader.snapshot().marks->colours[0], 0xff00ff00U);
        QCOMPARE(reader.snapshot().marks->shown,
                 (std::vector<std::uint8_t>{1, 0, 1, 1, 1, 1, 0, 1}));
        QCOMPARE(reader.snapshot().marks->bonds, (std::vector<std::uint8_t>{0, 0}));
        QCOMPARE(*reader.snapshot().selection, (view::SelectionMarks{0, 0, 1, 0, 0, 0, 0, 0}));
    }

    void bondsAreFoundWhereverTheyStand() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.bond(0, 1);
        TAVIK::DataMaker::makeCore(made.bonds, "between", "Composite");
        TAVIK::Compound* const second = made.bond(1, 2);
        made.attach();
        TAVIK::Compound* const loose = memory_host::addBond(space(), made.atoms[2], made.atoms[3]);
        DataReader reader;
        reader.read();
        QCOMPARE(reader.snapshot().contents->bonds.size(), std::size_t(3));
        QCOMPARE(reader.snapshot().contents->bonds[2].from, 2U);
        second->SetVisible(false);
        reader.refresh();
        QCOMPARE(reader.snapshot().marks->bonds, (std::vector<std::uint8_t>{1, 0, 1}));
        loose->SetVisible(false);
        // One that came since, in a change that is still under way, moves none of the others.
        made.bond(3, 4);
        reader.refresh();
        QCOMPARE(reader.snapshot().marks->bonds, (std::vector<std::uint8_t>{1, 0, 0}));
    }

    void anUpdateWithoutAChangeGivesTheSameSnapshot() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.attach();
        made.atoms[0]->SetSelected(true);
        DataReader reader;
        reader.read();
        const view::Snapshot before = reader.snapshot();
        // Selected and unselected again: the number of changes rises, the answer stays.
        made.atoms[1]->SetSelected(true);
        made.atoms[1]->SetSelected(false);
        reader.refresh();
        QCOMPARE(reader.snapshot().contents, before.contents);
        QCOMPARE(reader.snapshot().marks, before.marks);
        QCOMPARE(reader.snapshot().selection, before.selection);
    }

    void noIdHasAnItemFromADestructionToTheNextReading() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.attach();
        int told = 0;
        DataReader reader([&] { ++told; });
        reader.read();
        const std::uint64_t generation = reader.snapshot().generation;
        TAVIK::DataMaker::Destroy(made.atoms[0]);
        TAVIK::DataMaker::Destroy(made.atoms[1]);
        QCOMPARE(told, 1);
        for (view::Id id = 0; id != 8; ++id)
            QVERIFY(!reader.item(id, generation));
        QCOMPARE(reader.id(made.atoms[2]), view::noId);
        reader.refresh();
        QCOMPARE(reader.snapshot().contents->atomCount(), std::size_t(3));
        QVERIFY(!reader.item(1, generation));
        QCOMPARE(reader.item(1, reader.snapshot().generation), made.atoms[2]);
        TAVIK::DataMaker::Destroy(made.entry);
        QCOMPARE(told, 2);
    }

    void nullChildrenAndSetsAddNothing() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.attach();
        TAVIK::DataMaker::makeSet(space(), "set", made.atoms);
        DataReader reader;
        reader.read();
        QCOMPARE(reader.snapshot().contents->itemCount(), std::size_t(5));
    }
};

REGISTER_TEST(DataReaderTest)
#include "DataReaderTest.moc"
