// Saving entries into the mmCIF file that they came from: the text stays but for what was changed,
// and reads back as what the items show.
#include "Ancestry.h"
#include "AtomDetails.h"
#include "DataMaker.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "Space.h"
#include "files/Saving.h"
#include "items/Building.h"

#include <algorithm>

using namespace file_testing;
using TAVIK::Compound;
using TAVIK::DataMaker;

namespace {

// The lines of a text that another one has not, or not as often.
QByteArrayList linesOnlyIn(const QByteArray& text, const QByteArray& other) {
    QHash<QByteArray, int> known;
    for (const QByteArray& line : other.split('\n'))
        ++known[line];
    QByteArrayList lines;
    for (const QByteArray& line : text.split('\n'))
        if (--known[line] < 0)
            lines << line;
    return lines;
}

std::vector<Compound*> entries() {
    Compound* space = TAVIK::Space::instance();
    return {space->ChildBegin(), space->ChildEnd()};
}

TAVIK::Atom* atom(const QString& name) {
    return dynamic_cast<TAVIK::Atom*>(item(name));
}

// A loop of a category with the columns' names in one text.
QByteArray loop(const QByteArray& category, const QByteArray& columns, const QByteArray& rows) {
    QByteArray text = "loop_\n";
    for (const QByteArray& column : columns.split(' '))
        text += category + '.' + column + '\n';
    return text + rows + "#\n";
}

const QByteArray atomColumns =
    "group_PDB id type_symbol label_atom_id label_alt_id label_comp_id label_asym_id "
    "label_entity_id label_seq_id pdbx_PDB_ins_code Cartn_x Cartn_y Cartn_z occupancy "
    "B_iso_or_equiv pdbx_formal_charge auth_seq_id auth_comp_id auth_asym_id auth_atom_id "
    "pdbx_PDB_model_num";

// Residues ALA 1, GLY 2 and SER 3 of the chain X, which is A by its label, and a water.
const QByteArray peptide =
    "ATOM   1 N N  . ALA A 1 1 ? 1.000  2.000 3.000 1.00 10.00 ? 1   ALA X N  1\n"
    "ATOM   2 C CA . ALA A 1 1 ? 2.400  2.000 3.000 1.00 11.00 ? 1   ALA X CA 1\n"
    "ATOM   3 N N  . GLY A 1 2 ? 11.000 2.000 3.000 1.00 12.00 ? 2   GLY X N  1\n"
    "ATOM   4 C CA . GLY A 1 2 ? 12.400 2.000 3.000 1.00 13.00 ? 2   GLY X CA 1\n"
    "ATOM   5 N N  . SER A 1 3 ? 21.000 2.000 3.000 1.00 14.00 ? 3   SER X N  1\n"
    "HETATM 6 O O  . HOH B 2 . ? 31.000 2.000 3.000 1.00 15.00 ? 101 HOH X O  1\n";

} // namespace

