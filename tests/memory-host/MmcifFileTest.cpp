// mmCIF files: their tags, values and blocks, and real ones atom by atom.
#include "FileTestCase.h"
#include "Space.h"
#include "TestFiles.h"
#include "items/Building.h"

#include <algorithm>

using namespace file_testing;
using TAVIK::Compound;
using test_support::contentOf;

namespace {

// The atoms of an mmCIF file whose rows are lines of words, as those of the archive are.
std::vector<std::string> atomsOfLines(const QByteArray& text) {
    QList<QByteArray> tags;
    std::vector<std::string> atoms;
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith("_atom_site."))
            tags << line.mid(11).trimmed();
        if (!line.startsWith("ATOM ") && !line.startsWith("HETATM "))
            continue;
        const QList<QByteArray> words = line.simplified().split(' ');
        const auto value = [&](const char* tag) {
            QByteArray word = words.at(tags.indexOf(tag));
            if (word.startsWith('"'))
                word = word.mid(1, word.size() - 2);
            return word == "?" ? QByteArray() : word;
        };
        QByteArray element = value("type_symbol").toLower();
        element[0] = static_cast<char>(std::toupper(element[0]));
        atoms.push_back(AtomText{value("auth_asym_id").toStdString(),
                                 (value("auth_seq_id") + value("pdbx_PDB_ins_code")).toStdString(),
                                 value("auth_atom_id").toStdString(), element.toStdString(),
                                 static_cast<float>(value("Cartn_x").toDouble()),
                                 static_cast<float>(value("Cartn_y").toDouble()),
                                 static_cast<float>(value("Cartn_z").toDouble()),
                                 static_cast<float>(value("B_iso_or_equiv").toDouble())}
                            .text());
    }
    std::sort(atoms.begin(), atoms.end());
    return atoms;
}

} // namespace

class MmcifFileTest : public FileTestCase {
    Q_OBJECT

public:
    MmcifFileTest() : FileTestCase(QStringLiteral("file.cif")) {}

private slots:
    void everyAtomLineOfTheRibosomeBecomesOneAtom() {
        const QString file = structure("6zu5.cif");
        const std::vector<std::string> expected = atomsOfLines(contentOf(file));
        QCOMPARE(expected.size(), 165175U);
        const auto found = sortedAtoms(opened(file.toStdString()).items);
        QCOMPARE(found.size(), 1U);
        QVERIFY(found.front() == expected);
        QVERIFY(found == gemmiAtoms(file.toStdString()));
    }

