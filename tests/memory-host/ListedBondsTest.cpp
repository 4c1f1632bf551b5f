// The bonds that files list: they come first, and those by distance follow.
#include "files/ListedBonds.h"
#include "FileTestCase.h"
#include "Space.h"

#include <set>

using namespace file_testing;
using TAVIK::Compound;

namespace {

QByteArray carbonAt(const QByteArray& serial, float x, float y = 0.0F) {
    QByteArray text = atomAt(" C" + serial.right(2).trimmed().leftJustified(2), x, y);
    return text.replace(6, 5, serial.rightJustified(5));
}

QByteArray conect(const QByteArrayList& serials) {
    QByteArray text = "CONECT";
    for (const QByteArray& serial : serials)
        text += serial.rightJustified(5);
    return text + '\n';
}

/// An atom of a LINK record: 16 columns from its name on.
QByteArray linked(const PdbAtom& atom) {
    return atom.name + atom.alternative + atom.residue.rightJustified(3) +
           atom.chain.rightJustified(2) + atom.number.rightJustified(4) + atom.insertion;
}
QByteArray link(const PdbAtom& a, const PdbAtom& b, const QByteArray& symmetry = "1555") {
    return ("LINK        " + linked(a) + QByteArray(15, ' ') + linked(b)).leftJustified(59) +
           "  1555 " + symmetry.rightJustified(6) + '\n';
}

const QByteArray connTags = [] {
    QByteArray text = "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n";
    for (const char* partner : {"1", "2"})
        for (const char* tag : {"label_asym_id", "label_seq_id", "label_comp_id", "label_atom_id",
                                "auth_asym_id", "auth_seq_id", "symmetry"})
            text += QByteArray("_struct_conn.ptnr") + partner + '_' + tag + '\n';
    return text;
}();

/// The bonds that hang in one "Bonds", as pairs of atoms in words.
std::vector<BondText> bondsIn(Compound* holder) {
    std::vector<BondText> bonds;
    for (Compound** bond = holder->ChildBegin(); bond != holder->ChildEnd(); ++bond) {
        const auto text = [bond](int end) {
            return textOf(*dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[end])).text();
        };
        bonds.push_back(std::minmax({text(0), text(1)}));
    }
    return bonds;
}

std::vector<Compound*> bondHolders(Compound* entry) {
    std::vector<Compound*> holders;
    for (Compound** child = entry->ChildBegin(); child != entry->ChildEnd(); ++child) {
        if ((*child)->GetName() == "Bonds")
            holders.push_back(*child);
        else
            holders.push_back((*child)->ChildEnd()[-1]);
    }
    return holders;
}

} // namespace

class ListedBondsTest : public FileTestCase {
    Q_OBJECT

    QStringList bondsInOrder(Compound* holder) {
        QStringList names;
        for (const QString& name : childNames(holder))
            names << QString(name).remove("ALA 1 ");
        return names;
    }
    QString leftOut(int line, int count) const {
        const QString what =
            count == 1 ? QStringLiteral("a bond that is listed here was")
                       : QString::number(count) + " bonds that are listed from here on were";
        return path() + u':' + QString::number(line) + ": " + what +
               " left out; accepted are bonds of two atoms of the file that can be told from "
               "others and are at most 6 Angstrom apart";
    }

private slots:
    void realFilesHaveTheBondsThatTheyListAndThoseByDistance_data() {
        QTest::addColumn<std::size_t>("listed");
        QTest::addColumn<std::size_t>("found");
        const auto row = [](const char* name, std::size_t listed, std::size_t found) {
            QTest::newRow(name) << listed << found;
        };
        row("1ubq.pdb", 0, 608);
        row("1ejg.pdb", 3, 848);
        row("1tii.pdb", 18, 5557);
        row("1cbs.cif.gz", 0, 1129);
        row("3al1.pdb", 33, 608);
        row("3o21.pdb", 147, 12360);
        row("2nwl-opm.pdb", 0, 8876);
        row("6zu5.cif", 261, 176264);
    }
    void realFilesHaveTheBondsThatTheyListAndThoseByDistance() {
        QFETCH(std::size_t, listed);
        QFETCH(std::size_t, found);
        const std::string file = structure(QTest::currentDataTag()).toStdString();
        const GemmiBonds expected = gemmiBonds(file);
        const auto counts = [](std::size_t a, std::size_t b) {
            return QString("%1 listed, %2 found").arg(a).arg(b);
        };
        QCOMPARE(counts(expected.listed.size(), expected.found.size()), counts(listed, found));

        Compound* entry = opened(file).items.front();
        std::set<BondText> listedHere;
        std::set<BondText> foundHere;
        for (Compound* holder : bondHolders(entry)) {
            bool isListed = true;
            for (const BondText& bond : bondsIn(holder)) {
                const bool wasListed = isListed;
                isListed = expected.listed.contains(bond);
                QVERIFY2(wasListed || !isListed, "a listed bond stands behind one by distance");
                QVERIFY2((isListed ? listedHere : foundHere).insert(bond).second, "twice");
            }
        }
        QCOMPARE(counts(listedHere.size(), foundHere.size()), counts(listed, found));
        QVERIFY(listedHere == expected.listed);
        QVERIFY(foundHere == expected.found);
    }

