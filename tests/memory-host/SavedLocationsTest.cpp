// Bonds in saved files where atoms have alternative locations: records name these by letters, which
// can change, or list the bonds of several.
#include "SavedBondsTestCase.h"

using namespace saved_bonds_testing;

class SavedLocationsTest : public SavedBondsTestCase {
    Q_OBJECT

    /// Likewise, of a file of which a record names atoms that it does not tell from others.
    QStringList bondsLeftIn(const char* name) {
        const memory_host::OpenedFile file = memory_host::openFile(path(name).toStdString());
        if (file.remarks.size() != 1 ||
            file.remarks.front().find("a bond that is listed here was left out") ==
                std::string::npos)
            QTest::qFail("no record was left out", __FILE__, __LINE__);
        return bondNames(file.items.front());
    }
    /// The bonds of each model of the file, which are closed again.
    QList<QStringList> bondsOfModelsIn(const char* name) {
        QList<QStringList> bonds;
        for (Compound* read : opened(path(name).toStdString()).items) {
            bonds << bondNames(read);
            TAVIK::DataMaker::Destroy(read);
        }
        return bonds;
    }
    /// Opens the mmCIF file of these atoms, which lists the bond of C1 and C2.
    void openListed(const QStringList& atoms, const QByteArray& letter = ".",
                    const QStringList& bonds = {"LIG 1 C1-C2"}, const char* entry = "/test") {
        m_folder.write("test.cif", mmcif(atoms) +
                                       "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n"
                                       "_struct_conn.ptnr1_auth_asym_id\n"
                                       "_struct_conn.ptnr1_auth_seq_id\n"
                                       "_struct_conn.ptnr1_label_atom_id\n"
                                       "_struct_conn.ptnr2_auth_asym_id\n"
                                       "_struct_conn.ptnr2_auth_seq_id\n"
                                       "_struct_conn.ptnr2_label_atom_id\n"
                                       "_struct_conn.pdbx_ptnr2_label_alt_id\n"
                                       "a covale A 1 C1 A 1 C2 " +
                                       letter + '\n');
        opened(path("test.cif").toStdString());
        QCOMPARE(bondNames(item(entry)), bonds);
    }
    /// Opens the mmCIF file of these atoms and rows of _struct_conn, which say the type, and of
    /// both atoms the chain, number, name, residue and letter.
    void openConnections(const QStringList& atoms, const QStringList& rows) {
        QByteArray text = mmcif(atoms) + "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n";
        for (const char* partner : {"ptnr1", "ptnr2"})
            for (const char* tag : {"%_auth_asym_id", "%_auth_seq_id", "%_label_atom_id",
                                    "%_label_comp_id", "pdbx_%_label_alt_id"})
                text += "_struct_conn." + QByteArray(tag).replace("%", partner) + '\n';
        int number = 0;
        for (const QString& row : rows)
            text += QStringLiteral("c%1 %2\n").arg(++number).arg(row).toLatin1();
        openText(text, {}, "test.cif");
    }
    /// The connections of a converted file: id, name and letter of both atoms, symmetry operator.
    QStringList connectionsIn(const char* name) {
        QStringList rows;
        for (const QString& line : QString::fromLatin1(unpacked(path(name))).split('\n')) {
            const QStringList values = line.simplified().split(' ');
            if (values.size() == 22)
                rows << QStringList(
                            {values[0], values[6], values[7], values[15], values[16], values[19]})
                            .join(' ');
        }
        return rows;
    }
    static void setModel(TAVIK::Atom* atom, std::uint16_t model) {
        const DataPointBase guard(nullptr, Publisher::Update, "Model");
        TAVIK::SetAtomModel(atom, model);
    }
    static void setModel(const char* atom, std::uint16_t model) {
        setModel(dynamic_cast<TAVIK::Atom*>(item(atom)), model);
    }

    const QStringList comesBackWithOthers{
        "1 bond that was deleted comes back when the file is read, as the file lists them with "
        "those of other alternative locations"};

