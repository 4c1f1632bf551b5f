// Saving entries of PDB files as PDB: byte for byte but for what was changed, and what refers to
// it.
#include "AtomBonds.h"
#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "ItemOrigin.h"
#include "Sample.h"
#include "TestFiles.h"
#include "Traversal.h"
#include "files/Saving.h"

#include <QFile>

#include <algorithm>

using namespace file_testing;
using memory_host::SaveError;
using memory_host::saveFile;
using memory_host::SaveOptions;
using test_support::contentOf;

namespace {

// Lines that are in only one of two texts: "-" before those of the first.
QStringList difference(const QByteArray& before, const QByteArray& after) {
    const QList<QByteArray> a = before.split('\n');
    const QList<QByteArray> b = after.split('\n');
    QStringList lines;
    qsizetype at = 0;
    for (const QByteArray& line : a) {
        const qsizetype found = b.indexOf(line, at);
        if (found < 0) {
            lines << '-' + QString::fromLatin1(line.trimmed());
            continue;
        }
        for (; at != found; ++at)
            lines << '+' + QString::fromLatin1(b[at].trimmed());
        ++at;
    }
    for (; at < b.size(); ++at)
        lines << '+' + QString::fromLatin1(b[at].trimmed());
    return lines;
}

template <class Change> void change(const Change& change) {
    const DataPointBase guard(nullptr, Publisher::Delete, "Change");
    QVERIFY(guard.m_good);
    change();
}

void destroy(const QStringList& names) {
    change([&] {
        for (const QString& name : names)
            TAVIK::DataMaker::Destroy(item(name));
    });
}

// Two chains of residues, and all that refers to them.
QByteArray annotated() {
    QByteArray text =
        "HEADER    SOMETHING\n"
        "REMARK 465 MISSING\n"
        "SEQRES   1 A    3  ALA ALA CYS\n"
        "MODRES 9XYZ ALA A    1  ALA  SOMETHING\n"
        "HET    ALA  A   1       5\n"
        "HELIX    1   1 ALA A    1  CYS A    3  1                                   3\n"
        "SHEET    1   A 2 ALA A   1  ALA A   2  0\n"
        "SHEET    2   A 2 ALA B   1  ALA B   2  1  N  ALA B   1   O  ALA A   2\n"
        "SSBOND   1 CYS A    3    CYS B    3\n"
        "LINK         CA  ALA A   1                 CA  ALA B   1     1555   1555  3.00\n"
        "CISPEP   1 ALA A    2    CYS A    3          0\n"
        "SITE     1 AC1  3 ALA A   1  ALA A   2  ALA B   1\n";
    int serial = 0;
    for (const char* chain : {"A", "B"}) {
        for (const char* number : {"1", "2", "3"}) {
            PdbAtom atom;
            atom.chain = chain;
            atom.number = number;
            if (*number == '3') {
                atom.residue = "CYS";
                atom.name = " SG ";
            }
            atom.y = *chain == 'A' ? 0.0F : 3.0F;
            atom.x = 3.0F * static_cast<float>(*number - '0');
            QByteArray row = line(atom);
            row.replace(6, 5, QByteArray::number(++serial).rightJustified(5));
            text += row;
            text += "ANISOU" + row.mid(6, 21) + "     1    2    3    4    5    6\n";
        }
        text += "TER   " + QByteArray::number(++serial).rightJustified(5) + "      CYS " + chain +
                "   3\n";
    }
    text += "CONECT    1    2    5\nCONECT    5    1\n"
            "MASTER        1    0    1    1    2    0    1    0    6    2    2    1\nEND\n";
    return text;
}

} // namespace

class SavedPdbTest : public FileTestCase {
    Q_OBJECT

    /// Saves all that was opened last, and returns the text.
    QByteArray saved(const SaveOptions& options = {}, const QString& name = "saved.pdb") {
        const std::vector<TAVIK::Compound*> items(space()->ChildBegin(), space()->ChildEnd());
        m_remarks.clear();
        try {
            for (const std::string& remark : saveFile(items, path(name).toStdString(), options))
                m_remarks << QString::fromStdString(remark);
        } catch (const SaveError& error) {
            return error.what();
        }
        return contentOf(path(name));
    }
    // What the window shows is what is read again, by gemmi and by us.
    void compareAgain() {
        const std::vector<TAVIK::Compound*> items(space()->ChildBegin(), space()->ChildEnd());
        const auto shown = sortedAtoms(items);
        const std::string name = path("saved.pdb").toStdString();
        QCOMPARE(gemmiAtoms(name), shown);
        const std::vector<TAVIK::Compound*> again = opened(name).items;
        QCOMPARE(sortedAtoms(again), shown);
        change([&again] { std::ranges::for_each(again, &TAVIK::DataMaker::Destroy); });
    }

