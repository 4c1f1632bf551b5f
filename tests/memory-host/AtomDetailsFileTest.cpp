// What the files say of atoms beside name, element, position and temperature factor.
#include "FileTestCase.h"
#include "Space.h"

#include "files/AtomNumbers.h"

#include <algorithm>

using namespace file_testing;
using memory_host::formalCharge;
using memory_host::serialNumber;

namespace {

QStringList detailsIn(TAVIK::Compound* root) {
    QStringList lines;
    for (const TAVIK::Atom* atom : atoms(root))
        lines << QString::fromStdString(detailsOf(*atom).text());
    return lines;
}

QStringList allDetails() {
    return detailsIn(TAVIK::Space::instance());
}

// The record with other text in columns counted from 1, as in the format's description.
QByteArray with(QByteArray record, int first, const QByteArray& text) {
    record = record.trimmed().leftJustified(80);
    return record.replace(first - 1, text.size(), text) + '\n';
}

} // namespace

class AtomDetailsFileTest : public FileTestCase {
    Q_OBJECT
private slots:
    void gemmiSeesTheSame_data() {
        QTest::addColumn<QString>("file");
        for (const char* name :
             {"1ubq.pdb", "1ejg.pdb", "1tii.pdb", "3al1.pdb", "1cbs.cif.gz", "6zu5.cif"})
            QTest::newRow(name) << structure(name);
    }
    void gemmiSeesTheSame() {
        QFETCH(QString, file);
        std::vector<std::string> found;
        for (const TAVIK::Atom* atom : atoms(opened(file.toStdString()).items.front()))
            found.push_back(detailsOf(*atom).text());
        std::sort(found.begin(), found.end());
        const std::vector<std::string> expected = gemmiDetails(file.toStdString());
        QCOMPARE(found.size(), expected.size());
        for (std::size_t i = 0; i != found.size(); ++i)
            QCOMPARE(found[i], expected[i]);
    }

