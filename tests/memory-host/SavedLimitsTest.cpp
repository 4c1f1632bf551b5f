// What has no room in the file that is edited: it is refused, with mmCIF offered, or is written in
// hybrid-36, or a line says so. Nothing is cut.
#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "Space.h"
#include "files/Saving.h"

#include <QFile>

using namespace file_testing;
using TAVIK::AtomValues;
using TAVIK::Compound;
using TAVIK::DataMaker;

namespace {

AtomValues usualAtom() {
    AtomValues values{"CA", "C", TAVIK::Vertex(10.0F, 2.0F, 3.0F, true)};
    return values;
}

// Adds an atom in a chain and a residue of its own.
void addAtom(const char* chain, const char* residue, const AtomValues& values) {
    const DataPointBase guard(nullptr, Publisher::Add, "Add");
    Compound* const molecule =
        DataMaker::makeCore(*TAVIK::Space::instance()->ChildBegin(), chain, "Molecule");
    Compound* const groups = DataMaker::makeCore(molecule, "Groups", "Composite");
    DataMaker::makeAtom(DataMaker::makeCore(groups, residue, "Residue"), values);
}

} // namespace

class SavedLimitsTest : public FileTestCase {
    Q_OBJECT

    /// Saves the first entry; returns the lines that are said, or why it is refused.
    QStringList save(const char* name) {
        const std::vector<Compound*> items = {*TAVIK::Space::instance()->ChildBegin()};
        QStringList lines;
        try {
            for (const std::string& line : memory_host::saveFile(items, path(name).toStdString()))
                lines << QString::fromStdString(line).section(": ", 1);
        } catch (const memory_host::SaveError& error) {
            lines << QString::fromLatin1(error.what()).section(": ", 1);
        }
        return lines;
    }
    QByteArray textOfFile(const char* name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void whatDoesNotFitAnEditedPdbFileIsRefused_data() {
        QTest::addColumn<QByteArray>("chain");
        QTest::addColumn<QByteArray>("residue");
        QTest::addColumn<AtomValues>("atom");
        QTest::addColumn<QString>("said");
        const auto add = [](const char* name, const char* chain, const char* residue,
                            const char* said, auto change) {
            AtomValues values = usualAtom();
            change(values);
            QTest::newRow(name) << QByteArray(chain) << QByteArray(residue) << values
                                << QString(said);
        };
        const auto as = [](AtomValues&) {};
        add("chain", "ABCD", "ALA 1", "of chain \"ABCD\"", as);
        add("chain, short residue", "ABC", "DA 1", "of chain \"ABC\"", as);
        add("residue", "B", "ALANI 1", "\"ALANI 1\"", as);
        add("four letters, chain of two", "BC", "ALAN 1", "\"ALAN 1\"", as);
        add("negative", "B", "ALA -1000", "\"ALA -1000\"", as);
        add("large", "B", "ALA 9999999", "\"ALA 9999999\"", as);
        add("insertion", "B", "ALA 1XY", "\"ALA 1XY\"", as);
        add("atom", "B", "ALA 1", "atom name \"CA123\"",
            [](AtomValues& values) { values.name = "CA123"; });
        add("element", "B", "ALA 1", "element \"Carbon\"",
            [](AtomValues& values) { values.type = "Carbon"; });
        add("far", "B", "ALA 1", "coordinate -1000",
            [](AtomValues& values) { values.position = TAVIK::Vertex(-1000.0F, 0, 0, true); });
        add("temperature", "B", "ALA 1", "temperature factor 1000",
            [](AtomValues& values) { values.temperature = 1000.0F; });
        add("occupancy", "B", "ALA 1", "occupancy 1000",
            [](AtomValues& values) { values.details.occupancy = 1000.0F; });
        add("charge", "B", "ALA 1", "formal charge -10",
            [](AtomValues& values) { values.details.formalCharge = -10; });
    }
    void whatDoesNotFitAnEditedPdbFileIsRefused() {
        QFETCH(QByteArray, chain);
        QFETCH(QByteArray, residue);
        QFETCH(AtomValues, atom);
        QFETCH(QString, said);
        openText(atomAt(" CA ", 1.0F));
        addAtom(chain, residue, atom);
        m_folder.write("saved.pdb", "as it was");
        const QStringList lines = save("saved.pdb");
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.front().contains(said), qPrintable(lines.front()));
        QVERIFY2(lines.front().contains("mmCIF"), qPrintable(lines.front()));
        QCOMPARE(textOfFile("saved.pdb"), QByteArray("as it was"));
        save("saved.cif");
        const auto items = opened(path("saved.cif").toStdString()).items;
        QVERIFY(atom.type != "C" || sortedAtoms(items) == sortedAtoms({item("/test")}));
    }