class SavedMmcifTest : public FileTestCase {
    Q_OBJECT

public:
    SavedMmcifTest() : FileTestCase(QStringLiteral("file.cif")) {}

private:
    // The text of all entries in a new file.
    QByteArray savedText(const QString& name = QStringLiteral("saved.cif")) {
        memory_host::saveFile(entries(), path(name).toStdString());
        return unpacked(path(name));
    }
    // The same, which reads back as what the items are.
    QByteArray checkedText() {
        QByteArray text = savedText();
        const std::string file = path("saved.cif").toStdString();
        const auto shown = sortedAtoms(entries());
        std::vector<std::string> details;
        for (TAVIK::Atom* one : atoms(TAVIK::Space::instance()))
            details.push_back(unnumbered(*one));
        const auto clear = [] {
            for (Compound* entry : entries())
                DataMaker::Destroy(entry);
        };
        clear();
        compare(gemmiAtoms(file), shown);
        compare(sortedAtoms(opened(file).items), shown);
        std::vector<std::string> read;
        for (TAVIK::Atom* one : atoms(TAVIK::Space::instance()))
            read.push_back(unnumbered(*one));
        compare(sorted(read), sorted(details));
        clear();
        return text;
    }
    QStringList savingRemarks() const {
        QStringList remarks;
        const std::string file = path("saved.cif").toStdString();
        for (const std::string& remark : memory_host::saveFile(entries(), file))
            remarks << QString::fromStdString(remark);
        return remarks;
    }
    // An atom's model and details, but for its serial number and its letter.
    static std::string unnumbered(const TAVIK::Atom& one) {
        DetailsText details = detailsOf(one);
        details.serial = 0;
        details.alternative = '\0';
        return details.text() + ' ' + one.GetModelNumber();
    }
    static std::vector<std::string> sorted(std::vector<std::string> lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    template <class Lines> static void compare(const Lines& found, const Lines& expected) {
        if (found != expected)
            QTest::qFail("the saved file holds other atoms", __FILE__, __LINE__);
    }
    // Opens a file of `peptide` and more, of which GLY 2 is destroyed, and returns what is lost.
    QByteArrayList lostWithResidue(const QByteArray& more, QByteArrayList* gained = nullptr) {
        const QByteArray text = "data_x\n#\n" + more + loop("_atom_site", atomColumns, peptide);
        openText(text);
        DataMaker::Destroy(item("/x/X/Groups/GLY 2"));
        const QByteArray saved = checkedText();
        if (gained)
            *gained = linesOnlyIn(saved, text);
        QByteArrayList lost = linesOnlyIn(text, saved);
        for (const QByteArray& line : peptide.split('\n'))
            if (line.contains("GLY"))
                lost.removeOne(line);
        return lost;
    }

private slots:
    void whatIsNotEditedIsSavedByteForByte_data() {
        QTest::addColumn<QByteArray>("text");
        const QByteArray plain = mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? 2 2 3 1"});
        QTest::newRow("plain") << plain;
        QTest::newRow("CR LF") << QByteArray(plain).replace('\n', "\r\n");
        QTest::newRow("CR") << QByteArray(plain).replace('\n', '\r');
        QTest::newRow("byte order mark") << "\xef\xbb\xbf" + plain;
        QTest::newRow("no line end") << QByteArray(plain).chopped(2) + "_b.c\t'a b'   \n\n_b.d ;";
        QTest::newRow("comments") << "# a comment\n" +
                                         QByteArray(plain).replace(" 3 1\n", " 3 1 #c\n");
        QTest::newRow("two blocks")
            << plain + "data_none\n_e.f 1\n" + QByteArray(plain).replace("test", "two");
        QTest::newRow("two models") << mmcif(
            {"N N . ALA A 1 ? 1 2 3 4", "N N . ALA A 1 ? 1 2 3 2", "C C . ALA A 1 ? 1 3 3 4"});
        QTest::newRow("text field")
            << plain + "_t.x\n;loop_\n_atom_site.id\n 1 # ' \"\n;\nsave_f\n_a.b 1\nsave_\n";
        QTest::newRow("Latin-1") << plain + "# \xe9\n_t.x 'M\xfcller'\n";
        QTest::newRow("letters") << mmcif({"CA C B ALA A 1 ? 1 2 3 1", "CA C A ALA A 1 ? 2 2 3 1",
                                           "CA C XY GLY A 2 ? 12 2 3 1",
                                           "N N . GLY A 2 ? 9 2 3 1"});
        QTest::newRow("numbers") << mmcif(
            {"N N . ALA A 1 ? 1.0(3) +2 3e0 1", "C C . ALA A 1 ? . ? ? 1"});
        QTest::newRow("pairs") << QByteArray(
            "data_x\n_atom_site.id 1\n_b.c 1\n_atom_site.Cartn_x 1\n"
            "_atom_site.Cartn_y 2\n_atom_site.Cartn_z 3\n"
            "_atom_site.label_atom_id 'Z N'\n_atom_site.label_comp_id ZN\n"
            "_atom_site.label_asym_id A\n");
    }
    void whatIsNotEditedIsSavedByteForByte() {
        QFETCH(QByteArray, text);
        m_folder.write("file.cif", text);
        memory_host::openFile(path().toStdString());
        QCOMPARE(savedText(), text);
        QCOMPARE(savedText("saved.cif.gz"), text);
    }

    void realFilesAreSavedByteForByte_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"1cbs.cif.gz", "6zu5.cif"})
            QTest::newRow(name) << QString(name);
    }
    void realFilesAreSavedByteForByte() {
        QFETCH(QString, name);
        opened(structure(name).toStdString());
        QVERIFY(savedText() == unpacked(structure(name)));
    }

    void aDestroyedLigandTakesItsRowsWithIt() {
        const QByteArray text = unpacked(structure("1cbs.cif.gz"));
        opened(structure("1cbs.cif.gz").toStdString());
        DataMaker::Destroy(item("/1cbs/A/Groups/REA 200"));
        const QByteArray saved = checkedText();
        QByteArrayList expected;
        for (const QByteArray& line : text.split('\n'))
            if (line.contains(" REA A C") || line.contains(" REA A O") ||
                line == "B 2 REA 1   200 200 REA REA A . ")
                expected << line;
        QCOMPARE(expected.size(), 23);
        QCOMPARE(linesOnlyIn(text, saved), expected);
        QCOMPARE(linesOnlyIn(saved, text), QByteArrayList());
    }

    void destroyedWatersLeaveSitesWithFewerResidues() {
        const QByteArray text = unpacked(structure("1cbs.cif.gz"));
        opened(structure("1cbs.cif.gz").toStdString());
        for (int number = 300; number != 400; ++number)
            DataMaker::Destroy(item(QString("/1cbs/A/Groups/HOH %1").arg(number)));
        const QByteArray saved = checkedText();
        QVERIFY(!saved.contains("HETATM 1213"));
        QVERIFY(!saved.contains("HOH C .   ? HOH A 309"));
        QVERIFY(!saved.contains("_pdbx_nonpoly_scheme.asym_id \nC 3 HOH"));
        QVERIFY(saved.contains("_struct_site.pdbx_num_residues    8  \n"));
        QVERIFY(saved.contains("\n8 AC1 8  TYR A 134") || saved.contains("\n8  AC1 8  TYR A 134"));
        QVERIFY(saved.contains("B 2 REA 1   200 200 REA REA A . \n"));
    }

    void whatNamesADestroyedResidueGoes_data() {
        QTest::addColumn<QByteArray>("category");
        QTest::addColumn<QByteArray>("columns");
        QTest::addColumn<QByteArray>("gone");
        QTest::addColumn<QByteArray>("kept");
        const auto add = [](const char* category, const char* columns, const char* gone,
                            const char* kept) {
            QTest::newRow(category) << QByteArray(category) << QByteArray(columns)
                                    << QByteArray(gone) << QByteArray(kept);
        };
        add("_struct_conn",
            "id conn_type_id ptnr1_label_asym_id ptnr1_label_comp_id ptnr1_label_seq_id "
            "ptnr1_label_atom_id pdbx_ptnr1_label_alt_id pdbx_ptnr1_PDB_ins_code "
            "ptnr1_auth_asym_id "
            "ptnr1_auth_seq_id ptnr2_label_asym_id ptnr2_label_comp_id ptnr2_label_seq_id "
            "ptnr2_label_atom_id ptnr2_auth_asym_id ptnr2_auth_seq_id",
            "1 hydrog A ALA 1 N ? ? X 1 A GLY 2 CA X 2\n2 hydrog A GLY 2 N ? ? X 2 A ALA 1 N X 1\n",
            "3 hydrog A ALA 1 N ? ? X 1 A SER 3 N X 3\n4 hydrog A ALA 1 N ? ? X 1 ? ? ? ? ? ?\n");
        add("_struct_conf",
            "id beg_label_comp_id beg_label_asym_id beg_label_seq_id pdbx_beg_PDB_ins_code "
            "end_label_comp_id end_label_asym_id end_label_seq_id pdbx_end_PDB_ins_code "
            "beg_auth_comp_id beg_auth_asym_id beg_auth_seq_id end_auth_comp_id end_auth_asym_id "
            "end_auth_seq_id",
            "H1 ALA A 1 ? GLY A 2 ? ALA X 1 GLY X 2\n", "H2 ALA A 1 ? SER A 3 ? ALA X 1 SER X 3\n");
        add("_struct_mon_prot_cis",
            "pdbx_id label_comp_id label_seq_id label_asym_id label_alt_id pdbx_PDB_ins_code "
            "auth_comp_id auth_seq_id auth_asym_id pdbx_label_comp_id_2 pdbx_label_seq_id_2 "
            "pdbx_label_asym_id_2 pdbx_PDB_ins_code_2 pdbx_auth_comp_id_2 pdbx_auth_seq_id_2 "
            "pdbx_auth_asym_id_2 pdbx_PDB_model_num",
            "1 ALA 1 A . ? ALA 1 X GLY 2 A ? GLY 2 X 1\n",
            "2 ALA 1 A . ? ALA 1 X SER 3 A ? SER 3 X 1\n");
        add("_pdbx_validate_torsion",
            "id PDB_model_num auth_comp_id auth_asym_id auth_seq_id PDB_ins_code label_alt_id phi",
            "1 1 GLY X 2 ? ? -50.0\n", "2 1 ALA X 1 ? ? -60.0\n");
        add("_pdbx_validate_rmsd_angle",
            "id PDB_model_num auth_atom_id_1 auth_asym_id_1 auth_comp_id_1 auth_seq_id_1 "
            "auth_atom_id_2 auth_asym_id_2 auth_comp_id_2 auth_seq_id_2 auth_atom_id_3 "
            "auth_asym_id_3 auth_comp_id_3 auth_seq_id_3",
            "1 1 N X ALA 1 CA X ALA 1 N X GLY 2\n", "2 1 N X ALA 1 CA X ALA 1 N X SER 3\n");
        add("_pdbx_unobs_or_zero_occ_residues",
            "id PDB_model_num polymer_flag auth_asym_id auth_comp_id auth_seq_id PDB_ins_code",
            "1 1 Y X GLY 2 ?\n", "2 1 Y X MET 0 ?\n");
        add("_pdbx_unobs_or_zero_occ_atoms",
            "id PDB_model_num auth_asym_id auth_comp_id auth_seq_id PDB_ins_code auth_atom_id",
            "1 1 X GLY 2 ? O\n", "2 1 X SER 3 ? OG\n");
        add("_pdbx_struct_sheet_hbond",
            "sheet_id range_1_label_atom_id range_1_label_seq_id range_1_label_asym_id "
            "range_1_auth_seq_id range_1_auth_asym_id range_2_label_atom_id range_2_label_seq_id "
            "range_2_label_asym_id range_2_auth_seq_id range_2_auth_asym_id",
            "A N 1 A 1 X N 2 A 2 X\n", "A N 1 A 1 X N 3 A 3 X\n");
        add("_ndb_struct_na_base_pair_step",
            "model_number i_label_asym_id_1 i_label_seq_id_1 i_auth_asym_id_1 i_auth_seq_id_1 "
            "j_auth_asym_id_1 j_auth_seq_id_1 i_auth_asym_id_2 i_auth_seq_id_2 j_auth_asym_id_2 "
            "j_auth_seq_id_2",
            "1 A 1 X 1 X 3 X 1 X 2\n", "1 A 1 X 1 X 3 X 1 X 3\n");
        add("_pdbx_struct_mod_residue",
            "id label_asym_id label_comp_id label_seq_id auth_asym_id auth_comp_id auth_seq_id",
            "1 A GLY 2 X GLY 2\n2 A GLY 2 . GLY .\n", "3 A SER 3 X SER 3\n4 A GLY 9 . GLY .\n");
        add("_struct_site",
            "id pdbx_auth_asym_id pdbx_auth_comp_id pdbx_auth_seq_id pdbx_auth_ins_code",
            "AC1 X GLY 2 ?\n", "AC2 X SER 3 ?\nAC3 ? ? ? ?\nAC4 X LYS 2 ?\n");
        add("_struct_ref_seq", "align_id pdbx_strand_id seq_align_beg pdbx_auth_seq_align_beg", "",
            "1 X 2 2\n");
        add("_entity_poly_seq", "entity_id num mon_id hetero", "", "1 2 GLY n\n");
    }
    void whatNamesADestroyedResidueGoes() {
        QFETCH(QByteArray, category);
        QFETCH(QByteArray, columns);
        QFETCH(QByteArray, gone);
        QFETCH(QByteArray, kept);
        QByteArrayList expected = gone.split('\n');
        expected.removeLast();
        QByteArrayList gained;
        QCOMPARE(lostWithResidue(loop(category, columns, gone + kept), &gained), expected);
        QCOMPARE(gained, QByteArrayList());
    }

    void aCategoryThatLosesAllRowsGoesAsAWhole() {
        const QByteArray columns = "id auth_comp_id auth_asym_id auth_seq_id";
        const QByteArray rows = "1 GLY X 2\n2 GLY X 2\n";
        const QByteArray planes = loop("_pdbx_validate_planes", columns, rows);
        const QByteArray atomsOnly = "data_x\n#\n" + loop("_atom_site", atomColumns, peptide);
        openText(QByteArray(atomsOnly).insert(atomsOnly.indexOf("loop_"), planes));
        DataMaker::Destroy(item("/x/X/Groups/GLY 2"));
        QByteArray expected = atomsOnly;
        for (const QByteArray& line : peptide.split('\n'))
            if (line.contains("GLY"))
                expected.replace(line + '\n', "");
        QCOMPARE(checkedText(), expected);
        QCOMPARE(lostWithResidue("_pdbx_validate_planes.id           1\n"
                                 "_pdbx_validate_planes.auth_asym_id X\n"
                                 "_pdbx_validate_planes.auth_seq_id  2\n#\n"),
                 QByteArrayList({"_pdbx_validate_planes.id           1",
                                 "_pdbx_validate_planes.auth_asym_id X",
                                 "_pdbx_validate_planes.auth_seq_id  2", "#"}));
    }

    void aResidueOfTheSequenceIsNotObservedAnyMore() {
        QByteArrayList gained;
        const QByteArray columns = "asym_id entity_id seq_id mon_id ndb_seq_num pdb_seq_num "
                                   "auth_seq_num pdb_mon_id auth_mon_id pdb_strand_id pdb_ins_code";
        QCOMPARE(lostWithResidue(loop("_pdbx_poly_seq_scheme", columns,
                                      "A 1 1 ALA 1 1 1 ALA ALA X .\nA 1 2 GLY 2 2 2 GLY GLY X .\n"),
                                 &gained),
                 QByteArrayList{"A 1 2 GLY 2 2 2 GLY GLY X ."});
        QCOMPARE(gained, QByteArrayList{"A 1 2 GLY 2 2 ? ?   ?   X ."});
    }

    void rowsGoWithThoseThatTheyBelongTo() {
        QByteArrayList gained;
        const QByteArray sheets =
            loop("_struct_sheet", "id number_strands", "A 3\nB 1\n") +
            loop("_struct_sheet_order", "sheet_id range_id_1 range_id_2", "A 1 2\nA 2 3\nA 1 3\n") +
            loop("_struct_sheet_range",
                 "sheet_id id beg_auth_asym_id beg_auth_seq_id end_auth_asym_id end_auth_seq_id",
                 "A 1 X 1 X 1\nA 2 X 1 X 2\nA 3 X 3 X 3\nB 1 X 2 X 3\n");
        QCOMPARE(lostWithResidue(sheets, &gained),
                 QByteArrayList({"A 3", "B 1", "A 1 2", "A 2 3", "A 2 X 1 X 2", "B 1 X 2 X 3"}));
        QCOMPARE(gained, QByteArrayList{"A 2"});
    }

    void helicesAndStrandsThatLoseAnEndAreSaid() {
        const QByteArray columns =
            "id beg_auth_asym_id beg_auth_seq_id end_auth_asym_id end_auth_seq_id";
        openText("data_x\n" +
                 loop("_struct_conf", columns, "A X 1 X 2\nB X 2 X 2\nC X 2 X 3\nD X 1 X 3\n") +
                 loop("_struct_sheet_range", columns, "A X 2 X 3\n") +
                 loop("_atom_site", atomColumns, peptide));
        DataMaker::Destroy(item("/x/X/Groups/GLY 2"));
        const QStringList remarks = savingRemarks();
        QCOMPARE(remarks.size(), 2);
        QVERIFY(remarks[0].contains("2 rows of _struct_conf are not kept"));
        QVERIFY(remarks[1].contains("1 row of _struct_sheet_range is not kept"));
    }

    void aMadeBondThatIsNotFoundByDistanceIsSaid() {
        openText("data_x\n" + loop("_atom_site", atomColumns, peptide));
        const auto bond = [](const char* second) {
            DataMaker::makeBond(item("/x/X/Bonds"), item("/x/X/Groups/ALA 1/N"), item(second));
        };
        DataMaker::Destroy(item("/x/X/Bonds/ALA 1 N-CA"));
        bond("/x/X/Groups/ALA 1/CA");
        QCOMPARE(savingRemarks(), QStringList());
        bond("/x/X/Groups/GLY 2/N");
        QCOMPARE(savingRemarks().size(), 1);
        QVERIFY(
            savingRemarks().front().contains("1 bond is not kept, as the atoms are more than "));
        TAVIK::SetAtomPosition(atom("/x/X/Groups/GLY 2/N"), {6.0F, 2.0F, 3.0F, true});
        QCOMPARE(savingRemarks().size(), 2);
        QVERIFY(
            savingRemarks().front().contains("1 bond is not kept, as the atoms are more than "));
        QVERIFY(savingRemarks().back().contains("1 bond that was made or stretched is not saved"));
    }

    void aDestroyedBondTakesTheRowThatListsItWithIt() {
        const QByteArray columns =
            "id conn_type_id ptnr1_auth_asym_id ptnr1_auth_seq_id ptnr1_label_atom_id "
            "pdbx_ptnr1_label_alt_id ptnr2_label_asym_id ptnr2_label_seq_id ptnr2_label_atom_id "
            "ptnr2_auth_asym_id ptnr2_auth_seq_id";
        const QByteArray letters =
            QByteArray(peptide)
                .replace("ATOM   4 C CA . GLY", "ATOM   4 C CA A GLY")
                .replace("ATOM   5 N N  . SER A 1 3 ? 21.000", "ATOM   5 C CA B GLY A 1 2 ? 12.000")
                .replace("3   SER X N ", "2   GLY X CA");
        const QByteArray text = "data_x\n" +
                                loop("_struct_conn", columns,
                                     "1 covale X 1 CA ? A 1 N X 1\n2 hydrog X 1 N ? A 1 CA X 1\n"
                                     "3 covale X 2 CA A A 2 N X 2\n4 covale X 2 CA B A 2 N X 2\n"
                                     "5 covale X 2 N ? A 2 CA X 2\n"
                                     "6 covale X 1 CA ? A 1 N ? ?\n") +
                                loop("_atom_site", atomColumns, letters);
        openText(text);
        const auto saved = [&] { return linesOnlyIn(text, savedText()); };
        QCOMPARE(saved(), QByteArrayList());
        DataMaker::Destroy(item("/x/X/Bonds/ALA 1 N-CA"));
        QCOMPARE(saved(),
                 QByteArrayList({"1 covale X 1 CA ? A 1 N X 1", "6 covale X 1 CA ? A 1 N ? ?"}));
        DataMaker::Destroy(item("/x/X/Bonds/GLY 2 N-CA"));
        QCOMPARE(saved().size(), 3);
        DataMaker::Destroy(item("/x/X/Bonds/GLY 2 N-CA"));
        QVERIFY(!savedText().contains("covale"));
        QVERIFY(savedText().contains("2 hydrog X 1 N ? A 1 CA X 1\n"));
    }

    void aDestroyedBondLeavesThoseToSymmetryCopies() {
        const QByteArray text =
            "data_x\n" +
            loop("_struct_conn",
                 "id conn_type_id ptnr1_auth_asym_id ptnr1_auth_seq_id ptnr1_label_atom_id "
                 "ptnr1_symmetry ptnr2_auth_asym_id ptnr2_auth_seq_id ptnr2_label_atom_id "
                 "ptnr2_symmetry",
                 "1 covale X 1 CA 1_555 X 1 N 1_555\n2 covale X 1 CA 1_555 X 1 N 2_655\n"
                 "3 covale X 1 CA 2_655 X 1 N 2_655\n4 covale X 1 CA ? X 1 N 2_655\n") +
            loop("_atom_site", atomColumns, peptide);
        openText(text);
        DataMaker::Destroy(item("/x/X/Bonds/ALA 1 N-CA"));
        QCOMPARE(
            linesOnlyIn(text, savedText()),
            QByteArrayList({"1 covale X 1 CA 1_555 X 1 N 1_555",
                            "3 covale X 1 CA 2_655 X 1 N 2_655", "4 covale X 1 CA ? X 1 N 2_655"}));
    }

    void displacementsGoWithTheirAtom() {
        QCOMPARE(lostWithResidue(loop("_atom_site_anisotrop", "id U[1][1]",
                                      "1 0.1\n2 0.2\n3 0.3\n4 0.4\n'5' 0.5\n")),
                 QByteArrayList({"3 0.3", "4 0.4"}));
    }

    void anAtomThatGoesLeavesWhatNamesItsResidue() {
        const QByteArray text =
            "data_x\n" +
            loop("_pdbx_validate_chiral", "id auth_atom_id auth_asym_id auth_seq_id",
                 "1 CA X 2\n2 N X 2\n3 . X 2\n") +
            loop("_atom_site", atomColumns, peptide);
        openText(text);
        DataMaker::Destroy(item("/x/X/Groups/GLY 2/CA"));
        QCOMPARE(linesOnlyIn(text, checkedText()),
                 QByteArrayList({"1 CA X 2", peptide.split('\n')[3]}));
    }

    void aResidueIsGoneWhereItIsInNoModel() {
        const QByteArray text =
            "data_x\n" +
            loop("_pdbx_validate_planes", "id PDB_model_num auth_asym_id auth_seq_id",
                 "1 1 X 2\n2 2 X 2\n3 ? X 2\n") +
            loop("_atom_site", atomColumns, peptide + QByteArray(peptide).replace(" 1\n", " 2\n"));
        openText(text);
        DataMaker::Destroy(item("/x.1/X/Groups/GLY 2"));
        QCOMPARE(linesOnlyIn(text, savedText()).front(), QByteArray("1 1 X 2"));
        QCOMPARE(linesOnlyIn(text, savedText()).size(), 3);
        DataMaker::Destroy(item("/x.2/X/Groups/GLY 2"));
        QVERIFY(!checkedText().contains("_pdbx_validate_planes"));
    }

    void anEntryThatIsDestroyedTakesItsBlockOrModelWithIt() {
        const QByteArray one = "data_one\n" + loop("_atom_site", atomColumns, peptide);
        const QByteArray between = "data_between\n_a.b 1\n";
        const QByteArray two = "data_two\n_a.b 1\n" + loop("_atom_site", atomColumns, peptide);
        openText(one + between + two);
        DataMaker::Destroy(item("/one"));
        QCOMPARE(savedText(), between + two);
        DataMaker::Destroy(item("/two/X"));
        QVERIFY_EXCEPTION_THROWN(savedText(), memory_host::SaveError);
        QCOMPARE(unpacked(path("saved.cif")), between + two);
    }

    void aMovedAtomHasItsNewPlaceInItsColumns() {
        const QByteArray text = "data_x\n" + loop("_atom_site", atomColumns, peptide);
        openText(text);
        TAVIK::SetAtomPosition(atom("/x/X/Groups/ALA 1/N"), {-1.5F, 2.0F, 1000.25F, true});
        TAVIK::SetAtomPosition(atom("/x/X/Groups/GLY 2/N"), {11.0F, 2.0F, 3.0F, true});
        const QByteArray saved = checkedText();
        QCOMPARE(
            linesOnlyIn(saved, text),
            QByteArrayList{
                "ATOM   1 N N  . ALA A 1 1 ? -1.500 2.000 1000.250 1.00 10.00 ? 1   ALA X N  1"});
        QCOMPARE(linesOnlyIn(text, saved), QByteArrayList{peptide.split('\n').front()});
    }

    void aMovedAtomHasAllDigitsOfItsPlace() {
        openText("data_x\n" + loop("_atom_site", atomColumns, peptide));
        TAVIK::SetAtomPosition(atom("/x/X/Groups/ALA 1/N"), {1.2345679F, 2.0F, -0.1F, true});
        QVERIFY(checkedText().contains("ALA A 1 1 ? 1.2345679 2.000 -0.100 1.00 10.00"));
    }

    void otherValuesOfAnAtomAreWritten() {
        openText("data_x\n" + loop("_atom_site", atomColumns, peptide));
        TAVIK::AtomValues values{.name = "N", .type = "N", .position = {1, 2, 3, true}};
        values.temperature = 25.5F;
        values.details.occupancy = 0.25F;
        values.details.formalCharge = -1;
        memory_host::setAtom(atom("/x/X/Groups/ALA 1/N"), values);
        QVERIFY(checkedText().contains("ALA A 1 1 ? 1.000  2.000 3.000 0.25 25.50 -1 1   ALA X N"));

        const QByteArray columns = "id auth_atom_id auth_comp_id auth_asym_id auth_seq_id Cartn_x "
                                   "Cartn_y Cartn_z";
        openText("data_x\n" + loop("_atom_site", columns, "1 N ALA A 1 1 2 3\n"));
        memory_host::setAtom(atom("/x/A/Groups/ALA 1/N"), values);
        const QStringList remarks = savingRemarks();
        QCOMPARE(remarks.size(), 1);
        QVERIFY(remarks[0].endsWith(": something of 1 atom that was made or changed is not saved, "
                                    "as the file has no column for it"));
    }

    void whatDependsOnThePlaceIsNotKept() {
        const QByteArray columns = "id auth_atom_id auth_comp_id auth_asym_id auth_seq_id Cartn_x "
                                   "Cartn_y Cartn_z Cartn_x_esd fract_x B_iso_or_equiv_esd";
        openText("data_x\n" + loop("_atom_site", columns,
                                   "1 N ALA A 1 1.2(1) 2.12345 3 0.01 0.1 0.5\n"
                                   "2 C ALA A 1 1.2 2.1 3 0.01 0.1 0.5\n"));
        TAVIK::SetAtomPosition(atom("/x/A/Groups/ALA 1/N"), {1.5F, 2.5F, 3.5F, true});
        TAVIK::SetAtomPosition(atom("/x/A/Groups/ALA 1/C"), {});
        const QByteArray saved = savedText();
        QVERIFY(saved.contains("\n1 N ALA A 1 1.500  2.50000 3.500 ?    ?   0.5\n"));
        QVERIFY(saved.contains("\n2 C ALA A 1 ?   ?   ? ?    ?   0.5\n"));
    }

    // The items of a residue stand in another order than its rows.
    void theFirstRowOfALocationKeepsItsLetter() {
        openText(mmcif({"CB C B ALA A 1 ? 3.0 0 0 1", "CA C B ALA A 1 ? 1.5 0 0 1",
                        "N N A ALA A 1 ? 0.0 0 0 1"}));
        QCOMPARE(atomPaths(item("/test")),
                 QStringList({"/test/A/Groups/ALA 1/Backbone/CA", "/test/A/Groups/ALA 1/Backbone/N",
                              "/test/A/Groups/ALA 1/Side chain/CB"}));
        TAVIK::SetAtomModel(atoms(item("/test")).back(), 3);
        const QByteArray saved = savedText();
        QVERIFY(saved.contains("CB C B ALA A 1"));
        QVERIFY(saved.contains("CA C C ALA A 1"));
    }

    void anAtomThatChangesItsLocationLeavesOthersTheirLetters() {
        const QByteArray text = mmcif({"N N A ALA A 1 ? 0.0 0 0 1", "CA C A ALA A 1 ? 1.5 0 0 1",
                                       "CB C A ALA A 1 ? 3.0 0 0 1", "CB C B ALA A 1 ? 3.0 1 0 1"});
        openText(text);
        TAVIK::SetAtomModel(atoms(item("/test")).front(), 2);
        QCOMPARE(linesOnlyIn(savedText(), text), QByteArrayList({"N N B ALA A 1 ? 0.0 0 0 1"}));
    }

    void alternativeModelsHaveLetters() {
        const QByteArray text =
            "data_x\n" +
            loop("_atom_site", atomColumns, QByteArray(peptide).replace("CA . GLY", "CA B GLY"));
        openText(text);
        TAVIK::Atom* shared = atom("/x/X/Groups/ALA 1/CA");
        for (const unsigned int model : {2U, 3U})
            DataMaker::makeAtom(TAVIK::GetParent(shared),
                                {.name = "CA",
                                 .type = "C",
                                 .position = {2.0F, 3.0F, 0.5F * static_cast<float>(model), true},
                                 .temperature = 20.0F,
                                 .model = model});
        TAVIK::SetAtomModel(shared, 1);
        TAVIK::Atom* other = atom("/x/X/Groups/GLY 2/CA");
        DataMaker::makeAtom(TAVIK::GetParent(other),
                            {.name = "CA",
                             .type = "C",
                             .position = {12.0F, 3.0F, 1.0F, true},
                             .model = 2,
                             .details = {.occupancy = 0.25F, .formalCharge = -1}});
        const QByteArray saved = checkedText();
        QCOMPARE(
            linesOnlyIn(saved, text),
            QByteArrayList(
                {"ATOM   2 C CA A ALA A 1 1 ? 2.400  2.000 3.000 1.00 11.00 ? 1   ALA X CA 1",
                 "ATOM   7 C CA B ALA A 1 1 ? 2.000  3.000 1.000 1.00 20.00 ? 1   ALA X CA 1",
                 "ATOM   8 C CA C ALA A 1 1 ? 2.000  3.000 1.500 1.00 20.00 ? 1   ALA X CA 1",
                 "ATOM   9 C CA A GLY A 1 2 ? 12.000 3.000 1.000 0.25 0.00  -1 2   GLY X CA 1"}));
        QCOMPARE(saved.indexOf("ATOM   7 "),
                 saved.indexOf("ATOM   3 ") - 2 * peptide.indexOf("ATOM   2 "));
    }

    void newResiduesAndChainsFollowTheChain() {
        const QByteArray text = "data_x\n" + loop("_atom_site", atomColumns, peptide);
        openText(text);
        Compound* residue = DataMaker::makeCore(item("/x/X/Groups"), "ZN 201A", "Residue");
        DataMaker::makeAtom(residue, {.name = "ZN",
                                      .type = "Zn",
                                      .position = {50.0F, 0.0F, 0.0F, true},
                                      .details = {.formalCharge = 2, .isHetero = true}});
        const QByteArray saved = checkedText();
        QCOMPARE(
            linesOnlyIn(saved, text),
            QByteArrayList{
                "HETATM 7 ZN ZN . ZN  . ? . A 50.000 0.000 0.000 1.00 0.00  2 201 ZN  X ZN 1"});
        QVERIFY(saved.indexOf("HETATM 7 ") > saved.indexOf("HETATM 6 "));
    }

    void anOnlyAtomWithoutALoopGetsOneForOthers() {
        openText(
            "data_x\n_atom_site.id 1\n_atom_site.Cartn_x 1.0\n_atom_site.Cartn_y 2.0\n"
            "_atom_site.Cartn_z 3.0\n_atom_site.label_atom_id \"O5'\"\n_atom_site.type_symbol O\n"
            "_atom_site.label_comp_id LIG\n_atom_site.label_asym_id A\n_atom_site.label_seq_id 7\n"
            "#\n_b.c 1\n");
        DataMaker::makeAtom(item("/x/A/Groups/LIG 7"),
                            {.name = "C 5", .type = "C", .position = {2.5F, 2.0F, 3.0F, true}});
        QCOMPARE(savedText(),
                 "data_x\nloop_\n_atom_site.id\n_atom_site.Cartn_x\n_atom_site.Cartn_y\n"
                 "_atom_site.Cartn_z\n_atom_site.label_atom_id\n_atom_site.type_symbol\n"
                 "_atom_site.label_comp_id\n_atom_site.label_asym_id\n"
                 "_atom_site.label_seq_id\n1 1.0 2.0 3.0 \"O5'\" O LIG A 7\n"
                 "2 2.500 2.000 3.000 'C 5' C LIG A 7\n#\n_b.c 1\n");
    }

    void everySecondAtomOfARealFileIsDestroyed() {
        opened(structure("1cbs.cif.gz").toStdString());
        bool isOdd = false;
        for (TAVIK::Atom* one : atoms(TAVIK::Space::instance()))
            if ((isOdd = !isOdd))
                DataMaker::Destroy(one);
        checkedText();
    }

    void whereMemoryRunsOutTheOldFileStays() {
        const QByteArray text =
            "data_x\n" +
            loop("_struct_site", "id pdbx_auth_asym_id pdbx_auth_seq_id", "A X 2\nB X 1\n") +
            loop("_atom_site", atomColumns, peptide);
        openText(text);
        DataMaker::Destroy(item("/x/X/Groups/GLY 2"));
        TAVIK::SetAtomPosition(atom("/x/X/Groups/ALA 1/N"), {1.5F, 2.5F, 3.5F, true});
        DataMaker::makeAtom(item("/x/X/Groups/HOH 101"),
                            {.name = "H", .type = "H", .position = {31.0F, 2.0F, 4.0F, true}});
        const QByteArray expected = savedText("expected.cif");
        const std::vector<Compound*> all = entries();
        int failures = 0;
        for (int granted = 0;; ++granted) {
            const std::string file = m_folder.write("saved.cif", "what was there before");
            bool isSaved = true;
            int refused = 0;
            {
                const FailingMemory memory(granted, 1, 0);
                try {
                    memory_host::saveFile(all, file);
                } catch (const memory_host::SaveError&) {
                    isSaved = false;
                } catch (const std::bad_alloc&) {
                    isSaved = false;
                }
                refused = FailingMemory::refusals();
            }
            QCOMPARE(unpacked(path("saved.cif")),
                     isSaved ? expected : QByteArray("what was there before"));
            if (refused == 0)
                break;
            failures += isSaved ? 0 : 1;
        }
        QVERIFY2(failures > 50, qPrintable(QString::number(failures)));
    }
};

REGISTER_TEST(SavedMmcifTest)
#include "SavedMmcifTest.moc"
