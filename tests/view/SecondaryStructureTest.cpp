// Secondary structure by hydrogen bonds: ideal helices and sheets, and what breaks them.
#include "ribbon/SecondaryStructure.h"

#include "Backbones.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <span>
#include <utility>
#include <vector>

using view::BackboneResidue;
using view::Point;
using view_testing::helix;
using view_testing::letters;
using view_testing::Residues;
using view_testing::strand;
using view_testing::together;

namespace {

const Residues alphaHelix = helix(14, -57, -47);

// The strand beside strand(count) at 4.1 Å, in the opposite direction: each N-H that points to the
// other strand is exactly opposite of a C=O. Residue i pairs with count - 1 - i, which must point
// to it: with an odd count, residues with even numbers do.
Residues antiparallel(std::size_t count) {
    Residues residues = strand(count);
    const float end = 3.4F * static_cast<float>(count - 1) + 2.3F;
    for (BackboneResidue& residue : residues) {
        for (Point* at : {&residue.n, &residue.ca, &residue.c, &residue.o}) {
            (*at)[0] = end - (*at)[0];
            (*at)[1] = 4.1F - (*at)[1];
        }
    }
    return residues;
}

// The strand beside strand(count) at 4.1 Å in the same direction.
Residues parallel(std::size_t count) {
    Residues residues = strand(count);
    for (BackboneResidue& residue : residues)
        for (Point* at : {&residue.n, &residue.ca, &residue.c, &residue.o})
            (*at)[1] += 4.1F;
    return residues;
}

} // namespace

class SecondaryStructureTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theEnergyOfABondIsThatOfFourCharges() {
        // Along a line: O at 1.23 Å from C, H 1.9 Å further on, N 1 Å from H. O-N is 2.9 Å, C-H
        // 3.13 Å, O-H 1.9 Å, C-N 4.13 Å, and 0.42 * 0.20 * 332 is 27.888.
        const double expected = 27.888 * (1 / 2.9 + 1 / 3.13 - 1 / 1.9 - 1 / 4.13);
        const double energy =
            view::hydrogenBondEnergy({4.13F, 0, 0}, {3.13F, 0, 0}, {1.23F, 0, 0}, {0, 0, 0});
        QVERIFY(std::abs(energy - expected) < 1e-4);
        QVERIFY(std::abs(energy - -2.904) < 1e-3);
    }

    void atomsInOnePlaceBondNoStrongerThanTheLimit() {
        QCOMPARE(view::hydrogenBondEnergy({1, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 1, 0}), -9.9);
        QCOMPARE(view::hydrogenBondEnergy({0, 1, 0}, {0, 0, 0}, {0, 0.51F, 0}, {0, 2, 0}), -9.9);
    }

    void anAlphaHelixIsOneButForItsEnds() { QCOMPARE(letters(alphaHelix), "-HHHHHHHHHHHH-"); }

    void aHelixOfThreeTurnsIsOne() { QCOMPARE(letters(helix(12, -49, -26)), "-GGGGGGGGGG-"); }

    void aPiHelixIsOne() { QCOMPARE(letters(helix(14, -57, -70)), "-IIIIIIIIIIII-"); }

    void oneTurnIsNoHelix() {
        QCOMPARE(letters(helix(5, -57, -47)), "-TTT-");
        QCOMPARE(letters(helix(6, -57, -47)), "-HHHH-");
    }

    void anExtendedChainIsCoil() {
        QCOMPARE(letters(helix(12, -139, 135)), "------------");
        QCOMPARE(letters(strand(12)), "------------");
    }

    void eachResidueOfAHelixBondsToTheFourthBefore() {
        const auto segments = view::chainSegments(alphaHelix);
        const auto acceptors = view::hydrogenBonds(alphaHelix, segments);
        for (std::uint32_t i = 0; i < 4; ++i)
            QCOMPARE(acceptors[i][0], view::noResidue);
        for (std::uint32_t i = 4; i < 14; ++i)
            QCOMPARE(acceptors[i][0], i - 4);
    }

    void antiparallelStrandsAreALadderButForTheirEnds() {
        QCOMPARE(letters(together({strand(7), antiparallel(7)})), "-EEEEE--EEEEE-");
    }

    void parallelStrandsAreALadderButForTheirEnds() {
        QCOMPARE(letters(together({strand(7), parallel(7)})), "-EEEEE--EEEEE-");
    }

    void aBridgeOnItsOwnIsNoStrand() {
        // The neighbours of the pair in the middle do not point to the other strand.
        QCOMPARE(letters(together({strand(3), antiparallel(3)})), "-B--B-");
    }

    void strandsTooFarApartDoNotPair() {
        Residues other = antiparallel(7);
        for (BackboneResidue& residue : other)
            for (Point* at : {&residue.n, &residue.ca, &residue.c, &residue.o})
                (*at)[1] += 3;
        QCOMPARE(letters(together({strand(7), other})), "--------------");
    }

    void aBrokenChainEndsAHelix() {
        Residues broken = alphaHelix;
        broken[7].isLinkedToPrevious = false;
        const QByteArray found = letters(broken);
        QCOMPARE(found, "-HHHHH--HHHHH-");
    }

    void aResidueThatIsNotLinkedBreaksTheChain() {
        Residues residues = strand(6);
        view_testing::shift(residues, 3, 30); // the length of the bond says nothing
        QCOMPARE(view::chainSegments(residues), (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 0}));
        residues[3].isLinkedToPrevious = false;
        QCOMPARE(view::chainSegments(residues), (std::vector<std::uint32_t>{0, 0, 0, 1, 1, 1}));
    }

    void aMissingAtomBreaksTheChain() {
        for (Point BackboneResidue::*atom : {&BackboneResidue::n, &BackboneResidue::ca,
                                             &BackboneResidue::c, &BackboneResidue::o}) {
            Residues residues = alphaHelix;
            residues[7].*atom = view::missingAtom;
            QCOMPARE(view::chainSegments(residues),
                     (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 0, 0, 1, 2, 2, 2, 2, 2, 2}));
            QCOMPARE(letters(residues), "-HHHHH---HHHH-");
        }
    }

    void prolineDonatesNoBond() {
        Residues residues = alphaHelix;
        residues[7].isProline = true;
        const auto acceptors = view::hydrogenBonds(residues, view::chainSegments(residues));
        for (std::uint32_t i = 4; i < 14; ++i)
            QCOMPARE(acceptors[i][0], i == 7 ? view::noResidue : i - 4);
        QCOMPARE(acceptors[7][1], view::noResidue);
    }

    void fewResiduesAreCoil() {
        QCOMPARE(letters({}), "");
        for (std::size_t count = 1; count < 5; ++count)
            QCOMPARE(letters(helix(count, -57, -47)),
                     QByteArray(static_cast<qsizetype>(count), '-'));
    }

    void coordinatesThatAreNoPlacesAreMissingAtoms() {
        for (const float bad : {std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(), 1e30F, -2e7F}) {
            Residues residues = alphaHelix;
            residues[7].ca[1] = bad;
            QCOMPARE(letters(residues), "-HHHHH---HHHH-");
        }
    }

    void atomsInOnePlaceAreCoil() {
        Residues residues(1000);
        for (BackboneResidue& residue : residues)
            residue.n = residue.ca = residue.c = residue.o = {1, 2, 3};
        QCOMPARE(letters(residues), QByteArray(1000, '-'));
    }

    void noBondsAreSearchedWhereMoreResiduesCrowdThanFit() {
        // The N-H of residue 1, whose hydrogen is 1 Å from N along x, and the C=O of residue 2.
        Residues residues(3);
        residues[0] = {{1, 2, 1}, {1, 1, 1}, {2, 1, 1}, {0.8F, 1, 1}, false, false};
        residues[1] = {{3, 1, 1}, {3, 2, 1}, {3, 3, 1}, {3, 4, 1}, false, false};
        residues[2] = {{7, 3, 1}, {7, 2, 1}, {7.1F, 1, 1}, {5.9F, 1, 1}, true, false};
        // Far away in the same cell of 10 Å, with no hydrogen.
        const BackboneResidue other = {{9, 9, 8}, {9, 9, 9}, {8, 9, 9}, {9, 8, 9}, true, false};
        residues.resize(64, other);
        const std::vector<std::uint32_t> segments(65, 0);
        QCOMPARE(view::hydrogenBonds(residues, std::span(segments).first(64))[1][0], 2U);
        residues.push_back(other);
        QCOMPARE(view::hydrogenBonds(residues, segments)[1][0], view::noResidue);
    }

    void farFromTheOriginNothingChanges() {
        for (const float far : {-9999.0F, 9999.0F}) {
            Residues residues = together({strand(7), antiparallel(7)});
            view_testing::shift(residues, 0, far);
            QCOMPARE(letters(residues), "-EEEEE--EEEEE-");
        }
    }

    void theSearchFindsTheBondsOfAllPairs() {
        // Amides at random, many in a cell, against all pairs.
        std::mt19937 random(3);
        std::uniform_real_distribution<float> place(-20, 20);
        std::uniform_real_distribution<float> near(-1.2F, 1.2F);
        Residues residues(600);
        for (std::size_t i = 0; i < residues.size(); ++i) {
            BackboneResidue& residue = residues[i];
            residue.ca = {place(random), place(random), place(random)};
            for (Point* at : {&residue.n, &residue.c, &residue.o})
                for (std::size_t k = 0; k < 3; ++k)
                    (*at)[k] = residue.ca[k] + near(random);
        }
        const std::vector<std::uint32_t> segments(residues.size(), 0);
        const auto acceptors = view::hydrogenBonds(residues, segments);
        int bonds = 0;
        for (std::uint32_t donor = 1; donor < residues.size(); ++donor) {
            const BackboneResidue& before = residues[donor - 1];
            Point h = residues[donor].n;
            const float co = std::hypot(before.c[0] - before.o[0], before.c[1] - before.o[1],
                                        before.c[2] - before.o[2]);
            for (std::size_t k = 0; k < 3; ++k)
                h[k] += (before.c[k] - before.o[k]) / co;
            std::vector<std::pair<double, std::uint32_t>> all;
            for (std::uint32_t acceptor = 0; acceptor < residues.size(); ++acceptor) {
                const Point& a = residues[donor].ca;
                const Point& b = residues[acceptor].ca;
                if (acceptor == donor || acceptor + 1 == donor ||
                    std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]) >= 9)
                    continue;
                const double energy = view::hydrogenBondEnergy(
                    residues[donor].n, h, residues[acceptor].o, residues[acceptor].c);
                if (energy < -0.5)
                    all.emplace_back(energy, acceptor);
            }
            std::sort(all.begin(), all.end());
            for (std::size_t k = 0; k < 2; ++k)
                QCOMPARE(acceptors[donor][k], k < all.size() ? all[k].second : view::noResidue);
            bonds += static_cast<int>(all.size());
        }
        QVERIFY(bonds > 300);
    }
};

REGISTER_TEST(SecondaryStructureTest)
#include "SecondaryStructureTest.moc"