    void disulfidesOfRealFilesAreThere() {
        opened(structure("1ejg.pdb").toStdString());
        opened(structure("1tii.pdb").toStdString());
        const QStringList crambin = childNames(item("/1ejg/A/Bonds"));
        for (const char* name :
             {"CYS 3 SG - CYS 40 SG", "CYS 4 SG - CYS 32 SG", "CYS 16 SG - CYS 26 SG"})
            QVERIFY2(crambin.contains(QString::fromLatin1(name)), name);
        for (const char* chain : {"D", "E", "F", "G", "H"})
            QVERIFY(childNames(item(QString("/1tii/%1/Bonds").arg(chain)))
                        .contains("CYS 10 SG - CYS 81 SG"));
        QCOMPARE(childNames(item("/1tii/Bonds")).front(), "CYS 185 SG - CYS 197 SG");
    }

    void metalsOfTheRibosomeAreBondedToWhatHoldsThem() {
        Compound* entry = opened(structure("6zu5.cif").toStdString()).items.front();
        int metals = 0;
        for (Compound* holder : bondHolders(entry)) {
            for (Compound** bond = holder->ChildBegin(); bond != holder->ChildEnd(); ++bond) {
                QStringList elements;
                for (const int end : {0, 1})
                    elements << QString::fromStdString((*bond)->PartBegin()[end]->GetType());
                if (!elements.contains("Mg") && !elements.contains("Zn"))
                    continue;
                ++metals;
                QVERIFY2(!elements.contains("C") && !elements.contains("P"),
                         (*bond)->GetName().c_str());
            }
        }
        QVERIFY2(metals >= 261, qPrintable(QString::number(metals)));
    }

    void aNearerLigandKeepsOthersFromTheMetal_data() {
        QTest::addColumn<QByteArray>("near");
        QTest::addColumn<QByteArray>("far");
        QTest::addColumn<bool>("isBonded"); ///< the one that is further away
        for (const char* far : {"C", "P"}) {
            for (const char* near : {"N", "O", "S"})
                QTest::addRow("%s behind %s", far, near)
                    << QByteArray(near) << QByteArray(far) << false;
            QTest::addRow("%s behind another metal", far)
                << QByteArray("ZN") << QByteArray(far) << true;
        }
        QTest::newRow("N behind O") << QByteArray("O") << QByteArray("N") << true;
    }
    void aNearerLigandKeepsOthersFromTheMetal() {
        QFETCH(QByteArray, near);
        QFETCH(QByteArray, far);
        QFETCH(bool, isBonded);
        const auto atom = [](const char* name, const QByteArray& element, float x) {
            PdbAtom added;
            added.name = name;
            added.element = element;
            added.x = x;
            return line(added);
        };
        openText(atom(" X1 ", "MG", 0) + atom(" X2 ", near, -2) + atom(" X3 ", far, 2.3F));
        QStringList expected{"ALA 1 X1-X2"};
        if (isBonded)
            expected << "ALA 1 X1-X3";
        QCOMPARE(bondNames(item("/test")), expected);
    }

    void membraneMarkersHaveNoBonds() {
        PdbAtom marker;
        marker.record = "HETATM";
        marker.residue = "DUM";
        marker.element = "O";
        marker.name = " O  ";
        marker.x = 1.0F;
        PdbAtom next = marker;
        next.x = 2.0F;
        next.name = " N  ";
        openText(atomAt(" CA ", 0) + line(marker) + line(next));
        QCOMPARE(bondNames(item("/test")), QStringList());
    }

