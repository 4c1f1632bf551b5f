// Bonds in saved files: what files do not list is found again by the distance of the atoms, or is
// listed, or a line says that it is not kept.
#include "AtomDetails.h"
#include "SavedBondsTestCase.h"

#include <array>

using namespace saved_bonds_testing;

namespace {

// An entry without a file.
class Made {
public:
    TAVIK::Atom* atom(float x, char alternative = '\0') const {
        return atom(TAVIK::Vertex(x, 0.0F, 0.0F, true), alternative);
    }
    TAVIK::Atom* atom(const TAVIK::Vertex& at, char alternative = '\0') const {
        const DataPointBase guard(nullptr, Publisher::Add, "Make");
        const std::string name = 'C' + std::to_string(m_count++);
        TAVIK::AtomValues values{.name = name, .type = "C", .position = at};
        values.details.alternative = alternative;
        values.model = alternative == '\0' ? 0 : static_cast<std::uint16_t>(alternative - 'A' + 1);
        return TAVIK::DataMaker::makeAtom(m_residue, values);
    }
    void bond(TAVIK::Atom* a, TAVIK::Atom* b) const {
        const DataPointBase guard(nullptr, Publisher::Add, "Make");
        TAVIK::DataMaker::makeBond(m_entry, a, b);
    }

private:
    static Compound* make(Compound* parent, const char* name, const char* kind) {
        const DataPointBase guard(nullptr, Publisher::Add, "Make");
        return TAVIK::DataMaker::makeCore(parent, name, kind);
    }

    Compound* m_entry = make(TAVIK::Space::instance(), "made", "Composite");
    Compound* m_residue = make(make(m_entry, "A", "Molecule"), "LIG 1", "Residue");
    mutable int m_count = 0;
};

} // namespace

class SavedBondsTest : public SavedBondsTestCase {
    Q_OBJECT

    static void bond(const std::string& chain, const char* first, const char* second) {
        const DataPointBase guard(nullptr, Publisher::Add, "Bond");
        const auto atom = [&chain](const char* name) {
            return dynamic_cast<TAVIK::Atom*>(item((chain + "/Groups/" + name).c_str()));
        };
        TAVIK::DataMaker::makeBond(item((chain + "/Bonds").c_str()), atom(first), atom(second));
    }
    static void move(const char* atom, float x) {
        const DataPointBase guard(nullptr, Publisher::Update, "Move");
        TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(item(atom)),
                               TAVIK::Vertex(x, 0.0F, 0.0F, true));
    }

