// What items a structure file becomes.
#include "Ancestry.h"
#include "FileTestCase.h"
#include "Space.h"
#include "items/Building.h"

#include <algorithm>

using namespace file_testing;
using memory_host::OpenedFile;
using TAVIK::Compound;

class StructureItemsTest : public FileTestCase {
    Q_OBJECT

private slots:
    void aChainHoldsGroupsAndBonds() {
        const OpenedFile file = opened(structure("1ubq.pdb").toStdString());
        QCOMPARE(file.items.size(), 1U);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("1ubq"));
        QCOMPARE(childNames(item("/1ubq")), QStringList("A"));
        QVERIFY(dynamic_cast<TAVIK::Molecule*>(item("/1ubq/A")));
        QCOMPARE(childNames(item("/1ubq/A")), QStringList({"Groups", "Bonds"}));
        Compound* groups = item("/1ubq/A/Groups");
        QCOMPARE(groups->GetType(), "Composite");
        // 76 amino acids and 58 waters, which follow the end of the chain.
        QCOMPARE(groups->ChildEnd() - groups->ChildBegin(), 134);
        QCOMPARE(childNames(groups).first(), "MET 1");
        QCOMPARE(childNames(groups).last(), "HOH 134");
        QVERIFY(dynamic_cast<TAVIK::Residue*>(item("/1ubq/A/Groups/MET 1")));
    }

    void anAtomHasItsElementPositionAndTemperature() {
        opened(structure("1ubq.pdb").toStdString());
        auto* const atom = dynamic_cast<TAVIK::Atom*>(item("/1ubq/A/Groups/MET 1/SD"));
        QVERIFY(atom);
        QCOMPARE(atom->GetType(), "S");
        QCOMPARE(atom->GetPosition()[0], 23.930F);
        QCOMPARE(atom->GetPosition()[1], 23.959F);
        QCOMPARE(atom->GetPosition()[2], 5.904F);
        QCOMPARE(atom->GetTemperature(), 17.17F);
        QCOMPARE(atom->GetModelNumber(), "0");
    }

    void anAminoAcidHasABackboneAndASideChain() {
        opened(structure("1ubq.pdb").toStdString());
        Compound* residue = item("/1ubq/A/Groups/MET 1");
        QCOMPARE(atomPaths(residue),
                 QStringList(
                     {"/1ubq/A/Groups/MET 1/Backbone/N", "/1ubq/A/Groups/MET 1/Backbone/CA",
                      "/1ubq/A/Groups/MET 1/Backbone/C", "/1ubq/A/Groups/MET 1/Backbone/O",
                      "/1ubq/A/Groups/MET 1/Side chain/CB", "/1ubq/A/Groups/MET 1/Side chain/CG",
                      "/1ubq/A/Groups/MET 1/Side chain/SD", "/1ubq/A/Groups/MET 1/Side chain/CE"}));
        QVERIFY(dynamic_cast<TAVIK::Group*>(*residue->ChildBegin()));
        // Glycine has no side chain, and no empty group for it; water has atoms alone.
        QCOMPARE(childNames(item("/1ubq/A/Groups/GLY 10")), QStringList("Backbone"));
        QCOMPARE(childNames(item("/1ubq/A/Groups/HOH 101")), QStringList("O"));
    }

    void hydrogensGoWithTheAtomThatBearsThem() {
        opened(structure("1ejg.pdb").toStdString());
        const QStringList paths = atomPaths(item("/1ejg/A/Groups/THR 2"));
        for (const char* name : {"Backbone/H", "Backbone/HA", "Side chain/HB", "Side chain/HG1"})
            QVERIFY2(paths.contains("/1ejg/A/Groups/THR 2/" + QString::fromLatin1(name)), name);
        for (const QString& atom : paths)
            QVERIFY(atom.contains("/Backbone/H") == atom.endsWith("/H") || !atom.endsWith("/H"));
    }

    void hydrogensWithoutBondsGoByTheirNames() {
        QByteArray text;
        int place = 0;
        for (const char* name :
             {" N  ", " CA ", " CB ", " H  ", "1H  ", " HN ", " HA ", "HA2 ", "1HB ", "HG21"})
            text += atomAt(name, static_cast<float>(10 * ++place));
        openText(text);
        const QString residue = QStringLiteral("/test/A/Groups/ALA 1/");
        QStringList expected;
        for (const char* name : {"N", "CA", "H", "1H", "HN", "HA", "HA2"})
            expected << residue + "Backbone/" + name;
        for (const char* name : {"CB", "1HB", "HG21"})
            expected << residue + "Side chain/" + name;
        QCOMPARE(atomPaths(item("/test")), expected);
    }

    void aNucleotideHasPhosphateSugarAndBase() {
        QByteArray text;
        int place = 0;
        for (const char* name : {" P  ", " OP1", " O1P", " O5'", " C5'", " C1*", " O2'", " N1 ",
                                 " C2 ", " O4 ", " C7 "}) {
            PdbAtom atom;
            atom.name = name;
            atom.residue = "DT";
            atom.x = static_cast<float>(10 * ++place);
            text += line(atom);
        }
        openText(text);
        Compound* residue = item("/test/A/Groups/DT 1");
        QCOMPARE(childNames(residue), QStringList({"Phosphate", "Sugar", "Base"}));
        const QString prefix = QStringLiteral("/test/A/Groups/DT 1/");
        QCOMPARE(atomPaths(residue),
                 QStringList({prefix + "Phosphate/P", prefix + "Phosphate/OP1",
                              prefix + "Phosphate/O1P", prefix + "Sugar/O5'", prefix + "Sugar/C5'",
                              prefix + "Sugar/C1*", prefix + "Sugar/O2'", prefix + "Base/N1",
                              prefix + "Base/C2", prefix + "Base/O4", prefix + "Base/C7"}));
    }

    void anUnknownResidueWithABackboneIsAnAminoAcid() {
        QByteArray text;
        int place = 0;
        for (const char* name : {" N  ", " CA ", " C  ", " QX1"}) {
            PdbAtom atom;
            atom.name = name;
            atom.residue = "ZQX";
            atom.element = "C";
            atom.x = static_cast<float>(10 * ++place);
            text += line(atom);
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups/ZQX 1")), QStringList({"Backbone", "Side chain"}));
    }

    void numbersThatBeginAgainStartNewResidues() {
        QByteArray text;
        const QList<QByteArray> numbers = {"1", "2", "1", "2"};
        for (const QByteArray& number : numbers) {
            for (const char* name : {" OW ", " HW1", " HW2"}) {
                PdbAtom atom;
                atom.name = name;
                atom.residue = "SOL";
                atom.number = number;
                atom.x = static_cast<float>(text.size());
                text += line(atom);
            }
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups")),
                 QStringList({"SOL 1", "SOL 2", "SOL 1", "SOL 2"}));
    }

    void atomsOfAResidueNeedNotStandTogether() {
        PdbAtom atom;
        atom.residue = "GLY";
        const QByteArray first = line(atom);
        atom.number = "2";
        const QByteArray second = line(atom);
        atom.number = "1";
        atom.name = " HA2";
        openText(first + second + line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"GLY 1", "GLY 2"}));
        QCOMPARE(atoms(item("/test/A/Groups/GLY 1")).size(), 2U);
    }

    void residuesOfOtherSegmentsAreOthers() {
        PdbAtom atom;
        atom.segment = "P1";
        const QByteArray first = line(atom);
        atom.segment = "P2";
        openText(first + line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"ALA 1", "ALA 1"}));
    }

    void theEndOfAMoleculeEndsItsResidue() {
        PdbAtom water;
        water.record = "HETATM";
        water.residue = "HOH";
        water.name = " O  ";
        PdbAtom hydrogen = water;
        hydrogen.name = " H1 ";
        openText(line(water) + "TER\n" + line(water) + line(hydrogen) + "TER       3      HOH\n" +
                 line(hydrogen));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"HOH 1", "HOH 1", "HOH 1"}));
        QCOMPARE(atomPaths(item("/test")),
                 QStringList({"/test/A/Groups/HOH 1/O", "/test/A/Groups/HOH 1/O",
                              "/test/A/Groups/HOH 1/H1", "/test/A/Groups/HOH 1/H1"}));
        QCOMPARE(item("/test")->ChildEnd() - item("/test")->ChildBegin(), 1);
    }

    void manyEndsOfMoleculesTakeLinearTime() {
        PdbAtom water;
        water.residue = "HOH";
        water.name = " O  ";
        QByteArray text;
        for (int i = 0; i < 100000; ++i) {
            water.number = QByteArray::number(i % 10000);
            water.x = 3.0F * static_cast<float>(i % 1000);
            water.y = 3.0F * static_cast<float>(i / 1000);
            text += line(water) + "TER\n";
        }
        openText(text);
        TAVIK::Compound* const groups = item("/test/A/Groups");
        QCOMPARE(groups->ChildEnd() - groups->ChildBegin(), 100000);
    }

    void atomsWithoutResidueNumbersAreAResidueForEachRunOfOneName() {
        QByteArray text;
        for (const auto& [residue, name] : {std::pair("LIG", " C  "),
                                            {"LIG", " C  "},
                                            {"LIG", " H  "},
                                            {"LIG", " H  "},
                                            {"SOL", " O  "},
                                            {"LIG", " N  "},
                                            {"LIG", " C  "}}) {
            PdbAtom atom;
            atom.number = "";
            atom.residue = residue;
            atom.name = name;
            atom.x = static_cast<float>(text.size());
            text += line(atom);
        }
        openText(text);
        TAVIK::Compound* const groups = item("/test/A/Groups");
        QCOMPARE(childNames(groups), QStringList({"LIG", "SOL", "LIG"}));
        QCOMPARE(childNames(groups->ChildBegin()[0]), QStringList({"C", "C", "H", "H"}));
        // An atom that the first one has not does not bring this one back to it.
        QCOMPARE(childNames(groups->ChildBegin()[2]), QStringList({"N", "C"}));
    }

    void conformersCountFromOneInTheOrderOfTheFile() {
        QByteArray text;
        for (const auto& [name, alternative] :
             {std::pair(" N  ", ' '), {" CA ", 'B'}, {" CA ", 'A'}, {" CB ", 'A'}, {" CB ", 'B'}}) {
            PdbAtom atom;
            atom.name = name;
            atom.alternative = alternative;
            text += line(atom);
        }
        PdbAtom next;
        next.number = "2";
        next.alternative = 'C';
        openText(text + line(next));
        QStringList models;
        for (const TAVIK::Atom* atom : atoms(item("/test")))
            models << QString::fromStdString(atom->GetName() + atom->GetModelNumber());
        QCOMPARE(models, QStringList({"N0", "CA1", "CA2", "CB2", "CB1", "CA1"}));
        QCOMPARE(memory_host::activeModel(item("/test/A/Groups/ALA 1")), 1U);
    }

    void aPositionWithSeveralResidueNamesIsOneResidue() {
        opened(structure("1ejg.pdb").toStdString());
        const QStringList names = childNames(item("/1ejg/A/Groups"));
        QCOMPARE(names.size(), 46);
        QCOMPARE(names[21], "PRO,SER 22");
        QCOMPARE(names[24], "LEU,ILE 25");
        Compound* residue = item("/1ejg/A/Groups/PRO,SER 22");
        QCOMPARE(childNames(residue), QStringList({"Backbone", "Side chain"}));
        const auto visible = [residue](const char* name) {
            const std::vector<TAVIK::Atom*> all = atoms(residue);
            return std::any_of(all.begin(), all.end(), [name](TAVIK::Atom* atom) {
                return atom->IsVisible() && atom->GetName() == name;
            });
        };
        // The first conformer is the proline, the next one the serine; the nitrogen is shared.
        QVERIFY(visible("CD") && !visible("OG") && visible("N"));
        residue->NextModel();
        QVERIFY(!visible("CD") && visible("OG") && visible("N"));
    }

    void severalNamesWithoutAlternativesAreSeveralResidues() {
        PdbAtom protein;
        PdbAtom water;
        water.residue = "HOH";
        water.name = " O  ";
        openText(line(protein) + line(water));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"ALA 1", "HOH 1"}));
    }

    void bondsJoinResiduesAndLeaveWatersAlone() {
        opened(structure("1ubq.pdb").toStdString());
        const QStringList bonds = bondNames(item("/1ubq"));
        QVERIFY(bonds.contains("MET 1 N-CA"));
        QVERIFY(bonds.contains("MET 1 C - GLN 2 N"));
        QVERIFY(std::none_of(bonds.begin(), bonds.end(),
                             [](const QString& name) { return name.contains("HOH"); }));
        // 602 atoms without the waters are all connected, and there are seven rings.
        QCOMPARE(bonds.size(), 608);
        QCOMPARE(childNames(item("/1ubq")), QStringList("A"));
    }

    void bondsBetweenChainsStandInTheEntry() {
        opened(SOURCE_DIR "/data/sample.pdb");
        QCOMPARE(childNames(item("/sample")), QStringList({"A", "B", "C", "Bonds"}));
        QCOMPARE(bondNames(item("/sample/Bonds")), QStringList("ASN 349 ND2 - NAG 1 C1"));
    }

    void alternativesAreNotBondedToEachOther() {
        opened(structure("1ejg.pdb").toStdString());
        std::vector<Compound*> bonds;
        const Compound* const* end = item("/1ejg/A/Bonds")->ChildEnd();
        int inAlternatives = 0;
        for (Compound** bond = item("/1ejg/A/Bonds")->ChildBegin(); bond != end; ++bond) {
            auto* const a = dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[0]);
            auto* const b = dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[1]);
            QVERIFY(!(a->GetType() == "H" && b->GetType() == "H"));
            if (TAVIK::GetParent(TAVIK::GetParent(a)) != TAVIK::GetParent(TAVIK::GetParent(b)) ||
                a->GetModelNumber() == "0" || b->GetModelNumber() == "0")
                continue;
            ++inAlternatives;
            QCOMPARE(a->GetModelNumber(), b->GetModelNumber());
        }
        QVERIFY(inAlternatives > 50);
        QVERIFY(bondNames(item("/1ejg/A/Bonds")).contains("CYS 3 SG - CYS 40 SG"));
    }

    void slashesAndControlCharactersInNamesAreReplaced() {
        PdbAtom atom;
        atom.name = " A/B";
        atom.element = "C";
        PdbAtom other = atom;
        other.name = " \x01X ";
        openText(line(atom) + line(atom) + line(other),
                 {path() + ": the name \"A/B\" of 2 items became \"A_B\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters",
                  path() + ": the name \" X\" of 1 item became \"_X\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters"});
        QCOMPARE(childNames(item("/test/A/Groups/ALA 1/A_B") ? item("/test/A/Groups/ALA 1")
                                                             : TAVIK::Space::instance()),
                 QStringList("Side chain"));
    }

    void namesInLatin1StayAndNamesInUtf8BecomeLatin1() {
        PdbAtom latin;
        latin.name = " C\xe4 ";
        latin.element = "C";
        PdbAtom utf = latin;
        utf.name = "C\xc3\xa4 ";
        PdbAtom foreign = latin;
        foreign.name = "C\xe2\x82\xac";
        const std::string file =
            m_folder.write("test.pdb", line(latin) + line(utf) + line(foreign));
        const OpenedFile result = memory_host::openFile(file);
        QCOMPARE(result.remarks.size(), 2U);
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QCOMPARE(all[0]->GetName(), "C\xe4");
        QCOMPARE(all[1]->GetName(), "C\xe4");
        QCOMPARE(all[2]->GetName(), "C_");
    }

    void aResidueOf100000AtomsOpensWithARemark() {
        QByteArray text;
        for (int i = 0; i < 100000; ++i)
            text +=
                atomAt(" C" + QByteArray::number(i % 100).leftJustified(2),
                       static_cast<float>(i % 50) * 1.5F, static_cast<float>(i / 50 % 50) * 1.5F,
                       static_cast<float>(i / 2500) * 1.5F);
        openText(text, {path() + ": residue ALA 1 of chain A has 100000 atoms"});
        QCOMPARE(atoms(item("/test/A/Groups/ALA 1")).size(), 100000U);
    }

    void atomsThatAreTooCloseHaveNoBondsAndARemark() {
        QByteArray text;
        for (int i = 0; i < 1000; ++i)
            text += atomAt(" CA ", 0);
        openText(text, {path() +
                        ": 1000 atoms stand closer together than matter does, and have no bonds; "
                        "accepted are coordinates in Angstrom"});
        QCOMPARE(bondNames(item("/test")), QStringList());
    }

    void missingNamesAreShownAsSuch() {
        PdbAtom atom;
        atom.name = "    ";
        atom.residue = "";
        atom.number = "";
        atom.element = "C";
        openText(line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("_"));
        QCOMPARE(childNames(item("/test/A/Groups/_")), QStringList("_"));
    }
};

REGISTER_TEST(StructureItemsTest)
#include "StructureItemsTest.moc"