    const QString isElsewhere =
        "1 bond is not kept, as an atom is in another alternative location than the file lists";

private slots:
    void listedBondsOfAtomsThatGetANamesakeAreSaid() {
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C . LIG A 1 ? 4.5 0 0 1"});
        {
            const DataPointBase guard(nullptr, Publisher::Add, "Make");
            TAVIK::DataMaker::makeAtom(
                item("/test/A/Groups/LIG 1"),
                {.name = "C2", .type = "C", .position = TAVIK::Vertex(0.0F, 9.0F, 0.0F, true)});
        }
        QVERIFY(save("saved.cif")
                    .contains("1 bond is not kept, as the number or the names of one of the atoms "
                              "are those of another, too"));
    }
    void listedBondsOfAtomsThatChangeTheirLocationAreSaid() {
        openListed({"C1 C A LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C3 C B LIG A 1 ? 9.5 0 0 1"},
                   "A");
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Model");
            TAVIK::SetAtomModel(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/LIG 1/C2")), 2);
        }
        QCOMPARE(save("saved.cif"),
                 QStringList("1 bond is not kept, as the atoms are in different alternative "
                             "locations"));
    }
    // Rows are of all models.
    void bondsOfAtomsThatChangeTheirLocationInOneModelAreSaid() {
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C1 C . LIG A 1 ? 0.0 0 0 2", "C2 C A LIG A 1 ? 4.5 0 0 2"},
                   "A", {"LIG 1 C1-C2"}, "/test.1");
        setModel("/test.1/A/Groups/LIG 1/C2", 0);
        QCOMPARE(save("saved.cif"), QStringList(isElsewhere));
        QCOMPARE(bondsOfModelsIn("saved.cif"), QList<QStringList>({{}, {"LIG 1 C1-C2"}}));
        setModel("/test.2/A/Groups/LIG 1/C2", 0);
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsOfModelsIn("saved.cif"),
                 QList<QStringList>({{"LIG 1 C1-C2"}, {"LIG 1 C1-C2"}}));
    }
    void bondsOfAtomsThatChangeTheirLocationInOneModelAreListedInPdb_data() {
        QTest::addColumn<QByteArray>("more");
        QTest::newRow("LINK") << QByteArray();
        QTest::newRow("LINK and CONECT") << QByteArray("CONECT    1    2\nCONECT    2    1\n");
    }
    void bondsOfAtomsThatChangeTheirLocationInOneModelAreListedInPdb() {
        QFETCH(QByteArray, more);
        QByteArray model = chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500");
        model[model.indexOf(" C2 ") + 4] = 'A';
        openText("LINK         C1  ALA A   1                 C2 AALA A   1     1555   1555  4.50\n"
                 "MODEL        1\n" +
                 model + "ENDMDL\nMODEL        2\n" + model + "ENDMDL\n" + more);
        setModel("/test.1/A/Groups/ALA 1/C2", 0);
        QCOMPARE(save("saved.pdb"), QStringList());
        QCOMPARE(unpacked(path("saved.pdb")).count("CONECT"), 2);
        QCOMPARE(bondsOfModelsIn("saved.pdb"),
                 QList<QStringList>({{"ALA 1 C1-C2"}, {"ALA 1 C1-C2"}}));
    }
    void listedBondsOfAtomsThatComeBesideTheirNamesakesAreSaid_data() {
        QTest::addColumn<QByteArray>("letter");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QStringList>("read");
        const QString bond = "LIG 1 C1-C2";
        QTest::newRow("row of a location")
            << QByteArray("A") << QStringList(bond) << QStringList() << QStringList(bond);
        QTest::newRow("row of the location")
            << QByteArray("B") << QStringList(bond)
            << QStringList("1 bond is not kept, as the number or the names of one of the atoms are "
                           "those of another, too")
            << QStringList();
        QTest::newRow("row of all locations")
            << QByteArray(".") << QStringList({bond, bond, bond})
            << QStringList("3 bonds are not kept, as the number or the names of one of the atoms "
                           "are those of another, too")
            << QStringList();
    }
    void listedBondsOfAtomsThatComeBesideTheirNamesakesAreSaid() {
        QFETCH(QByteArray, letter);
        QFETCH(QStringList, shown);
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C2 C B LIG A 1 ? 0.0 4.5 0 1", "C2 C C LIG A 1 ? 0.0 0 4.5 1"},
                   letter, shown);
        setModel(atoms(item("/test"))[3], 2);
        QTEST(save("saved.cif"), "lines");
        QFETCH(QStringList, lines);
        QTEST(lines.isEmpty() ? bondsIn("saved.cif") : bondsLeftIn("saved.cif"), "read");
    }
    void linksOfAtomsThatComeBesideTheirNamesakesAreListedByNumber() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C2 "});
        text.replace("   1.500", "   4.500").replace("   3.000", "  -4.500");
        text[text.indexOf(" C2 ") + 4] = 'A';
        text[text.lastIndexOf(" C2 ") + 4] = 'B';
        openText(
            "LINK         C1  ALA A   1                 C2  ALA A   1     1555   1555  4.50\n" +
            text);
        const QStringList shown = bondNames(item("/test"));
        QCOMPARE(shown.size(), 2);
        setModel(atoms(item("/test"))[2], 1);
        QCOMPARE(save("saved.pdb"), QStringList());
        QCOMPARE(bondsLeftIn("saved.pdb"), shown);
    }
    void linksOfAtomsThatNumbersDoNotTellFromTheirNamesakesAreSaid() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C2 "});
        text.replace("   1.500", "   4.500").replace("   3.000", "  -4.500");
        text.replace("ATOM      3", "ATOM      2");
        text[text.indexOf(" C2 ") + 4] = 'A';
        text[text.lastIndexOf(" C2 ") + 4] = 'B';
        openText(
            "LINK         C1  ALA A   1                 C2 AALA A   1     1555   1555  4.50\n" +
            text);
        QCOMPARE(bondNames(item("/test")).size(), 1);
        setModel(atoms(item("/test"))[2], 1);
        QCOMPARE(save("saved.pdb"),
                 QStringList("1 bond is not kept, as the number or the names of one of the atoms "
                             "are those of another, too"));
        QCOMPARE(bondsLeftIn("saved.pdb"), QStringList());
    }
    void rowsOfBondsGetTheLettersThatAtomsGet() {
        openListed({"C1 C A LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C3 C B LIG A 1 ? 9.5 0 0 1"},
                   "A");
        for (const char* name : {"C1", "C2"}) {
            const DataPointBase guard(nullptr, Publisher::Update, "Model");
            TAVIK::SetAtomModel(
                dynamic_cast<TAVIK::Atom*>(item(QStringLiteral("/test/A/Groups/LIG 1/") + name)),
                3);
        }
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList("LIG 1 C1-C2"));
        QVERIFY(unpacked(path("saved.cif")).contains("a covale A 1 C1 A 1 C2 A\n"));
    }
    // These rows have no place for that of the first atom.
    void rowsOfBondsGetTheLettersForWhichTheyHaveAPlace() {
        openListed({"C1 C A LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C3 C A LIG A 1 ? 9.0 0 0 1", "C4 C A LIG A 1 ? 13.5 0 0 1",
                    "C5 C A LIG A 1 ? 18.0 0 0 1", "C6 C B LIG A 1 ? 22.5 0 0 1"},
                   "A");
        setModel("/test/A/Groups/LIG 1/C1", 3);
        setModel("/test/A/Groups/LIG 1/C2", 3);
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList("LIG 1 C1-C2"));
        QVERIFY(unpacked(path("saved.cif")).contains("a covale A 1 C1 A 1 C2 C\n"));
    }
    // As rotamers do: the atom gets a letter, and others of its name have other letters.
    void aRowOfBondsIsOnlyOfTheLocationThatHasThem() {
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C . LIG A 1 ? 4.5 0 0 1"});
        makeSecondLocation("/test/A/Groups/LIG 1");
        const QByteArray text = unpacked(path("test.cif"));
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList("LIG 1 C1-C2"));
        QVERIFY(text.contains("a covale A 1 C1 A 1 C2 .\n"));
        QVERIFY(unpacked(path("saved.cif")).contains("a covale A 1 C1 A 1 C2 A\n"));
    }
    void aLinkIsOnlyOfTheLocationThatHasIt() {
        const QByteArray link = "LINK         C1  ALA A   1                 C2  ALA A   1     1555 "
                                "  1555  4.50\n";
        openText(link + chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500"));
        makeSecondLocation("/test/A/Groups/ALA 1");
        QCOMPARE(save("saved.pdb"), QStringList());
        QCOMPARE(bondsIn("saved.pdb"), QStringList("ALA 1 C1-C2"));
        QVERIFY(unpacked(path("saved.pdb")).startsWith(QByteArray(link).replace("C2  A", "C2 AA")));
    }
    void convertedLinksAreOnlyOfTheLocationThatHasThem() {
        const QByteArray link = "LINK         C1  ALA A   1                 C2  ALA A   1     1555 "
                                "  1555  4.50\n";
        openText(link + QByteArray(link).replace("  1555  4.50", "  2545 10.97") +
                 "CRYST1   20.000   20.000   20.000  90.00  90.00  90.00 P 1 21 1      2\n" +
                 chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500"));
        makeSecondLocation("/test/A/Groups/ALA 1");
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList("ALA 1 C1-C2"));
        QCOMPARE(connectionsIn("saved.cif"),
                 QStringList({"covale1 C1 ? C2 A 1_555", "covale2 C1 ? C2 A 2_545"}));
    }
    void convertedConnectionsAreOnlyOfTheLocationThatHasThem() {
        openConnections({"SG S . CYS A 1 ? 0 0 0 1", "SG S . CYS B 1 ? 4.5 0 0 1",
                         "ZN ZN . ZN C 1 ? 0 -4.5 0 1", "O O . HOH D 1 ? 0 0 3.0 1"},
                        {"disulf A 1 SG CYS . B 1 SG CYS .", "metalc C 1 ZN ZN . A 1 SG CYS .",
                         "hydrog A 1 SG CYS . D 1 O HOH ."});
        const QStringList bonds = bondNames(item("/test"));
        QCOMPARE(bonds.size(), 2);
        makeSecondLocation("/test/A/Groups/CYS 1", "SG");
        QCOMPARE(save("saved.pdb"),
                 QStringList("the file's 1 row of category _struct_conn of other types than "
                             "covale, disulf and metalc is not kept"));
        const QByteArray text = unpacked(path("saved.pdb"));
        QCOMPARE(text.count("SSBOND"), 1);
        QVERIFY(text.contains("LINK        ZN    ZN C   1                 SG ACYS A   1"));
        QVERIFY(!text.contains("CONECT"));
        QCOMPARE(bondsIn("saved.pdb"), bonds);
    }
    // A record without letters is one for each location.
    void convertedConnectionsOfSeveralLocationsGetTheirLetters() {
        openConnections({"SG S A CYS A 1 ? 0 0 0 1", "SG S B CYS A 1 ? 0 1 0 1",
                         "SG S A CYS B 1 ? 4.5 0 0 1", "SG S B CYS B 1 ? 4.5 1 0 1",
                         "ZN ZN . ZN C 1 ? 0 -4.5 0 1"},
                        {"disulf A 1 SG CYS . B 1 SG CYS .", "metalc C 1 ZN ZN . A 1 SG CYS .",
                         "hydrog A 1 SG CYS . B 1 SG CYS ."});
        const QStringList bonds = bondNames(item("/test"));
        QCOMPARE(bonds.size(), 4);
        QCOMPARE(save("saved.pdb"),
                 QStringList("the file's 1 row of category _struct_conn of other types than "
                             "covale, disulf and metalc is not kept"));
        const QByteArray text = unpacked(path("saved.pdb"));
        QCOMPARE(text.count("SSBOND"), 1);
        QCOMPARE(text.count("LINK"), 2);
        QVERIFY(!text.contains("CONECT"));
        Compound* const read = opened(path("saved.pdb").toStdString()).items.front();
        QCOMPARE(bondNames(read), bonds);
        TAVIK::DataMaker::Destroy(item("/test"));
        QCOMPARE(save("again.cif"), QStringList());
        QCOMPARE(connectionsIn("again.cif"),
                 QStringList({"disulf1 SG A SG A 1_555", "metalc1 ZN ? SG A 1_555",
                              "metalc2 ZN ? SG B 1_555", "bond1 SG B SG B 1_555"}));
    }
    void convertedFilesDoNotListBondsBetweenAlternativeLocations() {
        const QByteArray link = "LINK         C1 AALA A   1                 C2 AALA A   1     1555 "
                                "  1555  4.50\n";
        QByteArray atoms = chainOf({" C1 ", " C2 ", " C3 ", " C4 "});
        for (int row = 0; row != 4; ++row)
            atoms[row * atoms.size() / 4 + 16] = row == 3 ? 'B' : 'A';
        atoms.replace("   4.500", "  13.500").replace("   3.000", "   9.000");
        openText(link + atoms.replace("   1.500", "   4.500") + "CONECT    2    3\n");
        QCOMPARE(bondNames(item("/test")), QStringList({"ALA 1 C1-C2", "ALA 1 C2-C3"}));
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Model");
            TAVIK::SetAtomModel(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 1/C2")), 2);
        }
        QVERIFY(save("saved.cif")
                    .contains("2 bonds are not kept, as the atoms are in different alternative "
                              "locations"));
        QCOMPARE(bondsIn("saved.cif"), QStringList()); // without a remark
    }
    void namesInConvertedLinksKeepTheirCase() {
        openConnections({"C1 C . LIG b 1 ? 0 0 0 1", "C2 C a LIG b 1 ? 4.5 0 0 1",
                         "C2 C A LIG b 1 ? 0 4.6 0 1"},
                        {"covale b 1 C1 LIG . b 1 C2 LIG a"});
        const QStringList bonds = bondNames(item("/test"));
        QCOMPARE(bonds.size(), 1);
        QCOMPARE(save("saved.pdb"), QStringList());
        QVERIFY(unpacked(path("saved.pdb")).contains(" C2 aLIG b   1     1555"));
        QCOMPARE(bondsIn("saved.pdb"), bonds);
    }
    // Disulfides are listed without letters.
    void bondsThatADisulfideGivesFurtherLocationsAreSaid() {
        openText(
            "SSBOND   1 CYS A    1    CYS A    2                          1555   1555  4.50\n" +
            atomAt(" SG ", 0.0F).replace("ALA A   1", "CYS A   1") +
            QByteArray(atomAt(" SG ", 4.5F)).replace("ALA A   1", "CYS A   2"));
        const QStringList shown = bondNames(item("/test"));
        QCOMPARE(shown.size(), 1);
        makeSecondLocation("/test/A/Groups/CYS 2", "SG");
        QCOMPARE(save("saved.pdb"),
                 QStringList("1 further bond is read, as the file lists the bonds of all "
                             "alternative locations together"));
        QCOMPARE(bondsIn("saved.pdb"), shown + shown);
    }
    void aBondOfOneAlternativeLocationGoesAlone() {
        const QStringList both = {"LIG 1 C1-C2", "LIG 1 C1-C2"};
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C2 C B LIG A 1 ? 0.0 4.5 0 1"},
                   ".", both);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/LIG 1 C1-C2"));
        }
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList("LIG 1 C1-C2"));
    }
    // One row without a letter lists the bonds of all.
    void aBondOfOneAlternativeLocationComesBackWithSeveralOthers() {
        const QStringList all = {"LIG 1 C1-C2", "LIG 1 C1-C2", "LIG 1 C1-C2"};
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C2 C B LIG A 1 ? 0.0 4.5 0 1", "C2 C C LIG A 1 ? 0.0 0 4.5 1"},
                   ".", all);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/LIG 1 C1-C2"));
        }
        QCOMPARE(save("saved.cif"), comesBackWithOthers);
        QCOMPARE(bondsIn("saved.cif"), all);
    }
    // Where a name begins goes by the element, which LINK records do not have.
    void namesOfALinkMayBeginInOtherColumnsThanThoseOfTheAtoms_data() {
        QTest::addColumn<QString>("gone");
        QTest::newRow("bond") << "/test/A/Bonds/ALA 1 C1-C2";
        QTest::newRow("atom") << "/test/A/Groups/ALA 1/C2";
    }
    void namesOfALinkMayBeginInOtherColumnsThanThoseOfTheAtoms() {
        QFETCH(QString, gone);
        openText(
            "LINK        C1   ALA A   1                C2   ALA A   1     1555   1555  4.50\n" +
            chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500"));
        QCOMPARE(bondNames(item("/test")).size(), 1);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item(gone));
        }
        QCOMPARE(save("saved.pdb"), QStringList());
        QFile saved(path("saved.pdb"));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QVERIFY(!saved.readAll().contains("LINK"));
    }
    // Bonds count, and not the rows that list them.
    void allBondsThatComeBackWithAnotherAreCounted() {
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 4.5 0 0 1",
                    "C2 C B LIG A 1 ? 0.0 4.5 0 1", "C2 C C LIG A 1 ? 0.0 0 4.5 1",
                    "C2 C D LIG A 1 ? 0.0 0 -4.5 1"},
                   ".", {"LIG 1 C1-C2", "LIG 1 C1-C2", "LIG 1 C1-C2", "LIG 1 C1-C2"});
        for (int i = 0; i != 2; ++i) {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/LIG 1 C1-C2"));
        }
        QCOMPARE(save("saved.cif"),
                 QStringList("2 bonds that were deleted come back when the file is read, as the "
                             "file lists them with those of other alternative locations"));
        QCOMPARE(bondsIn("saved.cif").size(), 4);
    }
    void aBondThatComesBackForTwoReasonsIsSaidOnce() {
        openListed({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C A LIG A 1 ? 1.5 0 0 1",
                    "C2 C B LIG A 1 ? 0.0 1.5 0 1"},
                   ".", {"LIG 1 C1-C2", "LIG 1 C1-C2"});
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/LIG 1 C1-C2"));
        }
        QCOMPARE(save("saved.cif"), comesBackAsNear);
        QCOMPARE(bondsIn("saved.cif").size(), 2);
    }
    void aLinkThatComesBackForTwoReasonsIsSaidOnce() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C2 "}).replace("   3.000", "  -1.500");
        text[text.indexOf(" C2 ") + 4] = 'A';
        text[text.lastIndexOf(" C2 ") + 4] = 'B';
        openText(
            "LINK         C1  ALA A   1                 C2  ALA A   1     1555   1555  1.50\n" +
            text);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/ALA 1 C1-C2"));
        }
        QCOMPARE(save("saved.pdb"), comesBackAsNear);
        QCOMPARE(bondsIn("saved.pdb").size(), 2);
    }
    void aLinkOfOneAlternativeLocationGoesAlone() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C2 "});
        text.replace("   1.500", "   4.500").replace("   3.000", "  -4.500");
        text[text.indexOf(" C2 ") + 4] = 'A';
        text[text.lastIndexOf(" C2 ") + 4] = 'B';
        const QByteArray link = "LINK         C1  ALA A   1                 C2  ALA A   1     1555 "
                                "  1555  4.50\n";
        openText(link + text);
        QCOMPARE(bondNames(item("/test")).size(), 2);
        const auto destroy = [] {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/ALA 1 C1-C2"));
        };
        destroy();
        QCOMPARE(save("saved.pdb"), QStringList());
        destroy();
        QCOMPARE(save("none.pdb"), QStringList());
        QCOMPARE(bondsIn("saved.pdb"), QStringList("ALA 1 C1-C2"));
        QCOMPARE(bondsIn("none.pdb"), QStringList());
    }
    void aDestroyedBondLeavesThoseToSymmetryCopies() {
        const QByteArray link = "LINK         C1  ALA A   1                 C2  ALA A   1     1555 "
                                "  1555  4.50\n";
        const QByteArray other = QByteArray(link).replace("  1555  4.50", "  2545 10.97");
        const QByteArray atoms = chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500");
        const QByteArray cell =
            "CRYST1   20.000   20.000   20.000  90.00  90.00  90.00 P 1 21 1      2\n";
        openText(link + other + cell + atoms);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/ALA 1 C1-C2"));
        }
        QCOMPARE(save("saved.pdb"), QStringList());
        QCOMPARE(unpacked(path("saved.pdb")), other + cell + atoms);
        QCOMPARE(save("saved.cif"), QStringList());
        QCOMPARE(bondsIn("saved.cif"), QStringList());
        QVERIFY(unpacked(path("saved.cif")).contains("C2 ? 1 ? 2_545"));
    }
    void bondsGoByTheLettersThatAtomsGet() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C3 "});
        for (int row = 0; row != 3; ++row)
            text[row * text.size() / 3 + 16] = row == 2 ? 'B' : 'A';
        openText(text);
        QCOMPARE(bondNames(item("/test")), QStringList("ALA 1 C1-C2"));
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Model");
            TAVIK::SetAtomModel(dynamic_cast<TAVIK::Atom*>(item("/test/A/Groups/ALA 1/C2")), 2);
        }
        QCOMPARE(save("saved.pdb"),
                 QStringList({"1 further bond is found when the file is read, as the atoms are "
                              "near each other",
                              "1 bond is not kept, as the atoms are in different alternative "
                              "locations"}));
        QCOMPARE(bondsIn("saved.pdb"), QStringList("ALA 1 C2-C3"));
    }
};

REGISTER_TEST(SavedLocationsTest)
#include "SavedLocationsTest.moc"
