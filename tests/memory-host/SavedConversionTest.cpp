// Saving entries in another format than the one that they were read in, and entries of no file.
// What is written is read by gemmi and by this host.
#include "Ancestry.h"
#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "Space.h"
#include "files/Hybrid36.h"
#include "files/SaveReport.h"
#include "files/SavedTables.h"
#include "files/Saving.h"
#include "files/WriteMmcif.h"
#include "files/WritePdb.h"
#include "items/Building.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

using namespace file_testing;
using memory_host::OpenedFile;
using memory_host::SaveError;
using memory_host::saveFile;
using memory_host::SaveOptions;

namespace {

using Lines = std::vector<std::vector<std::string>>;

QByteArray bytesOf(const std::string& path) {
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The line with which saving is refused; empty when it is not.
QString saveRefusal(const std::vector<TAVIK::Compound*>& items, const std::string& path) {
    try {
        saveFile(items, path);
    } catch (const SaveError& error) {
        return QString::fromStdString(error.what());
    }
    return {};
}

// What the atoms say beside serial numbers and label ids, which are given anew.
std::vector<std::string> shownDetails(TAVIK::Compound* entry) {
    std::vector<std::string> lines;
    for (TAVIK::Atom* atom : atoms(entry)) {
        DetailsText details = detailsOf(*atom);
        details.serial = 0;
        details.labelChain = details.labelNumber = {};
        lines.push_back(textOf(*atom).text() + ' ' + details.text());
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

template <class Change> void change(Publisher::ActionType kind, const Change& change) {
    const DataPointBase guard(nullptr, kind, "Change");
    QVERIFY(guard.m_good);
    change();
}

// An entry of a chain with one residue, made without a file.
TAVIK::Compound* madeEntry(const QString& chain, const QString& residue,
                           const std::vector<TAVIK::AtomValues>& values) {
    using TAVIK::DataMaker;
    TAVIK::Compound* entry = nullptr;
    change(Publisher::Add, [&] {
        entry = DataMaker::makeCore(TAVIK::Space::instance(), "made", "Composite");
        TAVIK::Compound* molecule = DataMaker::makeCore(entry, chain.toStdString(), "Molecule");
        TAVIK::Compound* groups = DataMaker::makeCore(molecule, "Groups", "Composite");
        TAVIK::Compound* item = DataMaker::makeCore(groups, residue.toStdString(), "Residue");
        for (const TAVIK::AtomValues& atom : values)
            memory_host::addAtom(item, atom);
    });
    return entry;
}

TAVIK::AtomValues atomValues(const char* name, float x) {
    TAVIK::AtomValues values;
    values.name = name;
    values.type = "C";
    values.position = TAVIK::Vertex(x, 2.0F, 3.0F, true);
    return values;
}

// A chain of residues of as many atoms each.
memory_host::SavedContent tableOf(std::uint32_t residues, std::uint32_t atomsEach) {
    memory_host::SavedContent content;
    content.names = {"", "A", "ALA", "C"};
    const auto number = [&content](const std::string& text) {
        content.names.push_back(text);
        return static_cast<std::uint32_t>(content.names.size() - 1);
    };
    std::vector<std::uint32_t> names;
    for (std::uint32_t i = 0; i != atomsEach; ++i)
        names.push_back(number("C" + std::to_string(i)));
    memory_host::SavedModel model;
    model.name = "table";
    model.chains = {1};
    for (std::uint32_t i = 0; i != residues; ++i) {
        memory_host::SavedResidue residue;
        residue.name = 2;
        residue.number = number(std::to_string(i + 1));
        residue.firstAtom = static_cast<std::uint32_t>(model.atoms.size());
        model.residues.push_back(residue);
        for (const std::uint32_t name : names) {
            memory_host::SavedAtom atom;
            const auto place = static_cast<float>(model.atoms.size());
            atom.position = {std::fmod(place, 50.0F) * 4.0F,
                             std::fmod(std::floor(place / 50.0F), 50.0F) * 4.0F,
                             std::floor(place / 2500.0F) * 4.0F};
            atom.hasPosition = true;
            atom.name = name;
            atom.element = 3;
            model.atoms.push_back(atom);
        }
    }
    content.structures.push_back({nullptr, 0, {std::move(model)}});
    return content;
}

} // namespace

class SavedConversionTest : public FileTestCase {
    Q_OBJECT
private:
    std::string out(const char* name) const { return path(name).toStdString(); }

private slots:
    void otherFormatsAreReadAsTheSame_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("ending");
        QTest::newRow("1ubq") << "1ubq.pdb"
                              << "cif";
        QTest::newRow("alternative residues") << "1ejg.pdb"
                                              << "cif";
        QTest::newRow("models") << "1d3z.pdb"
                                << "cif";
        QTest::newRow("mmCIF") << "1cbs.cif.gz"
                               << "pdb";
        QTest::newRow("packed") << "1cbs.cif.gz"
                                << "pdb.gz";
        QTest::newRow("large") << "1tii.pdb"
                               << "cif.gz";
    }
    void otherFormatsAreReadAsTheSame() {
        QFETCH(QString, file);
        QFETCH(QString, ending);
        const OpenedFile source = opened(structure(file).toStdString());
        const std::string saved = path("converted." + ending).toStdString();
        QVERIFY(!saveFile(source.items, saved).empty());
        const Lines expected = sortedAtoms(source.items);
        QCOMPARE(gemmiAtoms(saved), expected);
        const OpenedFile again = memory_host::openFile(saved);
        QCOMPARE(again.items.size(), source.items.size());
        QCOMPARE(again.remarks.size(), std::size_t(0));
        for (std::size_t i = 0; i != source.items.size(); ++i) {
            QCOMPARE(shownDetails(again.items[i]), shownDetails(source.items[i]));
            QCOMPARE(bondNames(again.items[i]), bondNames(source.items[i]));
        }
    }

    void metadataArriveAndEachLostKindIsALine() {
        const OpenedFile source = opened(structure("1ubq.pdb").toStdString());
        const std::vector<std::string> remarks = saveFile(source.items, out("u.cif"));
        const QByteArray text = bytesOf(out("u.cif"));
        for (const char* value : {"_entry.id 1UBQ", "_cell.length_a 50.84", "'P 21 21 21'",
                                  "_struct_conf.", "_struct_sheet_range.", "_entity_poly_seq."})
            QVERIFY2(text.contains(value), value);
        const auto remarksOf = [&](const std::string& kind) {
            return std::count_if(remarks.begin(), remarks.end(), [&](const std::string& line) {
                return line.find(" of kind " + kind + ' ') != std::string::npos;
            });
        };
        QCOMPARE(remarksOf("REMARK"), 1);
        QCOMPARE(remarksOf("JRNL"), 1);
        QCOMPARE(remarksOf("CRYST1"), 0);
        QCOMPARE(remarksOf("HELIX"), 0);
    }

    // As before 1996: the last columns name the entry and count the lines.
    void metadataOfOldFilesArrive() {
        QByteArray row = atomAt(" CA ", 1.0F).leftJustified(72, ' ', true);
        openText(
            "TITLE     OF OLD                                                        1ABC   2\n"
            "CRYST1   50.840   42.770   28.950  90.00  90.00  90.00 P 21 21 21    4  1ABC   3\n" +
            row + "1ABC  68\n");
        const std::vector<TAVIK::Compound*> items = {item("/test")};
        QStringList remarks;
        for (const std::string& line : saveFile(items, out("old.cif")))
            remarks << QString::fromStdString(line).section(": ", 1);
        QCOMPARE(remarks, QStringList("the segment names of 1 atom are not kept"));
        QVERIFY(bytesOf(out("old.cif")).contains("_cell.length_a 50.84"));
        QVERIFY(bytesOf(out("old.cif")).contains("'OF OLD'"));
    }

    void theSignOfAZeroIsKept() {
        openText(mmcif({"CA C . ALA A 1 ? -0.000 -0.0004 -1.000 1"}), {}, "zero.cif");
        const std::vector<TAVIK::Compound*> items = {item("/test")};
        (void)saveFile(items, out("zero.pdb"));
        QVERIFY(bytesOf(out("zero.pdb")).contains("  -0.000   0.000  -1.000"));
    }

    void secondaryStructureLosesTheResiduesThatAreGone() {
        QByteArray text;
        for (int i = 1; i != 10; ++i) {
            PdbAtom atom;
            atom.number = QByteArray::number(i);
            atom.x = 3.8F * static_cast<float>(i);
            text += line(atom);
        }
        openText("HELIX    1   1 ALA A    1  ALA A    4  1                                   4\n"
                 "SHEET    1   A 2 ALA A   5  ALA A   6  0\n"
                 "SHEET    2   A 2 ALA A   7  ALA A   9 -1  O  ALA A   7   N  ALA A   6\n" +
                 text);
        (void)saveFile(std::vector{item("/test")}, out("all.cif"));
        change(Publisher::Delete, [&] {
            for (const char* residue : {"1", "7", "9"})
                TAVIK::DataMaker::Destroy(item(QString("/test/A/Groups/ALA ") + residue));
        });
        (void)saveFile(std::vector{item("/test")}, out("part.cif"));
        const auto recordsOf = [this](const std::string& file) {
            TAVIK::Compound* const entry = opened(out(file.c_str())).items.front();
            (void)saveFile(std::vector{entry}, out("again.pdb"));
            QStringList records;
            for (const QByteArray& record : bytesOf(out("again.pdb")).split('\n'))
                if (record.startsWith("HELIX") || record.startsWith("SHEET"))
                    records << QString::fromLatin1(record).simplified();
            return records;
        };
        QCOMPARE(recordsOf("all.cif"),
                 QStringList({"HELIX 1 1 ALA A 1 ALA A 4 1 4", "SHEET 1 A 2 ALA A 5 ALA A 6 0",
                              "SHEET 2 A 2 ALA A 7 ALA A 9 -1 O ALA A 7 N ALA A 6"}));
        const QStringList left{"HELIX 1 1 ALA A 2 ALA A 4 1 3", "SHEET 1 A 2 ALA A 5 ALA A 6 0",
                               "SHEET 2 A 2 ALA A 8 ALA A 8 -1"};
        QCOMPARE(recordsOf("part.cif"), left);
    }

    // Their types are those of PDB files only in part.
    void connectionsArriveWithTheirAtoms() {
        openText(mmcif({"SG S . CYS A 1 ? 0 0 0 1", "SG2 S . LIG B 1 ? 4.0 0 0 1",
                        "O O . HOH C 1 ? 0 3.0 0 1", "NZ N . LYS D 1 ? 0 0 3.0 1",
                        "C C . LIG E 1 ? 0 0 -4.0 1"}) +
                     "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n"
                     "_struct_conn.ptnr1_auth_asym_id\n_struct_conn.ptnr1_auth_seq_id\n"
                     "_struct_conn.ptnr1_label_atom_id\n_struct_conn.ptnr1_label_comp_id\n"
                     "_struct_conn.ptnr2_auth_asym_id\n_struct_conn.ptnr2_auth_seq_id\n"
                     "_struct_conn.ptnr2_label_atom_id\n_struct_conn.ptnr2_label_comp_id\n"
                     "a disulf A 1 SG CYS B 1 SG2 LIG\nb hydrog A 1 SG CYS C 1 O HOH\n"
                     "c saltbr A 1 SG CYS D 1 NZ LYS\nd covale_base A 1 SG CYS E 1 C LIG\n",
                 {}, "test.cif");
        const QStringList bonds = bondNames(item("/test"));
        QCOMPARE(bonds.size(), 2);
        QStringList remarks;
        for (const std::string& remark : saveFile(std::vector{item("/test")}, out("test.pdb")))
            remarks << QString::fromStdString(remark).section(": ", 1);
        QVERIFY(remarks.contains(
            "the file's 2 rows of category _struct_conn of other types than covale, disulf and "
            "metalc are not kept"));
        QCOMPARE(bondNames(opened(out("test.pdb")).items.front()), bonds);
    }

    void typesOfBondsMayBeMoreParticular() {
        const auto text = [](const char* block, const char* type) {
            return mmcif({"C C . LIG A 1 ? 0 0 0 1", "O O . LIG B 1 ? 4.0 0 0 1"}, block) +
                   "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n"
                   "_struct_conn.ptnr1_auth_asym_id\n_struct_conn.ptnr1_auth_seq_id\n"
                   "_struct_conn.ptnr1_label_atom_id\n_struct_conn.ptnr1_label_comp_id\n"
                   "_struct_conn.ptnr2_auth_asym_id\n_struct_conn.ptnr2_auth_seq_id\n"
                   "_struct_conn.ptnr2_label_atom_id\n_struct_conn.ptnr2_label_comp_id\na " +
                   type + " A 1 C LIG B 1 O LIG\n";
        };
        openText(text("one", "COVALE"), {}, "one.cif");
        openText(text("two", "covale_base"), {}, "two.cif");
        QCOMPARE(bondNames(item("/two")).size(), 1);
        saveFile(std::vector{item("/one"), item("/two")}, out("both.cif"));
        for (TAVIK::Compound* entry : opened(out("both.cif")).items)
            QCOMPARE(bondNames(entry).size(), 1);

        openText(text("three", "saltbr"), {}, "three.cif");
        QVERIFY(bondNames(item("/three")).isEmpty());
        QStringList remarks;
        for (const std::string& remark :
             saveFile(std::vector{item("/one"), item("/three")}, out("other.cif")))
            remarks << QString::fromStdString(remark).section(": ", 1);
        QCOMPARE(remarks, QStringList("the types of 1 row of category _struct_conn other than "
                                      "covale, disulf, metalc and hydrog are not kept"));
        QVERIFY(bondNames(opened(out("other.cif")).items.back()).isEmpty());
    }

    // As in crystals in which the X-rays broke some of the disulfides.
    void aDisulfideOfOneAlternativeLocationIsSaidToBeOneOfAll() {
        openText(mmcif({"SG S . CYS A 1 ? 0 0 0 1", "SG S A CYS B 1 ? 2.0 0 0 1",
                        "SG S B CYS B 1 ? 3.5 0 0 1"}) +
                     "loop_\n_struct_conn.id\n_struct_conn.conn_type_id\n"
                     "_struct_conn.ptnr1_auth_asym_id\n_struct_conn.ptnr1_auth_seq_id\n"
                     "_struct_conn.ptnr1_label_atom_id\n_struct_conn.ptnr1_label_comp_id\n"
                     "_struct_conn.ptnr2_auth_asym_id\n_struct_conn.ptnr2_auth_seq_id\n"
                     "_struct_conn.ptnr2_label_atom_id\n_struct_conn.ptnr2_label_comp_id\n"
                     "_struct_conn.pdbx_ptnr2_label_alt_id\na disulf A 1 SG CYS B 1 SG CYS A\n",
                 {}, "test.cif");
        QCOMPARE(bondNames(item("/test")).size(), 1);
        QStringList remarks;
        for (const std::string& remark : saveFile(std::vector{item("/test")}, out("test.pdb")))
            remarks << QString::fromStdString(remark).section(": ", 1);
        QVERIFY(remarks.contains("1 further bond is read, as the file lists the bonds of all "
                                 "alternative locations together"));
        QCOMPARE(bondNames(opened(out("test.pdb")).items.front()).size(), 2);
    }

    void displacementsArriveWithTheirAtoms() {
        const OpenedFile source = opened(structure("1ejg.pdb").toStdString());
        const QByteArray before = bytesOf(structure("1ejg.pdb").toStdString());
        (void)saveFile(source.items, out("e.cif"));
        (void)saveFile(opened(out("e.cif")).items, out("e.pdb"));
        const auto rows = [](const QByteArray& text) {
            QStringList lines;
            for (const QByteArray& line : text.split('\n'))
                if (line.startsWith("ANISOU"))
                    lines << QString::fromLatin1(line.mid(12, 58));
            lines.sort();
            return lines;
        };
        QVERIFY(!rows(before).isEmpty());
        QCOMPARE(rows(bytesOf(out("e.pdb"))), rows(before));
    }

    void chargesAndRadiiAreALossThatIsSaid() {
        const OpenedFile source = openText("HETATM 12 N ALA 1 3.2 4.3 -0.2 -0.3 1.8\n"
                                           "ATOM   13 C ALA 1 3.2 5.8 -0.2 -0.3 1.8\n",
                                           {}, "test.pqr");
        for (const char* name : {"q.pdb", "q.cif"}) {
            const std::vector<std::string> remarks = saveFile(source.items, out(name));
            QCOMPARE(remarks.size(), std::size_t(1));
            QVERIFY(QString::fromStdString(remarks.front())
                        .endsWith("the partial charges and radii of 2 atoms are not kept"));
            QCOMPARE(gemmiAtoms(out(name)), sortedAtoms(source.items));
        }
    }

    void madeEntriesAndBondsAreWritten() {
        TAVIK::Compound* entry =
            madeEntry("A", "LIG 7B", {atomValues("C1", 0.0F), atomValues("C2", 4.0F)});
        const auto both = atoms(entry);
        change(Publisher::Add, [&] { memory_host::addBond(entry, both[0], both[1]); });
        for (const char* name : {"m.pdb", "m.cif"}) {
            QVERIFY(saveFile(std::vector{entry}, out(name)).empty());
            const OpenedFile again = opened(out(name));
            QCOMPARE(shownDetails(again.items.front()), shownDetails(entry));
            QCOMPARE(bondNames(again.items.front()).size(), 1);
            QCOMPARE(gemmiAtoms(out(name)), sortedAtoms({entry}));
        }
    }

    // Entries that plug-ins make may have any form.
    void whatStandsInNoChainOrResidueIsSaid() {
        TAVIK::Compound* const entry = madeEntry("", "ALA 1", {atomValues("CA", 0.0F)});
        change(Publisher::Add, [&] {
            memory_host::addAtom(entry, atomValues("Q", 5.0F));
            TAVIK::Compound* const residue = TAVIK::DataMaker::makeCore(entry, "GLY 2", "Residue");
            memory_host::addAtom(residue, atomValues("", 10.0F));
        });
        for (const char* name : {"odd.pdb", "odd.cif"}) {
            QStringList remarks;
            for (const std::string& remark : saveFile(std::vector{entry}, out(name)))
                remarks << QString::fromStdString(remark).section(": ", 1);
            QCOMPARE(remarks,
                     QStringList({"1 atom in no residue comes back as those of a residue UNL",
                                  "1 residue in no chain comes back as those of a chain \"_\"",
                                  "2 blank names come back as \"_\""}));
            QStringList paths = atomPaths(opened(out(name)).items.front());
            paths.replaceInStrings(QRegularExpression("^/[^/]*"), "");
            paths.sort();
            QCOMPARE(paths, QStringList({"/_/Groups/ALA 1/Backbone/CA",
                                         "/_/Groups/GLY 2/Side chain/_", "/_/Groups/UNL/Q"}));
        }
    }

    void whatStandsInNoChainJoinsTheBlankOneOfAnEditedFile() {
        PdbAtom row;
        row.chain = " ";
        TAVIK::Compound* const entry = openText(line(row)).items.front();
        change(Publisher::Add, [&] { memory_host::addAtom(entry, atomValues("Q", 5.0F)); });
        (void)saveFile(std::vector{entry}, out("edited.pdb"));
        QCOMPARE(childNames(opened(out("edited.pdb")).items.front()), QStringList("_"));
    }

    void entriesWithoutAnyPositionAreRefused() {
        TAVIK::AtomValues nowhere = atomValues("CA", 0.0F);
        nowhere.position = {};
        TAVIK::Compound* const made = madeEntry("A", "ALA 1", {nowhere});
        TAVIK::Compound* const read = openText(atomAt(" CA ", 1.0F)).items.front();
        change(Publisher::Update, [&] { TAVIK::SetAtomPosition(atoms(read).front(), {}); });
        for (TAVIK::Compound* entry : {made, read}) {
            for (const char* name : {"none.pdb", "none.cif"}) {
                const QString line = saveRefusal({entry}, out(name));
                QVERIFY2(line.contains("no atom to be saved has a position"), qPrintable(line));
                QVERIFY(!QFile::exists(path(name)));
            }
        }
    }

    void numbersBeyondTheColumnsAreHybrid36() {
        TAVIK::Compound* entry = madeEntry("AB", "ALA 12345", {atomValues("CA", 1.0F)});
        (void)saveFile(std::vector{entry}, out("h.pdb"));
        QVERIFY(bytesOf(out("h.pdb")).contains(" CA  ALAABA1T5"));
        QCOMPARE(gemmiAtoms(out("h.pdb")), sortedAtoms({entry}));
        QCOMPARE(shownDetails(opened(out("h.pdb")).items.front()), shownDetails(entry));
        using memory_host::hybrid36;
        for (const auto& [value, text] : {std::pair(-999, "-999"),
                                          {9999, "9999"},
                                          {10000, "A000"},
                                          {1223055, "ZZZZ"},
                                          {1223056, "a000"},
                                          {2436111, "zzzz"},
                                          {2436112, ""},
                                          {-1000, ""}})
            QCOMPARE(QString::fromStdString(hybrid36(value, 4)), QString(text));
    }

    void whatDoesNotFitIsRefusedAndMmcifOffered_data() {
        QTest::addColumn<QString>("chain");
        QTest::addColumn<QString>("residue");
        QTest::addColumn<QString>("atom");
        QTest::addColumn<float>("x");
        QTest::addColumn<QString>("said");
        QTest::newRow("chain") << "ABCD"
                               << "ALA 1"
                               << "CA" << 0.0F << "chain name \"ABCD\"";
        QTest::newRow("residue") << "A"
                                 << "ALAN 1"
                                 << "CA" << 0.0F << "residue name \"ALAN\"";
        QTest::newRow("number") << "A"
                                << "ALA -1000"
                                << "CA" << 0.0F << "number \"-1000\"";
        QTest::newRow("large") << "A"
                               << "ALA 9999999"
                               << "CA" << 0.0F << "number \"9999999\"";
        QTest::newRow("atom") << "A"
                              << "ALA 1"
                              << "CA123" << 0.0F << "atom name \"CA123\"";
        QTest::newRow("far") << "A"
                             << "ALA 1"
                             << "CA" << 10000.0F << "coordinate 10000";
        QTest::newRow("ambiguous") << "AB"
                                   << "LIG 1"
                                   << "C1" << 0.0F << "\"LIGAB\"";
        QTest::newRow("insertion") << "A"
                                   << "ALA 1XY"
                                   << "CA" << 0.0F << "insertion code \"XY\"";
    }
    void whatDoesNotFitIsRefusedAndMmcifOffered() {
        QFETCH(QString, chain);
        QFETCH(QString, residue);
        QFETCH(QString, atom);
        QFETCH(float, x);
        QFETCH(QString, said);
        const std::string name = atom.toStdString();
        TAVIK::Compound* entry = madeEntry(chain, residue, {atomValues(name.c_str(), x)});
        const std::string before = m_folder.write("full.pdb", "as it was");
        const QString line = saveRefusal({entry}, before);
        QVERIFY2(line.contains(said), qPrintable(line));
        QVERIFY2(line.contains("mmCIF"), qPrintable(line));
        QCOMPARE(bytesOf(before), QByteArray("as it was"));
        QCOMPARE(saveRefusal({entry}, out("full.cif")), QString());
        QCOMPARE(shownDetails(opened(out("full.cif")).items.front()), shownDetails(entry));
    }

    void lettersOutsideOfAsciiArriveAsMmcif() {
        PdbAtom atom;
        atom.chain = "\xe9";
        const OpenedFile source = opened(m_folder.write("letters.pdb", line(atom)));
        QVERIFY(saveFile(source.items, out("letters.cif")).empty());
        const OpenedFile again = opened(out("letters.cif"));
        QCOMPARE(sortedAtoms(again.items), sortedAtoms(source.items));
    }

    void onlyWhatIsSelectedIsSavedWithTheBondsInIt() {
        const OpenedFile source = opened(structure("1ejg.pdb").toStdString());
        change(Publisher::Update, [&] {
            for (const char* name : {"/1ejg/A/Groups/CYS 3", "/1ejg/A/Groups/CYS 40"})
                item(name)->SetSelected(true);
        });
        SaveOptions options;
        options.onlySelected = true;
        (void)saveFile(source.items, out("s.cif"), options);
        const OpenedFile again = opened(out("s.cif"));
        QCOMPARE(childNames(again.items.front()->ChildBegin()[0]->ChildBegin()[0]),
                 (QStringList{"CYS 3", "CYS 40"}));
        QCOMPARE(bytesOf(out("s.cif")).count("\ndisulf"), 2); // the row, and its type
    }

    void entriesOfSeveralFilesAreDataBlocks() {
        std::vector<TAVIK::Compound*> items = opened(structure("1ubq.pdb").toStdString()).items;
        items.push_back(opened(structure("1cbs.cif.gz").toStdString()).items.front());
        (void)saveFile(items, out("two.cif"));
        const OpenedFile again = opened(out("two.cif"));
        QCOMPARE(again.items.size(), std::size_t(2));
        QCOMPARE(sortedAtoms(again.items), sortedAtoms(items));
        const QString line = saveRefusal(items, out("two.pdb"));
        QVERIFY2(line.contains("mmCIF"), qPrintable(line));
    }

    void aDestroyedBondIsNoConnectionAnyMore() {
        const OpenedFile source = opened(structure("1ejg.pdb").toStdString());
        (void)saveFile(source.items, out("all.cif"));
        QCOMPARE(bytesOf(out("all.cif")).count("\ndisulf"), 4);
        change(Publisher::Delete, [&] {
            TAVIK::Atom* sulfur = nullptr;
            for (TAVIK::Atom* atom : atoms(item("/1ejg/A/Groups/CYS 3")))
                if (atom->GetName() == "SG")
                    sulfur = atom;
            TAVIK::DataMaker::Destroy(sulfur);
        });
        (void)saveFile(source.items, out("less.cif"));
        QCOMPARE(bytesOf(out("less.cif")).count("\ndisulf"), 3);
        QCOMPARE(gemmiAtoms(out("less.cif")), sortedAtoms(source.items));
    }

    void aNameOfWhichNoAtomIsLeftIsSaid() {
        const std::string file = structure("1ejg.pdb").toStdString();
        (void)saveFile(opened(file).items, out("both.cif"));
        for (const std::string& source : {file, out("both.cif")}) {
            TAVIK::Compound* const entry = opened(source).items.front();
            const QString name = QString::fromStdString(entry->GetName());
            change(Publisher::Delete, [&] {
                for (TAVIK::Atom* atom : atoms(item('/' + name + "/A/Groups/PRO,SER 22")))
                    if (TAVIK::GetAtomDetails(atom).alternative != 'A')
                        TAVIK::DataMaker::Destroy(atom);
            });
            for (const char* saved : {"one.pdb", "one.cif"}) {
                QStringList remarks;
                for (const std::string& remark : saveFile(std::vector{entry}, out(saved)))
                    remarks << QString::fromStdString(remark).section(": ", 1);
                QCOMPARE(remarks.filter("several names"),
                         QStringList("1 residue of several names is read again without those of "
                                     "which no atom is left: PRO,SER 22 as PRO 22"));
                TAVIK::Compound* const again = opened(out(saved)).items.front();
                const QString groups =
                    '/' + QString::fromStdString(again->GetName()) + "/A/Groups/";
                QVERIFY(item(groups + "PRO 22"));
                QVERIFY(item(groups + "LEU,ILE 25"));
            }
        }
    }

    void modelsThatDifferKeepTheirResidues() {
        const OpenedFile source = opened(structure("1d3z.pdb").toStdString());
        change(Publisher::Delete, [&] {
            TAVIK::DataMaker::Destroy(item("/1d3z.2/A/Groups/GLN 2"));
            TAVIK::DataMaker::Destroy(item("/1d3z.1/A/Groups/MET 1"));
        });
        (void)saveFile(source.items, out("nmr.cif"));
        QCOMPARE(gemmiAtoms(out("nmr.cif")), sortedAtoms(source.items));
        const OpenedFile again = opened(out("nmr.cif"));
        QCOMPARE(sortedAtoms(again.items), sortedAtoms(source.items));
        for (const char* name : {"/1d3z-2.1/A/Groups/ILE 3", "/1d3z-2.2/A/Groups/ILE 3"})
            QCOMPARE(TAVIK::GetLabelIds(item(name)).number, std::string_view("3"));
    }

    void onlyActiveModelsAreSavedAsShown() {
        const OpenedFile source = opened(structure("1ejg.pdb").toStdString());
        SaveOptions options;
        options.onlyActiveModels = true;
        (void)saveFile(source.items, out("shown.cif"), options);
        for (TAVIK::Atom* atom : atoms(opened(out("shown.cif")).items.front()))
            QVERIFY(TAVIK::GetAtomDetails(atom).alternative <= 'A');
    }

    void madeAlternativesGetFreeLetters() {
        TAVIK::AtomValues first = atomValues("CB", 1.0F);
        first.model = 1;
        TAVIK::AtomValues second = atomValues("CB", 1.5F);
        second.model = 2;
        TAVIK::Compound* entry = madeEntry("A", "ALA 1", {atomValues("CA", 0.0F), first, second});
        for (const char* name : {"alt.pdb", "alt.cif"}) {
            const std::vector<std::string> remarks = saveFile(std::vector{entry}, out(name));
            QCOMPARE(remarks.size(), std::size_t(1));
            QVERIFY(remarks.front().ends_with(
                "2 further bonds are found when the file is read, as the atoms are near each "
                "other"));
            QString letters;
            for (TAVIK::Atom* atom : atoms(opened(out(name)).items.front()))
                letters += TAVIK::GetAtomDetails(atom).alternative == '\0'
                               ? '-'
                               : TAVIK::GetAtomDetails(atom).alternative;
            QCOMPARE(letters, QString("-AB"));
        }
    }

    void lettersFollowTheModelsAndNotTheOrderOfTheAtoms() {
        TAVIK::AtomValues first = atomValues("CB", 1.0F);
        first.model = 2;
        TAVIK::AtomValues second = atomValues("CB", 1.5F);
        second.model = 1;
        TAVIK::Compound* entry = madeEntry("A", "ALA 1", {first, second});
        // One that was of a model in its file, and is of all now.
        TAVIK::AtomValues shared = atomValues("CA", 0.0F);
        shared.details.alternative = 'C';
        change(Publisher::Add,
               [&] { memory_host::addAtom(TAVIK::GetParent(atoms(entry).front()), shared); });
        for (const char* name : {"two.pdb", "two.cif"}) {
            (void)saveFile(std::vector{entry}, out(name));
            QString letters;
            for (const TAVIK::Atom* atom : atoms(opened(out(name)).items.front()))
                letters += detailsOf(*atom).alternative ? detailsOf(*atom).alternative : '-';
            QCOMPARE(letters, QString("-BA")); // The backbone comes first.
        }
    }

    void moreModelsThanLettersAreRefused() {
        std::vector<TAVIK::AtomValues> values(63, atomValues("CA", 0.0F));
        for (std::size_t i = 0; i != values.size(); ++i)
            values[i].model = static_cast<unsigned int>(i + 1);
        TAVIK::Compound* entry = madeEntry("A", "ALA 1", values);
        for (const char* name : {"crowded.pdb", "crowded.cif"})
            QVERIFY(saveRefusal({entry}, out(name)).contains("accepted are up to 62"));
        change(Publisher::Delete, [&] { TAVIK::DataMaker::Destroy(atoms(entry).back()); });
        for (const char* name : {"crowded.pdb", "crowded.cif"})
            QCOMPARE(saveRefusal({entry}, out(name)), QString());
    }

    void atomsOutsideOfChainsAndResiduesAreRead() {
        TAVIK::Compound* entry = madeEntry("A", "ALA 1", {atomValues("CA", 0.0F)});
        change(Publisher::Add, [&] { memory_host::addAtom(entry, atomValues("CB", 4.0F)); });
        for (const char* name : {"loose.pdb", "loose.cif"}) {
            (void)saveFile(std::vector{entry}, out(name));
            const OpenedFile again = opened(out(name));
            QCOMPARE(childNames(again.items.front()), (QStringList{"A", "_"}));
            QCOMPARE(childNames(again.items.front()->ChildBegin()[1]->ChildBegin()[0]),
                     QStringList{"UNL"});
        }
    }

    void manyAtomsAndResiduesAreHybrid36() {
        memory_host::SavedContent content = tableOf(11'000, 10);
        memory_host::SaveReport report(out("many.pdb"));
        const std::string text = memory_host::writePdb(content, report);
        QVERIFY(text.find("ATOM  A0000") != std::string::npos);
        m_folder.write("many.pdb", QByteArray::fromStdString(text));
        const OpenedFile again = opened(out("many.pdb"));
        QCOMPARE(gemmiAtoms(out("many.pdb")), sortedAtoms(again.items));
        const auto all = atoms(again.items.front());
        QCOMPARE(all.size(), std::size_t(110'000));
        QCOMPARE(TAVIK::GetAtomDetails(all.back()).serial, 110'000);
        QVERIFY(item("/many/A/Groups/ALA 11000"));
    }

    void tenThousandModelsAreRefused() {
        memory_host::SavedContent content = tableOf(1, 1);
        auto& models = content.structures.front().models;
        models.resize(9'999, models.front());
        memory_host::SaveReport report(out("models.pdb"));
        QVERIFY(memory_host::writePdb(content, report).find("MODEL     9999") != std::string::npos);
        models.push_back(models.front());
        QVERIFY_THROWS_EXCEPTION(SaveError, (void)memory_host::writePdb(content, report));
        QVERIFY(!memory_host::writeMmcif(content, report).empty());
    }

    void whereMemoryRunsOutTheOldFileStays() {
        PdbAtom second;
        second.name = " CB ";
        second.alternative = 'A';
        second.x = 1.5F;
        const OpenedFile source = openText(line({}) + line(second));
        for (const char* name : {"small.cif", "small.ent"}) {
            TAVIK::Compound* other = madeEntry("A", "ALA 1", {atomValues("CA", 0.0F)});
            const std::vector<TAVIK::Compound*> items = {
                QString(name).endsWith("cif") ? source.items.front() : other};
            int failures = 0;
            for (int granted = 0;; ++granted) {
                const std::string file = m_folder.write(name, "what was there before");
                bool isSaved = true;
                int refused = 0;
                {
                    const FailingMemory memory(granted, 1, 0);
                    try {
                        saveFile(items, file);
                    } catch (const SaveError&) {
                        isSaved = false;
                    } catch (const std::bad_alloc&) {
                        isSaved = false;
                    }
                    refused = FailingMemory::refusals();
                }
                if (!isSaved)
                    QCOMPARE(bytesOf(file), QByteArray("what was there before"));
                else
                    QCOMPARE(sortedAtoms(opened(file).items), sortedAtoms(items));
                if (refused == 0)
                    break;
                failures += isSaved ? 0 : 1;
            }
            QVERIFY2(failures > 50, qPrintable(QString::number(failures)));
        }
    }
};

REGISTER_TEST(SavedConversionTest)
#include "SavedConversionTest.moc"