    void connectedSerialNumbersAreBondedFirstInEachList() {
        openText(carbonAt("1", 0) + carbonAt("2", 1.5F) + carbonAt("3", 3.0F) +
                 carbonAt("4", 4.5F) + carbonAt("5", 4.5F, 4.0F) + conect({"5", "4"}) +
                 conect({"4", "5", "3"}) + conect({"3", "4", "4"}));
        QCOMPARE(bondsInOrder(item("/test/A/Bonds")),
                 QStringList({"C3-C4", "C4-C5", "C1-C2", "C2-C3"}));
    }

    void listedBondsBetweenChainsComeFirst() {
        const auto inB = [](QByteArray text) { return text.replace(21, 1, "B"); };
        openText(carbonAt("1", 0) + carbonAt("2", 5) + inB(carbonAt("3", 1.5F)) +
                 inB(carbonAt("4", 8)) + conect({"2", "4"}));
        QCOMPARE(childNames(item("/test/Bonds")),
                 QStringList({"ALA 1 C2 - ALA 1 C4", "ALA 1 C1 - ALA 1 C3"}));
    }

    void serialNumbersAreComparedAsTheyAreWritten_data() {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("five digits") << QByteArray("99998") << QByteArray("99999");
        QTest::newRow("with letters") << QByteArray("A0000") << QByteArray("A0001");
        QTest::newRow("lower case") << QByteArray("a0000") << QByteArray("A0000");
        QTest::newRow("hexadecimal") << QByteArray("186a0") << QByteArray("186a1");
    }
    void serialNumbersAreComparedAsTheyAreWritten() {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        openText(carbonAt(first, 0) + carbonAt(second, 5) + carbonAt("7", 50) +
                 conect({first, second}));
        QCOMPARE(childNames(item("/test/A/Bonds")).size(), 1);
    }

    void serialNumbersInWordsAreRead() {
        openText(carbonAt("1", 0) + carbonAt("2", 4) + carbonAt("3", 8) + "CONECT 1 2\n" +
                 "CONECT 2 3\n");
        QCOMPARE(bondsInOrder(item("/test/A/Bonds")), QStringList({"C1-C2", "C2-C3"}));
    }

    void hydrogenBondsOfOldRecordsAreNone() {
        openText(carbonAt("1", 0) + carbonAt("2", 4) + carbonAt("3", 0, 4) +
                 conect({"1", "2", "", "", "", "3"}));
        QCOMPARE(bondsInOrder(item("/test/A/Bonds")), QStringList("C1-C2"));
    }

    void connectionsHoldInEachModelThatHasTheAtoms() {
        const QByteArray atoms = carbonAt("1", 0) + carbonAt("2", 4);
        openText("MODEL        1\n" + atoms + "ENDMDL\nMODEL        2\n" + atoms +
                 carbonAt("3", 0, 4) + "ENDMDL\n" + conect({"1", "2", "3"}));
        QCOMPARE(childNames(item("/test.1/A/Bonds")).size(), 1);
        QCOMPARE(childNames(item("/test.2/A/Bonds")).size(), 2);
    }

    void aConnectionThatCannotBeMadeIsRemarkedOn_data() {
        QTest::addColumn<QByteArray>("records");
        QTest::addColumn<int>("count");
        QTest::newRow("no such atom") << conect({"1", "9"}) << 1;
        QTest::newRow("two no such atoms") << conect({"1", "9", "8"}) << 2;
        QTest::newRow("an atom with itself") << conect({"1", "1"}) << 1;
        QTest::newRow("no number") << conect({"1", "*****"}) << 1;
        QTest::newRow("a number that occurs twice") << conect({"1", "4"}) << 1;
        QTest::newRow("too far") << conect({"1", "3"}) << 1;
        QTest::newRow("six digits") << QByteArray("CONECT000001000002\n") << 2;
    }
    void aConnectionThatCannotBeMadeIsRemarkedOn() {
        QFETCH(QByteArray, records);
        QFETCH(int, count);
        openText(carbonAt("1", 0) + carbonAt("2", 1.5F) + carbonAt("3", 6.1F) + carbonAt("4", 20) +
                     carbonAt("4", 0, 2.5F) + records,
                 {leftOut(6, count)});
        QCOMPARE(bondsInOrder(item("/test/A/Bonds")), QStringList("C1-C2"));
    }

