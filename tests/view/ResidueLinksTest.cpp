// Which residues are linked: by bonds of the data, by lengths, and what breaks a chain.
#include "scene/ResidueLinks.h"

#include "MeshChecks.h"
#include "SceneTools.h"
#include "TestSupport.h"
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"

#include <algorithm>
#include <limits>
#include <vector>

using view::Contents;
using view::Point;
using view::ResidueKind;
using view::Role;

namespace {

struct Placed {
    Role role;
    float x;
};
using Atoms = std::vector<Placed>;

/// Residues of one chain whose atoms lie on the x axis.
Contents residues(const std::vector<Atoms>& all, ResidueKind kind) {
    Contents contents;
    contents.entries.push_back({0});
    for (const Atoms& atoms : all) {
        contents.residues.push_back(
            {static_cast<std::uint32_t>(contents.atomCount()), 0, kind, true});
        for (const Placed& atom : atoms) {
            contents.positions.push_back({atom.x, 0, 0});
            contents.atomicNumbers.push_back(6);
            contents.roles.push_back(atom.role);
        }
    }
    return contents;
}
Contents aminoAcids(const std::vector<Atoms>& all) {
    return residues(all, ResidueKind::AminoAcid);
}
Contents nucleotides(const std::vector<Atoms>& all) {
    return residues(all, ResidueKind::Nucleotide);
}

/// For each residue: "-" where it is linked to the one before, else a blank, and then "P" for one
/// of a polymer, else ".".
QByteArray links(Contents contents) {
    view::linkResidues(contents);
    QByteArray text;
    for (const view::ResidueEntry& residue : contents.residues) {
        text += residue.isLinkedToPrevious ? '-' : ' ';
        text += residue.isPolymer ? 'P' : '.';
    }
    return text;
}

constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
const QByteArray linked = " P-P";
const QByteArray apart = " . .";

/// Two amino acids with N, CA and C, and between C and N so many Å.
std::vector<Atoms> twoAminoAcids(float bond) {
    return {{{Role::N, 0}, {Role::CA, 1.5F}, {Role::C, 3}},
            {{Role::N, 3 + bond}, {Role::CA, 4.5F + bond}, {Role::C, 6 + bond}}};
}
/// Two nucleotides with P and O3', and between O3' and P so many Å.
std::vector<Atoms> twoNucleotides(float bond) {
    return {{{Role::P, 0}, {Role::O3Sugar, 5}}, {{Role::P, 5 + bond}, {Role::O3Sugar, 10 + bond}}};
}

} // namespace

class ResidueLinksTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void withoutResiduesNothingIsLinked() {
        QCOMPARE(links({}), QByteArray());
        QCOMPARE(links(aminoAcids({{{Role::CA, 0}}})), QByteArray(" ."));
    }

    void carbonAndNitrogenLinkUpToTwoAndAHalf() {
        QCOMPARE(links(aminoAcids(twoAminoAcids(1.33F))), linked);
        QCOMPARE(links(aminoAcids(twoAminoAcids(2.5F))), linked);
        QCOMPARE(links(aminoAcids(twoAminoAcids(2.51F))), apart);
    }

    void oxygenAndPhosphorusLinkUpToTwoAndAHalf() {
        QCOMPARE(links(nucleotides(twoNucleotides(1.6F))), linked);
        QCOMPARE(links(nucleotides(twoNucleotides(2.5F))), linked);
        QCOMPARE(links(nucleotides(twoNucleotides(2.51F))), apart);
    }

    // Where the atoms of the bond are there, the trace says nothing: CA are 4.5 Å apart here.
    void aBrokenBondIsNotMendedByTheTrace() {
        QCOMPARE(links(aminoAcids({{{Role::N, -1.5F}, {Role::CA, 0}, {Role::C, 0.9F}},
                                   {{Role::N, 3.6F}, {Role::CA, 4.5F}, {Role::C, 6}}})),
                 apart);
    }

    void aBondOfTheDataLinksAtAnyLength() {
        for (const float bond : {2.6F, 6.0F, 40.0F}) {
            Contents contents = aminoAcids(twoAminoAcids(bond));
            contents.bonds = {{2, 3}};
            QCOMPARE(links(contents), linked);
            contents.bonds = {{3, 2}};
            QCOMPARE(links(contents), linked);
            contents = nucleotides(twoNucleotides(bond));
            contents.bonds = {{1, 2}};
            QCOMPARE(links(contents), linked);
        }
    }

    void otherBondsDoNotLink() {
        Contents contents = aminoAcids(twoAminoAcids(6));
        contents.bonds = {{0, 5}, {2, 5}, {1, 4}, {0, 2}, {5, 0}}; // N-C the wrong way round, too
        QCOMPARE(links(contents), apart);
        contents = nucleotides(twoNucleotides(6));
        contents.bonds = {{0, 3}, {0, 2}, {1, 3}};
        QCOMPARE(links(contents), apart);
        // C-N is no bond of nucleotides.
        contents = nucleotides({{{Role::C, 0}}, {{Role::N, 6}}});
        contents.bonds = {{0, 1}};
        QCOMPARE(links(contents), apart);
    }

    void aBondToTheNextButOneDoesNotLink() {
        Contents contents = aminoAcids({{{Role::N, 0}, {Role::C, 1}},
                                        {{Role::N, 10}, {Role::C, 11}},
                                        {{Role::N, 20}, {Role::C, 21}}});
        contents.bonds = {{1, 4}};
        QCOMPARE(links(contents), " . . .");
        contents.bonds = {{3, 4}, {1, 2}}; // in any order
        QCOMPARE(links(contents), " P-P-P");
    }

    void otherChainsAndKindsAreNotLinked() {
        Contents contents = aminoAcids(twoAminoAcids(1.33F));
        contents.bonds = {{2, 3}};
        contents.residues[1].chain = 1;
        QCOMPARE(links(contents), apart);
        contents.residues[1].chain = 0;
        contents.residues[1].kind = ResidueKind::Other;
        QCOMPARE(links(contents), apart);
        contents.residues[0].kind = ResidueKind::Other;
        QCOMPARE(links(contents), apart);
    }

    void tracesAreLinkedByWhatTheyHave() {
        const auto alphas = [](float x) {
            return links(aminoAcids({{{Role::CA, 0}}, {{Role::CA, x}}}));
        };
        QCOMPARE(alphas(3.8F), linked);
        QCOMPARE(alphas(4.59F), linked);
        QCOMPARE(alphas(4.61F), apart);
        const auto phosphates = [](float x) {
            return links(nucleotides({{{Role::P, 0}}, {{Role::P, x}}}));
        };
        QCOMPARE(phosphates(7.9F), linked);
        QCOMPARE(phosphates(8.1F), apart);
        // A whole residue before a trace.
        QCOMPARE(
            links(aminoAcids({{{Role::N, 0}, {Role::CA, 1.5F}, {Role::C, 3}}, {{Role::CA, 5.3F}}})),
            linked);
    }

    void atomsWithoutAPlaceAreNotMeasured() {
        QCOMPARE(links(aminoAcids({{{Role::CA, nowhere}}, {{Role::CA, nowhere}}})), apart);
        QCOMPARE(links(aminoAcids({{{Role::CA, 1e30F}}, {{Role::CA, 1e30F}}})), apart);
        // The next one of that role is, and the trace where there is none.
        QCOMPARE(links(aminoAcids({{{Role::C, nowhere}, {Role::C, 3}}, {{Role::N, 4.3F}}})),
                 linked);
        QCOMPARE(links(aminoAcids(
                     {{{Role::C, nowhere}, {Role::CA, 0}}, {{Role::N, 9}, {Role::CA, 3.8F}}})),
                 linked);
    }

    void aCrowdOfAtomsOfOneRoleIsNotMeasuredByPairs() {
        Atoms crowd(100'000, {Role::C, 0});
        crowd.resize(200'000, {Role::N, 0});
        Contents contents = aminoAcids({crowd, crowd, crowd});
        contents.bonds.assign(100'000, {0, 399'999});
        QCOMPARE(links(contents), " P-P-P");
    }

    void wholeProteinsAreOneChain_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("residues");
        QTest::newRow("1ubq") << "1ubq.pdb" << 76;
        QTest::newRow("1cbs") << "1cbs.cif.gz" << 137;
        QTest::newRow("1ejg, with alternatives") << "1ejg.pdb" << 46;
    }
    void wholeProteinsAreOneChain() {
        QFETCH(QString, file);
        QFETCH(int, residues);
        memory_host::openFile(structure(file).toStdString());
        view::DataReader reader;
        reader.read();
        const std::vector<view::ResidueEntry>& all = reader.snapshot().contents->residues;
        QCOMPARE(
            std::count_if(all.begin(), all.end(), [](const auto& one) { return one.isPolymer; }),
            residues);
        QCOMPARE(std::count_if(all.begin(), all.end(),
                               [](const auto& one) { return one.isLinkedToPrevious; }),
                 residues - 1);
    }

    // Though the residues at both ends are so near that a trace would go on: G 2593 of the RNA is
    // missing, and so are 49 to 51 of the protein.
    void aChainOfARibosomeEndsWhereResiduesAreMissing_data() {
        QTest::addColumn<QString>("after");
        QTest::addColumn<bool>("isLinked");
        QTest::newRow("RNA, whole") << "/6zu5/L50/Groups/G 2592/P" << true;
        QTest::newRow("RNA, after the gap") << "/6zu5/L50/Groups/G 2594/P" << false;
        QTest::newRow("protein, whole") << "/6zu5/SEE/Groups/PHE 48/N" << true;
        QTest::newRow("protein, after the gap") << "/6zu5/SEE/Groups/ARG 52/N" << false;
    }
    void aChainOfARibosomeEndsWhereResiduesAreMissing() {
        QFETCH(QString, after);
        QFETCH(bool, isLinked);
        memory_host::openFile(structure("6zu5.cif").toStdString());
        view::DataReader reader;
        reader.read();
        const view::Snapshot& snapshot = reader.snapshot();
        const auto found =
            std::find_if(snapshot.contents->residues.begin(), snapshot.contents->residues.end(),
                         [&](const view::ResidueEntry& residue) {
                             const auto* const item =
                                 reader.item(view::idOf(residue.firstAtom), snapshot.generation);
                             return item->GetFQName() == after.toStdString();
                         });
        QVERIFY(found != snapshot.contents->residues.end());
        QCOMPARE(found->isLinkedToPrevious, isLinked);
    }

    // Alanines 1 and 2 are 4.3 Å apart from C to N.
    void aRibbonGoesOverAStretchedBondOfTheData() {
        using namespace scene_tools;
        for (const bool isBonded : {false, true}) {
            Structure made;
            for (int i = 0; i != 4; ++i)
                made.add("ALA " + std::to_string(i), alanine(3.8F * float(i) + (i < 2 ? 0 : 3.0F)));
            if (isBonded)
                made.bond(7, 10);
            made.attach();
            view::DataReader reader;
            reader.read();
            const auto scene = view::SceneMaker().scene(
                reader.snapshot(), {view::Representation::Ribbon, false, 0xff000000});
            QCOMPARE(scene->meshes.size(), std::size_t(isBonded ? 2 : 1));
            QCOMPARE(view_testing::bodyCount(*scene->meshes.back()), std::size_t(isBonded ? 1 : 2));
        }
    }
};

REGISTER_TEST(ResidueLinksTest)
#include "ResidueLinksTest.moc"