    void everyAtomLineOfAPackedFileBecomesOneAtom() {
        const QString file = structure("1cbs.cif.gz");
        const std::vector<std::string> expected = atomsOfLines(unpacked(file));
        QCOMPARE(expected.size(), 1213U);
        const auto found = sortedAtoms(opened(file.toStdString()).items);
        QCOMPARE(found.size(), 1U);
        QVERIFY(found.front() == expected);
        QVERIFY(found == gemmiAtoms(file.toStdString()));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("1cbs"));
        QVERIFY(item("/1cbs/A/Groups/REA 200/C1"));
    }

    void chainsHaveTheAuthorsNamesOfAnyLength() {
        opened(structure("6zu5.cif").toStdString());
        const QStringList chains = childNames(item("/6zu5"));
        QVERIFY(chains.contains("LAA"));
        QCOMPARE(QSet<QString>(chains.begin(), chains.end()).size(), chains.size());
    }

    void aNucleotideHasPhosphateSugarAndBase() {
        opened(structure("6zu5.cif").toStdString());
        Compound* groups = item("/6zu5/L50/Groups");
        QVERIFY(groups);
        Compound* residue = groups->ChildBegin()[10];
        QCOMPARE(childNames(residue), QStringList({"Phosphate", "Sugar", "Base"}));
        QCOMPARE(childNames(residue->ChildBegin()[0]), QStringList({"P", "OP1", "OP2"}));
        QCOMPARE(childNames(residue->ChildBegin()[1]),
                 QStringList({"O5'", "C5'", "C4'", "O4'", "C3'", "O3'", "C2'", "O2'", "C1'"}));
    }

    void theAuthorsNamesComeBeforeTheLabels() {
        openText("data_x\nloop_\n_atom_site.label_atom_id\n_atom_site.auth_atom_id\n"
                 "_atom_site.label_asym_id\n_atom_site.auth_asym_id\n_atom_site.label_seq_id\n"
                 "_atom_site.auth_seq_id\n_atom_site.label_comp_id\n_atom_site.auth_comp_id\n"
                 "_atom_site.Cartn_x\n_atom_site.Cartn_y\n_atom_site.Cartn_z\n"
                 "L1 C1 B A 1 11 LLL AAA 1 2 3\n"
                 "L2 ?  B . 2 ?  LLL .   1 2 3\n");
        QCOMPARE(atomPaths(item("/x")),
                 QStringList({"/x/A/Groups/AAA 11/C1", "/x/B/Groups/LLL 2/L2"}));
    }

    void tagsMayBeWrittenInAnyCase() {
        openText(mmcif({"CA C . ALA A 1 ? 1 2 3 1"})
                     .replace("Cartn_", "CARTN_")
                     .replace("_atom_site.", "_Atom_Site."));
        QCOMPARE(atoms(item("/test")).size(), 1U);
    }

    void anEntryHasItsIdentifierOrElseTheNameOfItsBlockOrFile() {
        const QByteArray row = mmcif({"CA C . ALA A 1 ? 1 2 3 1"}, "BLOCK");
        openText(row, {}, "a.cif");
        openText(QByteArray(row).replace("data_BLOCK\n", "data_BLOCK\n_entry.id 'My Entry'\n"), {},
                 "b.cif");
        openText(QByteArray(row).replace("data_BLOCK\n", "data_\n_entry.id ?\n"), {}, "c.mmcif.gz");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"block", "my entry", "c"}));
    }

    void quotedNamesLoseTheirQuotes() {
        openText(mmcif({"\"O5'\" O . DT A 1 ? 1 2 3 1", "'C\"A' C . 'D T' A 1 ? 11 2 3 1"}));
        QCOMPARE(atomPaths(item("/test")),
                 QStringList({"/test/A/Groups/DT 1/Sugar/O5'", "/test/A/Groups/D T 1/C\"A"}));
    }

    void insertionCodesAndNegativeNumbersAreKept() {
        openText(mmcif({"CA C . ALA A -3 ? 1 2 3 1", "CA C . ALA A 52 . 1 2 3 1",
                        "CA C . ALA A 52 A 1 2 3 1", "CA C . ALA A 52B ? 1 2 3 1"}));
        QCOMPARE(childNames(item("/test/A/Groups")),
                 QStringList({"ALA -3", "ALA 52", "ALA 52A", "ALA 52B"}));
    }

    void severalModelsBecomeSeveralEntriesAlsoWhereTheirRowsMix() {
        openText(mmcif({"N N . ALA A 1 ? 1 2 3 1", "N N . ALA A 1 ? 1 2 3 4",
                        "CA C . ALA A 1 ? 2 2 3 1", "CA C . ALA A 1 ? 2 2 3 4"}));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"test.1", "test.4"}));
        QCOMPARE(bondNames(item("/test.1")), QStringList("ALA 1 N-CA"));
        QCOMPARE(atomPaths(item("/test.4")), QStringList({"/test.4/A/Groups/ALA 1/Backbone/N",
                                                          "/test.4/A/Groups/ALA 1/Backbone/CA"}));
    }

    void everyBlockWithAtomsIsAnEntry() {
        openText(mmcif({"N N . ALA A 1 ? 1 2 3 1"}, "one") + "data_none\n_entry.id none\n" +
                 mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? 9 2 3 1"}, "two"));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"one", "two"}));
        QCOMPARE(atoms(item("/two")).size(), 2U);
    }

    void aSingleAtomMayComeWithoutALoop() {
        openText("data_x\n_atom_site.Cartn_x 1\n_atom_site.Cartn_y 2\n_atom_site.Cartn_z 3\n"
                 "_atom_site.type_symbol ZN\n_atom_site.label_atom_id ZN\n"
                 "_atom_site.label_comp_id ZN\n_atom_site.label_asym_id A\n"
                 "_atom_site.auth_seq_id 7\n_cell.length_a 10\n");
        QCOMPARE(atomPaths(item("/x")), QStringList("/x/A/Groups/ZN 7/ZN"));
        QCOMPARE(atoms(item("/x")).front()->GetType(), "Zn");
        QCOMPARE(atoms(item("/x")).front()->GetPosition()[2], 3.0F);
    }

    void saveFramesAndOtherLoopsAreNoAtoms() {
        openText("data_x\nsave_frame\nloop_\n_atom_site.Cartn_x\n_atom_site.id\n1 2\n3 4\nsave_\n"
                 "loop_\n_atom_site_anisotrop.id\n_atom_site_anisotrop.u\n1 2\n" +
                 mmcif({"N N . ALA A 1 ? 1 2 3 1"}, "y"));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("y"));
        QCOMPARE(atoms(item("/y")).size(), 1U);
    }

    void lineEndsOfAnySystemAreRead_data() {
        QTest::addColumn<QByteArrayList>("ends");
        QTest::newRow("LF") << QByteArrayList{"\n"};
        QTest::newRow("CR LF") << QByteArrayList{"\r\n"};
        QTest::newRow("CR") << QByteArrayList{"\r"};
        QTest::newRow("of all systems") << QByteArrayList{"\r", "\n", "\r\n"};
        QTest::newRow("CR after LF") << QByteArrayList{"\n", "\n", "\r"};
    }
    void lineEndsOfAnySystemAreRead() {
        QFETCH(QByteArrayList, ends);
        const QByteArrayList lines =
            ("# a comment\n" + mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? nan 2 3 1"}) +
             "# another\n_x.y\n;text\ntext\n;\n")
                .split('\n');
        QByteArray text;
        for (qsizetype i = 0; i + 1 < lines.size(); ++i)
            text += lines[i] + ends[i % ends.size()];
        openText(text, {path() + ":17: the coordinates \"nan 2 3\" of the atom \"CA\" are no "
                                 "numbers: it has no position; accepted are numbers as Cartn_x, "
                                 "Cartn_y and Cartn_z"});
        QCOMPARE(atoms(item("/test")).size(), 2U);
    }

    void eachBlockAndEachFrameHasTagsOfItsOwn() {
        const QByteArray frame = "save_f\n_a.b 1\nsave_\n";
        openText(mmcif({"N N . ALA A 1 ? 1 2 3 1"}, "one") + "_a.b 1\n" + frame + frame +
                 mmcif({"N N . ALA A 1 ? 1 2 3 1"}, "two") + "_a.b 1\n");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"one", "two"}));
    }

    void nullCoordinatesAreNoPosition() {
        openText(mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? ? ? ? 1",
                        "CB C . ALA A 1 ? . . . 1"}),
                 {path() + ":16: the atom \"CA\" has no coordinates; accepted are numbers as "
                           "Cartn_x, Cartn_y and Cartn_z",
                  path() + ":17: the atom \"CB\" has no coordinates; accepted are numbers as "
                           "Cartn_x, Cartn_y and Cartn_z"});
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QVERIFY(all[0]->GetPosition().isValid());
        QVERIFY(!all[1]->GetPosition().isValid());
        QVERIFY(!all[2]->GetPosition().isValid());
    }

    void coordinatesThatAreNoNumbersAreToldByTheirLine_data() {
        QTest::addColumn<QString>("position");
        for (const char* position : {"nan 0 0", "0 inf 0", "0 0 1.2.3", "0 ? 0", "0 0 1e300",
                                     "0 0 1.5(x)", "0 0 1,5", "0 0 (5)"})
            QTest::newRow(position) << QString::fromLatin1(position);
    }
    void coordinatesThatAreNoNumbersAreToldByTheirLine() {
        QFETCH(QString, position);
        openText(mmcif({"N N . ALA A 1 ? 1 2 3 1", "", "CA C . ALA A 1 ? " + position + " 1"}),
                 {path() + ":17: the coordinates \"" + position +
                  "\" of the atom \"CA\" are no numbers: it has no position; accepted are numbers "
                  "as Cartn_x, Cartn_y and Cartn_z"});
        QVERIFY(!atoms(item("/test"))[1]->GetPosition().isValid());
    }

    void numbersMayHaveUncertaintiesAndExponents() {
        openText(mmcif({"N N . ALA A 1 ? 1.25(3) -2.5e1 +0.5 1"}));
        const TAVIK::Vertex position = atoms(item("/test")).front()->GetPosition();
        QCOMPARE(position[0], 1.25F);
        QCOMPARE(position[1], -25.0F);
        QCOMPARE(position[2], 0.5F);
    }

    void aTemperatureThatIsNoNumberIsTold() {
        const QByteArray text = mmcif({"N N . ALA A 1 ? 1 2 3 1"})
                                    .replace("_atom_site.Cartn_x", "_atom_site.B_iso_or_equiv")
                                    .replace("ALA A 1 ? 1", "ALA A 1 ? hot")
                                    .replace("_atom_site.type_symbol", "_atom_site.Cartn_x")
                                    .replace("N N .", "N 1 .");
        openText(text,
                 {path() + ":15: the temperature factor \"hot\" is no number, and was read as "
                           "0; accepted are numbers as B_iso_or_equiv"});
        // No element is given: the name tells it.
        QCOMPARE(atoms(item("/test")).front()->GetType(), "N");
    }

    void watersWithoutNumbersAreResiduesOfTheirOwn() {
        openText(mmcif({"O O . HOH W ? ? 1 2 3 1", "H1 H . HOH W ? ? 2 2 3 1",
                        "O O . HOH W ? ? 11 2 3 1", "H1 H . HOH W ? ? 12 2 3 1"}));
        QCOMPARE(childNames(item("/test/W/Groups")), QStringList({"HOH", "HOH"}));
        QCOMPARE(childNames(item("/test/W/Groups/HOH")), QStringList({"O", "H1"}));
    }

    void alternativesMayHaveNamesOfTheirOwnOfAnyLength() {
        openText(mmcif({"N N . PRO A 22 ? 1 2 3 1", "CA C one PRO A 22 ? 2 2 3 1",
                        "CA C two SER A 22 ? 2.1 2 3 1", "CB C one PRO A 22 ? 3 3 3 1"}));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("PRO,SER 22"));
        QStringList models;
        for (const TAVIK::Atom* atom : atoms(item("/test")))
            models << QString::fromStdString(atom->GetName() + atom->GetModelNumber());
        QCOMPARE(models, QStringList({"N0", "CA1", "CA2", "CB1"}));
        QCOMPARE(bondNames(item("/test")),
                 QStringList({"PRO,SER 22 CA-CB", "PRO,SER 22 N-CA", "PRO,SER 22 N-CA"}));
    }

    void namesWithSlashesAreReplaced() {
        openText(mmcif({"N/1 N . ALA A/B 1 ? 1 2 3 1"}),
                 {path() + ": the name \"N/1\" of 1 item became \"N_1\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters",
                  path() + ": the name \"A/B\" of 1 item became \"A_B\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters"});
        QCOMPARE(childNames(item("/test")), QStringList("A_B"));
    }

    void aLastRowWithoutLineEndMayBeCut() {
        QByteArray text = mmcif({"N N . ALA A 1 ? 1 2 3 1"});
        text.chop(3);
        openText(text,
                 {path() + ":15: the last row of the atoms has no line end: the file may have "
                           "been cut"});
        QCOMPARE(atoms(item("/test")).size(), 1U);
    }

    void aChainOfManyResiduesOpensInLinearTime() {
        QStringList rows;
        for (int i = 0; i < 100000; ++i)
            rows << QString("O O . HOH W %1 ? %2 0 0 1").arg(i).arg(i * 3);
        openText(mmcif(rows));
        Compound* groups = item("/test/W/Groups");
        QCOMPARE(groups->ChildEnd() - groups->ChildBegin(), 100000);
    }
};

REGISTER_TEST(MmcifFileTest)
#include "MmcifFileTest.moc"