    // Of no file, it is written as a whole.
    void whatDoesNotFitANewPdbFileIsRefused_data() {
        whatDoesNotFitAnEditedPdbFileIsRefused_data();
    }
    void whatDoesNotFitANewPdbFileIsRefused() {
        QFETCH(QByteArray, chain);
        QFETCH(QByteArray, residue);
        QFETCH(AtomValues, atom);
        {
            const DataPointBase guard(nullptr, Publisher::Add, "Add");
            DataMaker::makeCore(TAVIK::Space::instance(), "made", "Composite");
        }
        addAtom(chain, residue, atom);
        const QStringList lines = save("new.pdb");
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.front().contains("does not fit the columns of a PDB file; accepted is "
                                        "saving as mmCIF"),
                 qPrintable(lines.front()));
        QVERIFY(!QFile::exists(path("new.pdb")));
    }
    void displacementsThatDoNotFitAreRefused() {
        const QByteArray tags = "_atom_site_anisotrop.id\n_atom_site_anisotrop.U[1][1]\n"
                                "_atom_site_anisotrop.U[2][2]\n_atom_site_anisotrop.U[3][3]\n"
                                "_atom_site_anisotrop.U[1][2]\n_atom_site_anisotrop.U[1][3]\n"
                                "_atom_site_anisotrop.U[2][3]\n";
        QByteArray atoms = mmcif({"1 CA C . ALA A 1 ? 1 2 3 1"});
        atoms.replace("loop_\n", "loop_\n_atom_site.id\n");
        for (const char* u : {"999.9", "1000.0"}) {
            m_folder.write("test.cif", atoms + "loop_\n" + tags + "1 " + u + " 1 1 0 0 0\n#\n");
            const auto items = opened(path("test.cif").toStdString()).items;
            const QStringList lines = save("saved.pdb");
            QCOMPARE(lines.join(u' ').contains("anisotropic displacement of the atom \"CA\""),
                     QByteArray(u) == "1000.0");
            DataMaker::Destroy(items.front());
        }
    }

    void serialNumbersGoOnInHybrid36() {
        openText(QByteArray(atomAt(" CA ", 1.0F)).replace(6, 5, "99999"));
        addAtom("B", "ALA 10000", usualAtom());
        addAtom("C", "ALA -998", usualAtom());
        QCOMPARE(save("saved.pdb"), QStringList());
        const QByteArray text = textOfFile("saved.pdb");
        QVERIFY(text.contains("\nATOM  A0000  CA  ALA BA000 "));
        QVERIFY(text.contains("\nATOM  A0001  CA  ALA C-998 "));
        QCOMPARE(sortedAtoms(opened(path("saved.pdb").toStdString()).items),
                 sortedAtoms({item("/test")}));
        QCOMPARE(gemmiAtoms(path("saved.pdb").toStdString()), sortedAtoms({item("/test")}));
    }

    void digitsBeyondTheColumnsAreSaid() {
        openText(atomAt(" CA ", 1.0F) + atomAt(" CB ", 2.5F));
        const auto move = [](const char* name, float x) {
            const DataPointBase guard(nullptr, Publisher::Update, "Move");
            TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(item(name)),
                                   TAVIK::Vertex(x, 0, 0, true));
        };
        move("/test/A/Groups/ALA 1/CB", 2.25F);
        QCOMPARE(save("saved.pdb"), QStringList());
        move("/test/A/Groups/ALA 1/CB", 2.12345F);
        QCOMPARE(save("saved.pdb"),
                 QStringList("the numbers of 1 atom are rounded to the columns of a PDB file"));
    }

    void whatAnEditedMmcifFileHasNoColumnForIsSaid() {
        m_folder.write("test.cif",
                       "data_x\nloop_\n_atom_site.id\n_atom_site.type_symbol\n"
                       "_atom_site.label_atom_id\n_atom_site.label_comp_id\n"
                       "_atom_site.label_asym_id\n_atom_site.label_seq_id\n_atom_site.Cartn_x\n"
                       "_atom_site.Cartn_y\n_atom_site.Cartn_z\n1 C CA ALA A 1 1.0 2.0 3.0\n");
        opened(path("test.cif").toStdString());
        addAtom("B", "ALA 1", usualAtom());
        QCOMPARE(save("saved.cif"), QStringList());
        AtomValues charged = usualAtom();
        charged.details.formalCharge = 1;
        addAtom("C", "ALA 1", charged);
        addAtom("D", "ALA 1B", usualAtom());
        QCOMPARE(save("saved.cif"),
                 QStringList("something of 2 atoms that were made or changed is not saved, as the "
                             "file has no column for it"));
    }
};

REGISTER_TEST(SavedLimitsTest)
#include "SavedLimitsTest.moc"