private slots:
    void aStretchedBondIsListedInPdb() {
        openText(chainOf({" C1 ", " C2 ", " C3 "}));
        move("/test/A/Groups/ALA 1/C3", 5.0F);
        const QStringList shown = bondNames(item("/test"));
        QCOMPARE(shown.size(), 2);
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QCOMPARE(save(name), QStringList());
            QCOMPARE(bondsIn(name), shown);
        }
    }
    void aStretchedBondThatMmcifDoesNotListIsSaid() {
        m_folder.write("test.cif",
                       mmcif({"C1 C . LIG A 1 ? 0.0 0 0 1", "C2 C . LIG A 1 ? 1.5 0 0 1",
                              "C3 C . LIG A 1 ? 3.0 0 0 1"}));
        opened(path("test.cif").toStdString());
        move("/test/A/Groups/LIG 1/C3", 5.0F);
        QCOMPARE(save("saved.cif"),
                 QStringList("1 bond that was made or stretched is not saved, as the distance of "
                             "the atoms does not tell them"));
        QCOMPARE(bondsIn("saved.cif").size(), 1);
    }
    void bondsAreNotStretchedBeyondWhatIsRead() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C3 ", " C4 "});
        text += "CONECT    1    2\nCONECT    2    1\n";
        openText(text);
        move("/test/A/Groups/ALA 1/C1", -10.0F);
        move("/test/A/Groups/ALA 1/C4", 20.0F);
        for (const char* name : {"saved.pdb", "saved.cif"})
            QCOMPARE(save(name), QStringList("2 bonds are not kept, as the atoms are more than 6 "
                                             "Angstrom apart"));
    }
    // As small molecules often are: all carbons are called C.
    void atomsThatNamesDoNotTellApartHaveNoListedBonds() {
        QByteArray text = chainOf({" C  ", " C  ", " O1 ", " O2 "});
        text += "CONECT    1    2    4\nCONECT    3    4\n";
        openText(text);
        const QStringList shown = bondNames(item("/test"));
        QCOMPARE(shown.size(), 4);
        QVERIFY(
            save("saved.cif")
                .contains("1 bond is not kept, as the names do not tell the atoms from others"));
        QStringList left = shown;
        left.removeOne("ALA 1 C-O2");
        QCOMPARE(bondsIn("saved.cif"), left);
    }
    // One record lists the bond of all models.
    void aBondThatIsDestroyedInOneModelStaysInTheOthers() {
        const QByteArray model =
            chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500") + "ENDMDL\n";
        openText("LINK         C1  ALA A   1                 C2  ALA A   1     1555   1555  4.50\n"
                 "MODEL        1\n" +
                 model + "MODEL        2\n" + model + "CONECT    1    2\nCONECT    2    1\n");
        const auto destroy = [](const char* bond) {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item(bond));
        };
        destroy("/test.1/A/Bonds/ALA 1 C1-C2");
        QFile before(path());
        QVERIFY(before.open(QIODevice::ReadOnly));
        const QByteArray text = before.readAll();
        QCOMPARE(save("saved.pdb"), comesBackAsNear);
        QFile saved(path("saved.pdb"));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), text);
        destroy("/test.2/A/Bonds/ALA 1 C1-C2");
        QCOMPARE(save("none.pdb"), QStringList());
        const auto items = opened(path("none.pdb").toStdString()).items;
        QCOMPARE(bondNames(items[0]).size() + bondNames(items[1]).size(), 0);
    }
    void aRecordOfBondsStaysAsLongAsAnyModelHasItsAtoms() {
        const QByteArray model =
            chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500") + "ENDMDL\n";
        const QByteArray bonds = "CONECT    1    2\nCONECT    2    1\n";
        openText("MODEL        1\n" + model + "MODEL        2\n" + model + "MODEL        3\n" +
                 model + bonds);
        for (const char* atom : {"/test.1/A/Groups/ALA 1/C1", "/test.2/A/Groups/ALA 1/C1"}) {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item(atom));
        }
        QCOMPARE(save("saved.pdb"), QStringList());
        const auto items = opened(path("saved.pdb").toStdString()).items;
        QCOMPARE(bondNames(items[2]), QStringList("ALA 1 C1-C2"));
    }
    void bondsOfFurtherModelsThatTheFirstHasNotAreSaid() {
        const QByteArray one = chainOf({" C1 ", " C2 "}) + "ENDMDL\n";
        QByteArray two = one;
        two.replace(" C2 ", " C3 ").replace("   1.500", "   4.500");
        openText("MODEL        1\n" + one + "MODEL        2\n" + two + "CONECT    1    2\n");
        QCOMPARE(bondNames(item("/test.2")).size(), 1);
        QVERIFY(save("saved.cif")
                    .contains("1 bond of further models is not kept, as the first model has none "
                              "between these "
                              "atoms"));
        const auto items = opened(path("saved.cif").toStdString()).items;
        QCOMPARE(bondNames(items[0]).size(), 1);
        QCOMPARE(bondNames(items[1]).size(), 0);
    }
    void bondsOfFurtherModelsAreSaidWhereTheFirstHasOtherAlternativeLocations() {
        const QByteArray model =
            chainOf({" C1 ", " C2 "}).replace("   1.500", "   4.500") + "ENDMDL\n";
        openText("MODEL        1\n" + model + "MODEL        2\n" + model + "CONECT    1    2\n");
        makeSecondLocation("/test.1/A/Groups/ALA 1");
        for (const char* name : {"saved.pdb.gz", "saved.cif"}) {
            const bool isLost = QString(name).endsWith("cif");
            QCOMPARE(save(name).contains("1 bond of further models is not kept, as the first model "
                                         "has none between these atoms"),
                     isLost);
            const auto items = opened(path(name).toStdString()).items;
            QCOMPARE(bondNames(items[0]).size(), 1);
            QCOMPARE(bondNames(items[1]).size(), isLost ? 0 : 1);
            for (Compound* read : items)
                TAVIK::DataMaker::Destroy(read);
        }
    }
    void bondsOfModelsOfUnlikeAtomsAreKeptInConversions() {
        const QByteArray one =
            chainOf({" C0 ", " C1 ", " C2 ", " C3 "}).replace("   4.500", "   8.000");
        const QByteArray two = one.mid(one.indexOf('\n') + 1);
        openText("MODEL        1\n" + one + "ENDMDL\nMODEL        2\n" + two +
                 "ENDMDL\nCONECT    3    4\n");
        const QStringList bonds = bondNames(item("/test.2"));
        QCOMPARE(bonds, QStringList({"ALA 1 C1-C2", "ALA 1 C2-C3"}));
        save("saved.cif");
        TAVIK::DataMaker::Destroy(item("/test.1"));
        TAVIK::DataMaker::Destroy(item("/test.2"));
        opened(path("saved.cif").toStdString());
        save("again.pdb");
        const auto items = opened(path("again.pdb").toStdString()).items;
        QCOMPARE(bondNames(items[0]).size(), 3);
        QCOMPARE(bondNames(items[1]), bonds);
    }
    void bondsOfAnEntryWithoutAFileAreSavedAgainAndAgain() {
        const Made made;
        made.bond(made.atom(0.0F), made.atom(4.5F));
        made.bond(made.atom(0.0F), made.atom(20.0F));
        for (int time = 0; time != 2; ++time) {
            QCOMPARE(save("saved.pdb"), QStringList("1 bond is not kept, as the atoms are more "
                                                    "than 6 Angstrom apart"));
            Compound* const read = opened(path("saved.pdb").toStdString()).items.front();
            QCOMPARE(bondNames(read), QStringList("LIG 1 C0-C1"));
            TAVIK::DataMaker::Destroy(read);
        }
    }
    void bondsBetweenAlternativeLocationsAreSaid() {
        const Made made;
        TAVIK::Atom* const a = made.atom(0.0F, 'A');
        made.bond(a, made.atom(3.0F, 'B'));
        made.bond(a, made.atom(6.0F, 'A'));
        made.bond(a, made.atom(-4.0F));
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QCOMPARE(save(name), QStringList("1 bond is not kept, as the atoms are in different "
                                             "alternative locations"));
            Compound* const read = opened(path(name).toStdString()).items.front();
            QCOMPARE(bondNames(read), QStringList({"LIG 1 C0-C2", "LIG 1 C0-C3"}));
            TAVIK::DataMaker::Destroy(read);
        }
    }
    void moreBondsOfAnAtomThanAreReadAreSaid() {
        const Made made;
        TAVIK::Atom* const centre = made.atom(0.0F);
        // The points of a lattice within 6 A, farther from each other than bonds are long.
        for (int i = 0; i != 125; ++i) {
            const std::array<int, 3> at = {i % 5 - 2, i / 5 % 5 - 2, i / 25 - 2};
            const int squared = at[0] * at[0] + at[1] * at[1] + at[2] * at[2];
            if (squared != 0 && squared <= 6)
                made.bond(centre, made.atom(TAVIK::Vertex(2.3F * static_cast<float>(at[0]),
                                                          2.3F * static_cast<float>(at[1]),
                                                          2.3F * static_cast<float>(at[2]), true)));
        }
        QCOMPARE(bondNames(item("/made")).size(), 80);
        QCOMPARE(save("saved.pdb"),
                 QStringList("16 bonds are not kept, as one of the atoms has more than 64 bonds"));
        QCOMPARE(bondsIn("saved.pdb").size(), 64);
    }
    void aBondThatIsMadeInOneModelAndReadInAllIsSaid() {
        const QByteArray model = chainOf({" C1 ", " C2 ", " C3 "}).replace("   3.000", "   5.000");
        openText("MODEL        1\n" + model + "ENDMDL\nMODEL        2\n" + model + "ENDMDL\n");
        const QString line = "1 further bond is read, as a bond that was made in one model is one "
                             "of all models";
        bond("/test.1/A", "ALA 1/C2", "ALA 1/C3");
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QVERIFY(save(name).contains(line));
            for (Compound* read : opened(path(name).toStdString()).items) {
                QCOMPARE(bondNames(read), QStringList({"ALA 1 C1-C2", "ALA 1 C2-C3"}));
                TAVIK::DataMaker::Destroy(read);
            }
        }
        bond("/test.2/A", "ALA 1/C2", "ALA 1/C3");
        QCOMPARE(save("both.pdb"), QStringList());
    }
    // Of a metal for which the file lists ligands, no bonds to carbon are found.
    void bondsOfAMetalThatABondHoldsAreKept() {
        openText(chainOf({"ZN  ", " C1 ", " N1 "})
                     .replace("   1.500", "  -2.000")
                     .replace("ALA", "LIG"));
        QCOMPARE(bondNames(item("/test")), QStringList("LIG 1 ZN-C1"));
        bond("/test/A", "LIG 1/ZN", "LIG 1/N1");
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QCOMPARE(save(name), QStringList());
            Compound* const read = opened(path(name).toStdString()).items.front();
            QCOMPARE(bondNames(read), QStringList({"LIG 1 ZN-C1", "LIG 1 ZN-N1"}));
            TAVIK::DataMaker::Destroy(read);
        }
    }
    void bondsOfAMetalThatAWrittenBondHoldsAreKept() {
        openText(chainOf({"ZN  ", " C1 ", " N1 "})
                     .replace("   1.500", "  -2.000")
                     .replace("   3.000", "   2.200")
                     .replace("ALA", "LIG"));
        const QStringList bonds{"LIG 1 ZN-C1", "LIG 1 ZN-N1"};
        QCOMPARE(bondNames(item("/test")), bonds);
        {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            TAVIK::DataMaker::Destroy(item("/test/A/Bonds/LIG 1 ZN-N1"));
        }
        bond("/test/A", "LIG 1/ZN", "LIG 1/N1");
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QCOMPARE(save(name), QStringList());
            Compound* const read = opened(path(name).toStdString()).items.front();
            QCOMPARE(bondNames(read), bonds);
            TAVIK::DataMaker::Destroy(read);
        }
    }
    void bondsOfAMetalThatABondOfAnotherModelHoldsAreSaid() {
        const QByteArray model = chainOf({"ZN  ", " C1 ", " N1 "})
                                     .replace("   1.500", "  -2.000")
                                     .replace("ALA", "LIG") +
                                 "ENDMDL\n";
        openText("MODEL        1\n" + model + "MODEL        2\n" + model);
        bond("/test.1/A", "LIG 1/ZN", "LIG 1/N1");
        // The bond to carbon is listed for all models, too.
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QCOMPARE(save(name), QStringList("1 further bond is read, as a bond that was made in "
                                             "one model is one of all models"));
            for (Compound* read : opened(path(name).toStdString()).items) {
                QCOMPARE(bondNames(read), QStringList({"LIG 1 ZN-C1", "LIG 1 ZN-N1"}));
                TAVIK::DataMaker::Destroy(read);
            }
        }
    }
    void bondsOfAMetalThatOnlyAnotherModelHasAreSaid() {
        const auto model = [](const QByteArray& carbon) {
            return chainOf({"ZN  ", " C1 ", " C2 ", " N1 "})
                       .replace("   1.500", carbon)
                       .replace("   3.000", carbon == "  -2.000" ? "   8.000" : "  -2.000")
                       .replace("   4.500", "   3.000")
                       .replace("ALA", "LIG") +
                   "ENDMDL\n";
        };
        openText("MODEL        1\n" + model("  -2.000") + "MODEL        2\n" + model("   8.000"));
        QCOMPARE(bondNames(item("/test.2")), QStringList("LIG 1 ZN-C2"));
        bond("/test.1/A", "LIG 1/ZN", "LIG 1/N1");
        for (const char* name : {"saved.pdb", "saved.cif"}) {
            QVERIFY(save(name).contains(
                "1 bond is not kept, as a bond that was made in another model holds the metal"));
            const auto items = opened(path(name).toStdString()).items;
            QCOMPARE(bondNames(items[1]), QStringList("LIG 1 ZN-N1"));
            for (Compound* read : items)
                TAVIK::DataMaker::Destroy(read);
        }
    }
    // As in files whose numbers begin anew with each chain.
    void bondsOfAtomsWhoseNumberIsNotTheirOwnAreSaid() {
        QByteArray text = chainOf({" C1 ", " C2 ", " C3 "}).replace("   3.000", "   5.000");
        text += "TER\n" + atomAt(" O  ", 30.0F).replace("ALA A   1", "HOH A   2");
        openText(text.replace(6, 5, "    1"));
        bond("/test/A", "ALA 1/C1", "ALA 1/C3");
        bond("/test/A", "ALA 1/C2", "ALA 1/C3");
        QCOMPARE(save("saved.pdb"),
                 QStringList("1 bond is not kept, as the number or the names of one of the atoms "
                             "are those of another, too"));
        QCOMPARE(bondsIn("saved.pdb"), QStringList({"ALA 1 C1-C2", "ALA 1 C2-C3"}));
    }
};

REGISTER_TEST(SavedBondsTest)
#include "SavedBondsTest.moc"