    void theColumnsOfAPdbRecordAreRead() {
        PdbAtom atom;
        atom.alternative = 'B';
        const QByteArray record = with(line(atom), 7, "  417");
        PdbAtom hetero = atom;
        hetero.record = "HETATM";
        hetero.name = "ZN  ";
        hetero.number = "2";
        openText(with(with(record, 55, "  0.35"), 79, "1-") + with(line(hetero), 79, "2+"));
        const QStringList lines = allDetails();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines[0], "417 CA 0.35 -1 B ATOM /");
        QVERIFY(lines[1].endsWith("ZN 1 2 B HETATM /"));
    }

    void whatColumnsDoNotSayIsAsUsual() {
        const QByteArray record = with(line({}), 7, "    5");
        openText(with(record, 55, "      "), {}, "blank.pdb");
        openText(with(record, 55, "  full"), {}, "text.pdb");
        openText(with(record, 73, "1ABC  17"), {}, "numbered.pdb"); // lines of an old form
        openText(with(record, 7, "*****"), {}, "stars.pdb");
        openText(record.left(54) + '\n', {}, "short.pdb");
        QCOMPARE(allDetails(),
                 (QStringList{"5 CA 1 0 - ATOM /", "5 CA 1 0 - ATOM /", "5 CA 1 0 - ATOM /",
                              "-1 CA 1 0 - ATOM /", "5 CA 1 0 - ATOM /"}));
    }

    void longSerialNumbersAreRead_data() {
        QTest::addColumn<QByteArray>("record");
        QTest::addColumn<int>("serial");
        QTest::newRow("six digits to the left") << QByteArray("ATOM  100000") << 100000;
        QTest::newRow("from column 5") << QByteArray("ATOM1234567") << 1234567;
        QTest::newRow("hybrid-36") << QByteArray("ATOM  A0001") << 100001;
        QTest::newRow("heteroatom") << QByteArray("HETATM123456") << 123456;
    }
    void longSerialNumbersAreRead() {
        QFETCH(QByteArray, record);
        QFETCH(int, serial);
        openText(with(line({}), 1, record.leftJustified(12)));
        QCOMPARE(detailsOf(*atoms(TAVIK::Space::instance()).front()).serial, serial);
    }

    void everyAlternativeHasItsOwnDetails() {
        PdbAtom atom;
        QByteArray text;
        for (const auto& [letter, occupancy] : {std::pair('A', "  0.60"), {'B', "  0.40"}}) {
            atom.alternative = letter;
            text += with(line(atom), 55, occupancy);
        }
        openText(text);
        const auto both = atoms(TAVIK::Space::instance());
        QCOMPARE(both.size(), std::size_t(2));
        QCOMPARE(detailsOf(*both[0]).occupancy, 0.6F);
        QCOMPARE(detailsOf(*both[0]).alternative, 'A');
        QCOMPARE(detailsOf(*both[1]).occupancy, 0.4F);
        QCOMPARE(detailsOf(*both[1]).alternative, 'B');
    }

    void detailsStayWithTheirAtomsWhenTheseAreSorted() {
        PdbAtom atom;
        QByteArray text;
        int serial = 10;
        for (const char* chain : {"B", "A", "B", "A"}) {
            atom.chain = chain;
            atom.name = serial < 12 ? " N  " : " CA ";
            text += with(with(line(atom), 7, QByteArray::number(serial).rightJustified(5)), 55,
                         "  0." + QByteArray::number(serial));
            ++serial;
        }
        openText(text);
        QCOMPARE(allDetails(), (QStringList{"10 N 0.1 0 - ATOM /", "12 CA 0.12 0 - ATOM /",
                                            "11 N 0.11 0 - ATOM /", "13 CA 0.13 0 - ATOM /"}));
    }

    void theColumnsOfAnMmcifRowAreRead() {
        const QByteArray tags = "data_x\nloop_\n_atom_site.group_PDB\n_atom_site.id\n"
                                "_atom_site.type_symbol\n_atom_site.label_atom_id\n"
                                "_atom_site.label_alt_id\n_atom_site.label_comp_id\n"
                                "_atom_site.label_asym_id\n_atom_site.label_seq_id\n"
                                "_atom_site.Cartn_x\n_atom_site.Cartn_y\n_atom_site.Cartn_z\n"
                                "_atom_site.occupancy\n_atom_site.pdbx_formal_charge\n"
                                "_atom_site.auth_seq_id\n_atom_site.auth_asym_id\n";
        openText(tags + "ATOM   7       N  N  . GLY Aaa 12 0 0 0 1.00    ?  101 X\n"
                        "ATOM   8       C  CA A GLY Aaa 12 1 0 0 0.25(2) 1  101 X\n"
                        "HETATM 1234567 ZN ZN . ZN  Bbb .  9 0 0 .       +2 201 X\n"
                        "HETATM 10      O  O  . HOH Ccc ?  9 9 0 0.5     -1 301 X\n",
                 {}, "test.cif");
        QCOMPARE(allDetails(),
                 (QStringList{"7 N 1 0 - ATOM Aaa/12", "8 CA 0.25 1 A ATOM Aaa/12",
                              "1234567 ZN 1 2 - HETATM Bbb/", "10 O 0.5 -1 - HETATM Ccc/"}));
        const TAVIK::LabelIds ids = TAVIK::GetLabelIds(item("/x/X/Groups/GLY 101"));
        QCOMPARE(ids.chain, std::string_view("Aaa"));
        QCOMPARE(ids.number, std::string_view("12"));
        QVERIFY(TAVIK::GetLabelIds(item("/x/X")).chain.empty());
    }

    void missingMmcifColumnsAreAsUsual() {
        openText(mmcif({"CA C . ALA A 1 ? 0 0 0 1"}), {}, "test.cif");
        QCOMPARE(allDetails(), QStringList("-1 CA 1 0 - ATOM /"));
    }

    void pqrRowsHaveSerialAndRecord() {
        openText("HETATM 12 N ALA 1 3.2 4.3 -0.2 -0.3 1.8\n"
                 "ATOM   13 C ALA 1 3.2 5.8 -0.2 -0.3 1.8\n",
                 {}, "test.pqr");
        QCOMPARE(allDetails(), (QStringList{"12 N 1 0 - HETATM /", "13 C 1 0 - ATOM /"}));
    }

    void serialsAreDecimalOrHybrid36() {
        for (const auto& [text, serial] : {std::pair("1", 1),
                                           {"0", 0},
                                           {"99999", 99999},
                                           {"A0000", 100000},
                                           {"A000Z", 100035},
                                           {"ZZZZZ", 43770015},
                                           {"a0000", 43770016},
                                           {"zzzzz", 87440031},
                                           {"2147483647", 2147483647}})
            QCOMPARE(serialNumber(text), serial);
        for (const char* text : {"", "-1", "1.5", "1 2", "186a0", "A000", "A00000", "A0-00",
                                 "2147483648", "*****", "+1", " 1"})
            QCOMPARE(serialNumber(text), TAVIK::AtomDetails::noSerial);
    }

    void chargesHaveTheirSignOnEitherSide() {
        for (const auto& [text, charge] : {std::pair("2+", 2),
                                           {"1-", -1},
                                           {"+2", 2},
                                           {"-1", -1},
                                           {"3", 3},
                                           {"0", 0},
                                           {"127", 127},
                                           {"-127", -127}})
            QCOMPARE(int(formalCharge(text)), charge);
        for (const char* text : {"", "+", "-", "--1", "+1-", "128", "x", "1.0", "1 +"})
            QCOMPARE(int(formalCharge(text)), 0);
    }
};

REGISTER_TEST(AtomDetailsFileTest)
#include "AtomDetailsFileTest.moc"