    void linkedAtomsAreFoundByTheirNames() {
        PdbAtom a;
        a.name = " X1 ";
        a.element = "C";
        PdbAtom b = a;
        b.chain = "B";
        b.number = "7";
        b.insertion = 'C';
        b.x = 3.0F;
        PdbAtom other = b;
        other.insertion = ' ';
        other.x = -3.0F;
        openText(link(a, b) + link(b, a) + line(a) + line(b) + line(other));
        QCOMPARE(childNames(item("/test/Bonds")), QStringList("ALA 1 X1 - ALA 7C X1"));
    }

    void linkedResiduesHaveNamesOfFourLettersAndChainsOfTwo_data() {
        QTest::addColumn<QByteArray>("columns"); ///< of name and chain
        QTest::newRow("four letters") << QByteArray("TIP3B");
        QTest::newRow("four letters without a chain") << QByteArray("TIP3 ");
        QTest::newRow("three letters and a chain of two") << QByteArray("LIGAB");
        QTest::newRow("two letters and a chain of two") << QByteArray(" DAAB");
    }
    void linkedResiduesHaveNamesOfFourLettersAndChainsOfTwo() {
        QFETCH(QByteArray, columns);
        PdbAtom a;
        a.name = " X1 ";
        a.element = "C";
        a.chain = columns.endsWith("AB") ? "AB" : "A";
        PdbAtom b = a;
        b.number = "7";
        b.x = 3.0F;
        // The residue's columns are the same in both records.
        QByteArray records = link(b, a) + link(a, b) + line(a) + line(b).replace(17, 5, columns);
        records.replace(17, 5, columns);
        records.replace(records.indexOf('\n') + 1 + 47, 5, columns);
        openText(records);
        QCOMPARE(bondNames(item("/test")).size(), 1);
    }

    void aDisulfideOfResiduesWithNamesOfFourLetters() {
        PdbAtom a;
        a.name = " SG ";
        a.element = "S";
        PdbAtom b = a;
        b.number = "7";
        b.x = 3.0F;
        QByteArray text = "SSBOND   1 XCYSA    1    XCYSA    7";
        openText(text.leftJustified(59) + "  1555   1555  2.03\n" +
                 line(a).replace(17, 5, "XCYSA") + line(b).replace(17, 5, "XCYSA"));
        QCOMPARE(bondNames(item("/test")).size(), 1);
    }

    void aLinkToACopyBySymmetryIsNoBond() {
        PdbAtom a;
        PdbAtom b = a;
        b.number = "2";
        b.x = 3.0F;
        openText(link(a, b, "2655") + line(a) + line(b));
        QCOMPARE(bondNames(item("/test")), QStringList());
    }

    void aLinkOfAResidueNameAtAPlaceOfTwo() {
        PdbAtom metal;
        metal.name = "MG  ";
        metal.residue = " MG";
        metal.element = "MG";
        metal.number = "9";
        PdbAtom protein;
        protein.name = " O  ";
        protein.x = 3.0F;
        PdbAtom water = protein;
        water.residue = "HOH";
        water.x = -3.0F;
        openText(link(metal, water) + line(metal) + line(protein) + line(water));
        QCOMPARE(bondNames(item("/test")), QStringList("MG 9 MG - HOH 1 O"));
    }