    QStringList m_remarks;

private slots:
    void aRealFileIsSavedByteForByte_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"1ubq.pdb", "1d3z.pdb", "1ejg.pdb", "1tii.pdb", "2nwl-opm.pdb",
                                 "3al1.pdb", "3o21.pdb"})
            QTest::newRow(name) << name;
    }
    void aRealFileIsSavedByteForByte() {
        QFETCH(QString, name);
        memory_host::openFile(structure(name).toStdString());
        QVERIFY(saved() == contentOf(structure(name)));
        QCOMPARE(m_remarks, QStringList());
    }

    void anOddTextIsSavedByteForByte_data() {
        QTest::addColumn<QByteArray>("text");
        const QByteArray atom = atomAt(" CA ", 1);
        const QByteArray other = atomAt(" N  ", 2);
        QTest::newRow("windows") << QByteArray("REMARK\n" + atom + other).replace("\n", "\r\n");
        QTest::newRow("returns") << QByteArray(atom + other).replace('\n', '\r');
        QTest::newRow("mixed") << QByteArray(atom + other).replace(80, 1, "\r\r\n\r");
        QTest::newRow("no line end") << (atom + "END");
        QTest::newRow("no END") << (atom + other);
        QTest::newRow("blanks") << (atom + "END          \n\n   \n");
        QTest::newRow("latin-1") << ("REMARK caf\xe9\n" + atom);
        QTest::newRow("mark") << ("\xef\xbb\xbf" + atom);
        QTest::newRow("unknown records") << ("FOO bar\n" + atom + "ANISOU\nXYZ\n" + other);
        QTest::newRow("blank number") << QByteArray(atom + other).replace(6, 5, "     ");
        QTest::newRow("twice") << (atom + atom + "END\n" + atom + "END\n");
        QTest::newRow("models") << ("MODEL        1\n" + atom + "ENDMDL\nMODEL        2\n" + other +
                                    "ENDMDL\nMODEL        3\nENDMDL\nEND\n");
    }
    void anOddTextIsSavedByteForByte() {
        QFETCH(QByteArray, text);
        memory_host::openFile(m_folder.write("odd.pdb", text));
        QCOMPARE(saved(), text);
    }
    void aGzippedFileKeepsItsBytes() {
        const QByteArray packed = gzipped(atomAt(" CA ", 1)) + gzipped(atomAt(" N  ", 2)) + "rest";
        memory_host::openFile(m_folder.write("a.pdb.gz", packed));
        QCOMPARE(saved({}, "b.pdb.gz"), packed);
        QCOMPARE(saved(), atomAt(" CA ", 1) + atomAt(" N  ", 2));
    }

    void aGzippedFileHoldsTheSameText() {
        openText(annotated());
        const QByteArray packed = saved({}, "packed.pdb.gz");
        QVERIFY(packed.startsWith("\x1f\x8b"));
        QVERIFY(packed.size() < annotated().size());
        change([] { TAVIK::DataMaker::Destroy(item("/test")); });
        opened(path("packed.pdb.gz").toStdString());
        QCOMPARE(saved(), annotated());
    }
    void nothingChangesWhereNothingWasChanged() {
        openText(annotated());
        QCOMPARE(saved(), annotated());
    }
    void aDestroyedResidueGoesFromItsRecords() {
        openText(annotated());
        destroy({"/test/A/Groups/ALA 1"});
        QCOMPARE(difference(annotated(), saved()),
                 QStringList(
                     {"-MODRES 9XYZ ALA A    1  ALA  SOMETHING", "-HET    ALA  A   1       5",
                      "-HELIX    1   1 ALA A    1  CYS A    3  1" + QString(35, ' ') + "3",
                      "-SHEET    1   A 2 ALA A   1  ALA A   2  0",
                      "+HELIX    1   1 ALA A    2  CYS A    3  1" + QString(35, ' ') + "2",
                      "+SHEET    1   A 2 ALA A   2  ALA A   2  0",
                      "-LINK         CA  ALA A   1                 CA  ALA B   1     1555   "
                      "1555  3.00",
                      "-SITE     1 AC1  3 ALA A   1  ALA A   2  ALA B   1",
                      "-ATOM      1  CA  ALA A   1       3.000   0.000   0.000  1.00 10.00",
                      "-ANISOU    1  CA  ALA A   1      1    2    3    4    5    6",
                      "+SITE     1 AC1  2 ALA A   2  ALA B   1", "-CONECT    1    2    5",
                      "-CONECT    5    1",
                      "-MASTER        1    0    1    1    2    0    1    0    6    2    2    1",
                      "+MASTER        1    0    0    1    2    0    1    0    5    2    0    1"}));
        compareAgain();
    }
    void aDestroyedChainGoesFromItsRecords() {
        openText(annotated());
        destroy({"/test/A"});
        const QByteArray text = saved();
        for (const char* gone : {"HELIX", "SSBOND", "LINK", "CISPEP", "CONECT", "MODRES", " A   "})
            QVERIFY2(!text.contains(gone) || QByteArray(gone) == " A   ", gone);
        QCOMPARE(text.count("\nTER "), 1);
        QVERIFY(text.contains("\nSHEET    2   A 1 ALA B   1  ALA B   2  1  "));
        QVERIFY(text.contains("\nSITE     1 AC1  1 ALA B   1 "));
        QVERIFY(text.contains("\nSEQRES   1 A    3  ALA ALA CYS\n"));
        QVERIFY(text.contains(
            "\nMASTER        1    0    0    0    1    0    1    0    3    1    0    1"));
        compareAgain();
    }
    void theEndOfAChainNamesTheLastResidueThatIsLeft() {
        openText(annotated());
        destroy({"/test/A/Groups/CYS 3"});
        const QByteArray text = saved();
        QVERIFY(text.contains("\nTER       4      ALA A   2\n"));
        QVERIFY(!text.contains("SSBOND"));
        QVERIFY(text.contains("\nHELIX    1   1 ALA A    1  ALA A    2  1"));
        compareAgain();
    }
    void aDestroyedBondGoesFromItsRecords() {
        openText(annotated());
        const QStringList before = bondNames(space());
        change([] {
            std::vector<TAVIK::Bond*> bonds;
            TAVIK::GetBonds(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/CYS 3/SG")), bonds);
            for (TAVIK::Bond* bond : bonds)
                TAVIK::DataMaker::Destroy(bond);
            bonds.clear();
            TAVIK::GetBonds(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 2/CA")), bonds);
            for (TAVIK::Bond* bond : bonds)
                TAVIK::DataMaker::Destroy(bond);
        });
        const QStringList shown = bondNames(space());
        QVERIFY(shown.size() < before.size());
        const QStringList changes = difference(annotated(), saved());
        QCOMPARE(changes, QStringList({"-SSBOND   1 CYS A    3    CYS B    3",
                                       "-CONECT    1    2    5", "+CONECT    1    5"}));
    }
    void aMadeBondIsListed() {
        openText(annotated());
        change([] {
            TAVIK::DataMaker::makeBond(item("/test/A/Bonds"), item("/test/A/Groups/ALA 2/CA"),
                                       item("/test/B/Groups/ALA 2/CA"));
        });
        QCOMPARE(difference(annotated(), saved()),
                 QStringList(
                     {"-MASTER        1    0    1    1    2    0    1    0    6    2    2    1",
                      "+CONECT    2    6", "+CONECT    6    2",
                      "+MASTER        1    0    1    1    2    0    1    0    6    2    4    1"}));
        const QStringList shown = bondNames(space());
        TAVIK::DataMaker::Destroy(space()->ChildBegin()[0]);
        opened(path("saved.pdb").toStdString());
        QCOMPARE(bondNames(space()), shown);
    }
    void aMadeBondThatIsFoundAnywayIsNotListed() {
        openText(annotated());
        change([] {
            TAVIK::Compound* atom = TAVIK::DataMaker::makeAtom(
                item("/test/A/Groups/ALA 2"), {"CB", "C", TAVIK::Vertex(6, 0, 1.5F, true)});
            TAVIK::DataMaker::makeBond(item("/test/A/Bonds"), item("/test/A/Groups/ALA 2/CA"),
                                       atom);
        });
        QCOMPARE(saved().count("CONECT"), 2);
        const QStringList shown = bondNames(space());
        change([] { TAVIK::DataMaker::Destroy(item("/test")); });
        opened(path("saved.pdb").toStdString());
        QCOMPARE(bondNames(space()), shown);
    }
    void aMovedAtomChangesInItsColumns() {
        openText(annotated());
        change([] {
            TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 1/CA")),
                                   TAVIK::Vertex(3, -123.4567F, 0, true));
        });
        QCOMPARE(
            difference(annotated(), saved()),
            QStringList({"-ATOM      1  CA  ALA A   1       3.000   0.000   0.000  1.00 10.00",
                         "+ATOM      1  CA  ALA A   1       3.000-123.457   0.000  1.00 10.00"}));
        change([] {
            TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 1/CA")),
                                   TAVIK::Vertex(3, -12345.0F, 0, true));
        });
        QVERIFY2(saved().contains("the coordinate -12345 does not fit"), saved().constData());
    }
    // As rotamers are made: the atom of the file becomes the first model, and new ones follow.
    void newModelsAreAlternativeLocations() {
        openText(annotated());
        change([] {
            TAVIK::SetAtomModel(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 2/CA")), 1);
            for (const unsigned int model : {2U, 3U}) {
                const auto y = static_cast<float>(model);
                TAVIK::AtomValues values{"CA", "C", TAVIK::Vertex(6, y, 0, true), 20.0F, model};
                values.details.occupancy = 0.25F;
                TAVIK::DataMaker::makeAtom(item("/test/A/Groups/ALA 2"), values);
            }
        });
        QCOMPARE(difference(annotated(), saved()),
                 QStringList(
                     {"-ATOM      2  CA  ALA A   2       6.000   0.000   0.000  1.00 10.00",
                      "-ANISOU    2  CA  ALA A   2      1    2    3    4    5    6",
                      "+ATOM      2  CA AALA A   2       6.000   0.000   0.000  1.00 10.00",
                      "+ANISOU    2  CA AALA A   2      1    2    3    4    5    6",
                      "+ATOM      9  CA BALA A   2       6.000   2.000   0.000  0.25 20.00"
                      "           C",
                      "+ATOM     10  CA CALA A   2       6.000   3.000   0.000  0.25 20.00"
                      "           C",
                      "-MASTER        1    0    1    1    2    0    1    0    6    2    2    1",
                      "+MASTER        1    0    1    1    2    0    1    0    8    2    2    1"}));
        compareAgain();
        QVERIFY(saved({.onlyActiveModels = true}).contains("CA AALA"));
        QVERIFY(!saved({.onlyActiveModels = true}).contains("CA BALA"));
    }
    void newAtomsAreAsTheySayWhateverTheirResidueIs() {
        QByteArray text = annotated();
        text.replace("ATOM      2", "HETATM    2");
        openText(text);
        change([] {
            TAVIK::AtomValues values{"CB", "C", TAVIK::Vertex(6, 9, 0, true), 20.0F};
            TAVIK::DataMaker::makeAtom(item("/test/A/Groups/ALA 2"), values);
            values.name = "CG";
            values.details.isHetero = true;
            TAVIK::DataMaker::makeAtom(item("/test/A/Groups/ALA 2"), values);
        });
        QVERIFY(saved().contains("\nATOM      9  CB  ALA A   2"));
        QVERIFY(saved().contains("\nHETATM   10  CG  ALA A   2"));
    }

    void newResiduesAndChainsGetRows() {
        openText(annotated());
        change([] {
            const TAVIK::AtomValues zinc{"ZN", "Zn", TAVIK::Vertex(1, 2, 30, true), 20.0F};
            using TAVIK::DataMaker;
            DataMaker::makeAtom(DataMaker::makeCore(item("/test/A/Groups"), "ZN 4", "Residue"),
                                zinc);
            TAVIK::Compound* chain = DataMaker::makeCore(item("/test"), "C", "Molecule");
            TAVIK::Compound* groups = DataMaker::makeCore(chain, "Groups", "Composite");
            DataMaker::makeAtom(DataMaker::makeCore(groups, "ZN -1B", "Residue"), zinc);
        });
        const QByteArray text = saved();
        QVERIFY(text.contains(
            "\nATOM      9 ZN    ZN A   4       1.000   2.000  30.000  1.00 20.00          ZN  \n"
            "TER       4       ZN A   4\n"));
        QVERIFY(
            text.contains("TER       8      CYS B   3\n"
                          "ATOM     10 ZN    ZN C  -1B      1.000   2.000  30.000  1.00 20.00"));
        compareAgain();
    }
    // Numbers of five digits follow the name of the record at once.
    void masterCountsConectOfLargeNumbers() {
        QByteArray text;
        for (const char* serial : {"12001", "12002", "12003"})
            text += QByteArray(atomAt(" C" + QByteArray(serial).right(1) + ' ', 0))
                        .replace(6, 5, serial)
                        .replace("   0.000", "   " + QByteArray(serial).right(1) + ".000");
        text += "CONECT1200112002\nCONECT1200212003\n"
                "MASTER        0    0    0    0    0    0    0    0    3    0    2    0\nEND\n";
        openText(text);
        change([] { TAVIK::DataMaker::Destroy(item("/test/A/Groups/ALA 1/C3")); });
        QCOMPARE(difference(text, saved()).filter("CONECT").size(), 1);
        QVERIFY(saved().contains(
            "\nMASTER        0    0    0    0    0    0    0    0    2    0    1 "));
    }
    void aModelThatIsClosedIsLeftOut() {
        QByteArray text = "NUMMDL       3\n";
        for (const char* model : {"1", "2", "3"})
            text += QByteArray("MODEL        ") + model + '\n' + atomAt(" CA ", 1) + "ENDMDL\n";
        text += "MASTER        0    0    0    0    0    0    0    0    3    0    0    0\nEND\n";
        openText(text);
        change([] { TAVIK::DataMaker::Destroy(item("/test.2")); });
        text.replace("NUMMDL       3", "NUMMDL       2");
        text.replace("MODEL        2\n" + atomAt(" CA ", 1) + "ENDMDL\n", "");
        text.replace("    0    3    0", "    0    2    0");
        QCOMPARE(saved(), text);
        QCOMPARE(m_remarks,
                 QStringList(path("saved.pdb") + ": of the 3 models of the file that was "
                                                 "read, it has the 2 that are saved"));
    }
    void entriesOfSeveralFilesAreRefused() {
        openText(annotated());
        openText(annotated(), {}, "second.pdb");
        QFile::remove(path("saved.pdb"));
        QVERIFY2(
            saved().contains("\"test\" and \"second\" are not models of one structure, and a PDB "
                             "file holds one"),
            saved().constData());
        QVERIFY(!QFile::exists(path("saved.pdb")));
    }
    void theSelectionAloneCanBeSaved() {
        openText(annotated());
        item("/test/B")->SetSelected(true);
        const QByteArray text = saved({.onlySelected = true});
        QCOMPARE(text.count("ATOM "), 3);
        QVERIFY(!text.contains("CYS A"));
        // The entry is still in its own file.
        QCOMPARE(TAVIK::OriginOf(item("/test")), path());
    }
    void whatIsSavedIsInItsNewFile() {
        openText(annotated());
        saved();
        QCOMPARE(TAVIK::OriginOf(item("/test")), path("saved.pdb"));
        destroy({"/test/A/Groups/ALA 1"});
        saved();
        compareAgain();
    }
    void aShortLastRowWithoutALineEndIsNotTakenForCut() {
        const QByteArray row = atomAt(" CA ", 1);
        openText(row + row.left(66) + '\n' + row.left(66));
        change([] { TAVIK::DataMaker::Destroy(atoms(*space()->ChildBegin())[1]); });
        QCOMPARE(saved(), row + row.left(66) + '\n');
        compareAgain();
    }
    void deletedPartsOfARealFileAreGone_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"1ejg.pdb", "1tii.pdb", "3al1.pdb", "2nwl-opm.pdb", "1d3z.pdb"})
            QTest::newRow(name) << name;
    }
    // Every third residue, and every seventh atom of the others.
    void deletedPartsOfARealFileAreGone() {
        QFETCH(QString, name);
        memory_host::openFile(structure(name).toStdString());
        change([] {
            Items residues;
            TAVIK::GetResidues(space(), residues, true);
            for (std::size_t i = 0; i < residues.size(); i += 3)
                TAVIK::DataMaker::Destroy(residues[i]);
            Items all;
            TAVIK::GetAtoms(space(), all, true);
            for (std::size_t i = 0; i < all.size(); i += 7)
                TAVIK::DataMaker::Destroy(all[i]);
        });
        saved();
        compareAgain();
    }
};

REGISTER_TEST(SavedPdbTest)
#include "SavedPdbTest.moc"