    void linksOfAlternativesJoinThoseOfOneLetter() {
        PdbAtom a;
        a.name = " SG ";
        a.residue = "CYS";
        a.element = "S";
        PdbAtom b = a;
        b.number = "5";
        b.x = 3.5F;
        QByteArray text = "SSBOND   1 CYS A    1    CYS A    5\n";
        for (const char letter : {'A', 'B'}) {
            a.alternative = b.alternative = letter;
            text += line(a) + line(b);
        }
        openText(text);
        QStringList models;
        Compound* bonds = item("/test/A/Bonds");
        for (Compound** bond = bonds->ChildBegin(); bond != bonds->ChildEnd(); ++bond)
            for (const int end : {0, 1})
                models << QString::fromStdString(
                    dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[end])->GetModelNumber());
        QCOMPARE(models, QStringList({"1", "1", "2", "2"}));
    }

    void connectionsOfMmcifAreFoundByTheAuthorsIds() {
        const QByteArray text = mmcif({"SG S . CYS A 1 ? 0 0 0 1", "SG S . CYS A 2 ? 3 0 0 1",
                                       "O O . HOH W 1 ? 0 3 0 1", "MG MG . MG M 1 ? 0 4 2 1"}) +
                                connTags + "x disulf ? ? CYS SG A 1 1_555 ? ? CYS SG A 2 1_555\n" +
                                "x metalc ? ? HOH O W 1 1_555 ? ? MG MG M 1 1_555\n" +
                                "x metalc ? ? CYS SG A 1 1_555 ? ? MG MG M 1 2_555\n" +
                                "x hydrog ? ? CYS SG A 1 1_555 ? ? HOH O W 1 1_555\n";
        openText(text, {}, "test.cif");
        QCOMPARE(bondNames(item("/test")),
                 QStringList({"CYS 1 SG - CYS 2 SG", "HOH 1 O - MG 1 MG"}));
    }

    void connectionsOfMmcifAreFoundByLabelIds() {
        QByteArray text = "data_test\n" + connTags +
                          "x covale X 1 ALA C ? ? 1_555 Y . NAG C1 ? ? 1_555\n" + "loop_\n";
        for (const char* tag :
             {"label_atom_id", "type_symbol", "label_comp_id", "label_asym_id", "label_seq_id",
              "auth_asym_id", "auth_seq_id", "Cartn_x", "Cartn_y", "Cartn_z"})
            text += QByteArray("_atom_site.") + tag + '\n';
        text += "C C ALA X 1 A 77 0 0 0\nC C ALA X 2 A 78 0 4 0\nC1 C NAG Y . A 901 3 0 0\n";
        openText(text, {}, "test.cif");
        QCOMPARE(bondNames(item("/test")), QStringList("ALA 77 C - NAG 901 C1"));
    }

    void aConnectionOfMmcifWithoutALoop() {
        openText(mmcif({"C C . ALA A 1 ? 0 0 0 1", "C C . ALA A 2 ? 3 0 0 1"}) +
                     "_struct_conn.conn_type_id covale_base\n_struct_conn.ptnr1_auth_asym_id A\n"
                     "_struct_conn.ptnr1_auth_seq_id 1\n_struct_conn.ptnr1_label_atom_id C\n"
                     "_struct_conn.ptnr2_auth_asym_id A\n_struct_conn.ptnr2_auth_seq_id 2\n"
                     "_struct_conn.ptnr2_label_atom_id C\n",
                 {}, "test.cif");
        QCOMPARE(bondNames(item("/test")), QStringList("ALA 1 C - ALA 2 C"));
    }

    void atomsThatAreSortedKeepTheirListedBonds() {
        PdbAtom a;
        a.name = " C1 ";
        QByteArray text = line(a).replace(6, 5, "    1");
        a.chain = "B";
        a.x = 3.0F;
        text += line(a).replace(6, 5, "    2");
        a.chain = "A";
        a.name = " C2 ";
        text += line(a).replace(6, 5, "    3");
        openText(text + conect({"3", "1"}));
        QCOMPARE(bondNames(item("/test")), QStringList("ALA 1 C1-C2"));
        QVERIFY(item("/test/A/Bonds")->HasChildren());
    }

    void anAtomHasNoMoreListedBondsThanTheLimit() {
        QByteArray atoms = carbonAt("1", 0);
        QByteArray records;
        const int most = static_cast<int>(memory_host::mostListedBonds);
        // On a lattice, on which no two are bonded by distance.
        for (int i = 1, serial = 2; serial != most + 3; ++i) {
            PdbAtom atom;
            atom.name = " C" + QByteArray::number(serial).leftJustified(2);
            atom.x = static_cast<float>(i % 5 * 2 - 4);
            atom.y = static_cast<float>(i / 5 % 5 * 2 - 4);
            atom.z = static_cast<float>(i / 25 * 2 - 4);
            const float squared = atom.x * atom.x + atom.y * atom.y + atom.z * atom.z;
            if (squared > 36.0F || squared == 0.0F)
                continue;
            const QByteArray number = QByteArray::number(serial++);
            atoms += line(atom).replace(6, 5, number.rightJustified(5));
            records += conect({"1", number});
        }
        openText(atoms + records, {leftOut(2 * most + 3, 1)});
        QCOMPARE(bondNames(item("/test")).size(), most);
    }

    void anAtomWithThousandsOfListedBondsTakesLinearTime() {
        QByteArray text;
        for (int model = 0; model < 3000; ++model)
            text += "MODEL\n" + carbonAt("1", 0) + "ENDMDL\n";
        for (int i = 0; i < 20000; ++i)
            text += conect({"1", QByteArray::number(2 + i)});
        openText(text, {leftOut(9001, 20000)});
        QCOMPARE(childNames(TAVIK::Space::instance()).size(), 3000);
    }
};

REGISTER_TEST(ListedBondsTest)
#include "ListedBondsTest.moc"
