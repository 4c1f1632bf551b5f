// The search for bonds against its definition.
#include "FileTesting.h"
#include "TestSupport.h"
#include "files/Bonds.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using memory_host::BondAtom;
using memory_host::BondKind;
using memory_host::BondPair;
using memory_host::Bonds;
using memory_host::findBonds;

namespace {

bool isUsable(const BondAtom& atom) {
    return atom.hasPosition && std::all_of(atom.position.begin(), atom.position.end(), [](float x) {
               return std::abs(x) <= memory_host::farthestBond;
           });
}

double squaredDistance(const BondAtom& a, const BondAtom& b) {
    double squared = 0.0;
    for (int axis = 0; axis < 3; ++axis)
        squared += std::pow(double(a.position[axis]) - double(b.position[axis]), 2);
    return squared;
}

bool areApart(const BondAtom& a, const BondAtom& b) {
    return a.alternative && b.alternative && a.alternative != b.alternative;
}

bool isMetalAndFramework(const BondAtom& a, const BondAtom& b) {
    return a.kind == BondKind::Metal && b.kind == BondKind::Framework;
}

bool hasNearerLigand(const std::vector<BondAtom>& atoms, const BondAtom& metal,
                     const BondAtom& other, double squared) {
    return std::any_of(atoms.begin(), atoms.end(), [&](const BondAtom& ligand) {
        return ligand.kind == BondKind::Ligand && isUsable(ligand) &&
               squaredDistance(metal, ligand) < squared && !areApart(metal, ligand) &&
               !areApart(other, ligand);
    });
}

// The definition, as a double loop. Heaps are the search's own business, and not in here.
Bonds bondsByDefinition(const std::vector<BondAtom>& atoms, std::uint32_t alternatives) {
    std::vector<std::uint32_t> near(atoms.size());
    std::vector<BondPair> pairs;
    for (std::uint32_t i = 0; i != atoms.size(); ++i) {
        for (std::uint32_t k = i + 1; k != atoms.size(); ++k) {
            const BondAtom& a = atoms[i];
            const BondAtom& b = atoms[k];
            if (!isUsable(a) || !isUsable(b))
                continue;
            const double squared = squaredDistance(a, b);
            const double longest = double(a.radius) + double(b.radius) + memory_host::bondTolerance;
            if (squared > longest * longest)
                continue;
            ++near[i];
            ++near[k];
            const bool apart = areApart(a, b);
            const bool isBehind = isMetalAndFramework(a, b) ? hasNearerLigand(atoms, a, b, squared)
                                  : isMetalAndFramework(b, a)
                                      ? hasNearerLigand(atoms, b, a, squared)
                                      : false;
            if (!isBehind && squared >= memory_host::shortestBond * memory_host::shortestBond &&
                !apart && !(a.kind == BondKind::Hydrogen && b.kind == BondKind::Hydrogen))
                pairs.emplace_back(i, k);
        }
    }
    const auto isCrowded = [&](std::uint32_t atom) {
        return near[atom] > memory_host::mostNeighbours * (1 + alternatives);
    };
    Bonds bonds;
    for (std::uint32_t i = 0; i != atoms.size(); ++i) {
        bonds.crowded += isCrowded(i) ? 1 : 0;
        bonds.distant += atoms[i].hasPosition && !isUsable(atoms[i]) ? 1 : 0;
    }
    for (const BondPair& pair : pairs)
        if (!isCrowded(pair.first) && !isCrowded(pair.second))
            bonds.pairs.push_back(pair);
    return bonds;
}

void compare(const std::vector<BondAtom>& atoms, std::uint32_t alternatives) {
    const Bonds expected = bondsByDefinition(atoms, alternatives);
    const Bonds found = findBonds(atoms, alternatives);
    QCOMPARE(found.pairs.size(), expected.pairs.size());
    QVERIFY(found.pairs == expected.pairs);
    QCOMPARE(found.crowded, expected.crowded);
    QCOMPARE(found.distant, expected.distant);
}

BondAtom carbon(float x, float y = 0.0F, float z = 0.0F) {
    BondAtom atom;
    atom.position = {x, y, z};
    atom.radius = 0.73F;
    atom.hasPosition = true;
    return atom;
}

// Number of bonds of two atoms.
std::size_t bondsOf(const BondAtom& a, const BondAtom& b, std::uint32_t alternatives = 0) {
    return findBonds(std::vector<BondAtom>{a, b}, alternatives).pairs.size();
}

} // namespace

class BondSearchTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void nothingHasNoBonds() {
        QVERIFY(findBonds({}, 0).pairs.empty());
        QVERIFY(findBonds(std::vector<BondAtom>(3), 0).pairs.empty());
        QVERIFY(findBonds(std::vector<BondAtom>{carbon(1)}, 0).pairs.empty());
    }

    void theDistanceDecides() {
        // 0.73 + 0.73 + 0.4
        QCOMPARE(bondsOf(carbon(0), carbon(1.859F)), 1U);
        QCOMPARE(bondsOf(carbon(0), carbon(1.861F)), 0U);
        QCOMPARE(bondsOf(carbon(0), carbon(0.401F)), 1U);
        QCOMPARE(bondsOf(carbon(0), carbon(0.399F)), 0U);
        QCOMPARE(bondsOf(carbon(-0.5F, -0.5F, -0.5F), carbon(0.5F, 0.5F, 0.5F)), 1U);
    }

    void hydrogensAreNotBondedToEachOther() {
        BondAtom hydrogen = carbon(0);
        hydrogen.kind = BondKind::Hydrogen;
        BondAtom other = carbon(0.7F);
        QCOMPARE(bondsOf(hydrogen, other), 1U);
        other.kind = BondKind::Hydrogen;
        QCOMPARE(bondsOf(hydrogen, other), 0U);
    }

    void alternativesAreNotBondedToEachOther() {
        BondAtom a = carbon(0);
        BondAtom b = carbon(1);
        a.alternative = 1;
        QCOMPARE(bondsOf(a, b, 2), 1U);
        b.alternative = 1;
        QCOMPARE(bondsOf(a, b, 2), 1U);
        b.alternative = 2;
        QCOMPARE(bondsOf(a, b, 2), 0U);
    }

    void aMetalIsNotBondedToWhatStandsBehindItsLigands() {
        BondAtom metal = carbon(0);
        metal.radius = 1.41F;
        metal.kind = BondKind::Metal;
        BondAtom behind = carbon(2.5F);
        behind.kind = BondKind::Framework;
        const auto bonds = [&](float ligandAt, std::uint16_t alternative = 0) {
            BondAtom ligand = carbon(0, ligandAt);
            ligand.kind = BondKind::Ligand;
            ligand.radius = 0.66F;
            ligand.alternative = alternative;
            return findBonds(std::vector<BondAtom>{metal, behind, ligand}, 2).pairs;
        };
        QCOMPARE(bonds(2.1F), std::vector<BondPair>({{0, 2}}));
        // Nearer, but itself too far for a bond by distance.
        QCOMPARE(bonds(2.49F), std::vector<BondPair>());
        QCOMPARE(bonds(2.51F), std::vector<BondPair>({{0, 1}}));
        behind.alternative = 1;
        QCOMPARE(bonds(2.1F, 1), std::vector<BondPair>({{0, 2}}));
        QCOMPARE(bonds(2.1F, 2), std::vector<BondPair>({{0, 1}, {0, 2}}));
        behind.alternative = 0;
        behind.kind = BondKind::Other;
        QCOMPARE(bonds(2.1F), std::vector<BondPair>({{0, 1}, {0, 2}}));
        // A file that tells the ligands tells all of them.
        behind.kind = BondKind::Framework;
        metal.isHeld = true;
        QCOMPARE(bonds(4.0F), std::vector<BondPair>());
    }

    void atomsWithoutPositionHaveNoBonds() {
        BondAtom a = carbon(0);
        a.hasPosition = false;
        QCOMPARE(bondsOf(a, carbon(1)), 0U);
        QCOMPARE(bondsOf(carbon(std::nanf("")), carbon(1)), 0U);
    }

    void farOutThereAreNoBonds() {
        QCOMPARE(bondsOf(carbon(1.0e6F), carbon(999999.0F)), 1U);
        QCOMPARE(bondsOf(carbon(1.0e6F + 1), carbon(1.0e6F)), 0U);
        QCOMPARE(bondsOf(carbon(-1.0e6F, 1.0e6F), carbon(-999999.0F, 1.0e6F)), 1U);
    }

    void randomAtomsHaveTheBondsOfTheDefinition_data() {
        QTest::addColumn<int>("seed");
        QTest::addColumn<double>("extent");
        for (int seed = 0; seed < 24; ++seed)
            QTest::addRow("%d", seed) << seed << std::array{60.0, 25.0, 12.0, 7.0}[seed % 4];
    }
    void randomAtomsHaveTheBondsOfTheDefinition() {
        QFETCH(int, seed);
        QFETCH(double, extent);
        std::mt19937 random(static_cast<unsigned int>(seed));
        std::uniform_real_distribution<double> place(-extent / 2, extent / 2);
        // With few large atoms, or many, or none.
        const std::array<float, 6> radii = {0.31F, 0.66F, 0.73F, 1.07F, 1.66F, 2.44F};
        std::discrete_distribution<int> kind(
            {3.0, 3.0, 5.0, 0.1, seed % 3 == 0 ? 0.02 : 1.0, seed % 3 == 1 ? 0.0 : 0.05});
        const std::uint32_t alternatives = static_cast<std::uint32_t>(seed) % 3;
        std::vector<BondAtom> atoms(1500);
        for (BondAtom& atom : atoms) {
            const int chosen = kind(random);
            atom = carbon(static_cast<float>(place(random)), static_cast<float>(place(random)),
                          static_cast<float>(place(random)));
            atom.radius = radii[static_cast<std::size_t>(chosen)];
            constexpr std::array<BondKind, 6> kinds = {BondKind::Hydrogen,  BondKind::Ligand,
                                                       BondKind::Framework, BondKind::Framework,
                                                       BondKind::Other,     BondKind::Metal};
            atom.kind = kinds[static_cast<std::size_t>(chosen)];
            // Metals that are no larger than others, too.
            if (seed % 5 == 0 && chosen == 3)
                atom.kind = BondKind::Metal;
            atom.alternative = static_cast<std::uint16_t>(random() % (alternatives + 1));
            atom.hasPosition = random() % 50 != 0;
            if (random() % 100 == 0)
                atom.position[random() % 3] *= 1.0e30F;
        }
        compare(atoms, alternatives);
    }

    void latticesOnTheEdgesOfCellsHaveTheBondsOfTheDefinition_data() {
        QTest::addColumn<double>("step");
        for (const double step : {1.0, 1.86, 1.8600186, 0.93, 2.0})
            QTest::addRow("%g", step) << step;
    }
    void latticesOnTheEdgesOfCellsHaveTheBondsOfTheDefinition() {
        QFETCH(double, step);
        std::vector<BondAtom> atoms;
        for (int x = -5; x < 5; ++x)
            for (int y = -5; y < 5; ++y)
                for (int z = -5; z < 5; ++z)
                    atoms.push_back(carbon(static_cast<float>(x * step),
                                           static_cast<float>(y * step),
                                           static_cast<float>(z * step)));
        compare(atoms, 0);
    }

    void realStructuresHaveTheBondsOfTheDefinition_data() {
        QTest::addColumn<QString>("file");
        for (const char* name : {"1ubq.pdb", "1ejg.pdb", "1tii.pdb", "1cbs.cif.gz"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void realStructuresHaveTheBondsOfTheDefinition() {
        QFETCH(QString, file);
        const auto result = file_testing::opened(structure(file).toStdString());
        std::vector<BondAtom> atoms;
        for (const TAVIK::Atom* atom : file_testing::atoms(result.items.front())) {
            const TAVIK::Vertex position = atom->GetPosition();
            BondAtom& added = atoms.emplace_back(carbon(position[0], position[1], position[2]));
            if (atom->GetType() == "H")
                added.kind = BondKind::Hydrogen;
            added.radius = atom->GetType() == "H"   ? 0.31F
                           : atom->GetType() == "S" ? 1.05F
                           : atom->GetType() == "O" ? 0.66F
                           : atom->GetType() == "N" ? 0.71F
                                                    : 0.73F;
            added.alternative = static_cast<std::uint16_t>(std::stoi(atom->GetModelNumber()));
        }
        compare(atoms, 3);
        // The reader has found the same, with the radii of all elements.
        QCOMPARE(static_cast<std::size_t>(file_testing::bondNames(result.items.front()).size()),
                 findBonds(atoms, 3).pairs.size());
    }

    void distantAtomsAreCounted() {
        std::vector<BondAtom> atoms = {carbon(0), carbon(1.5F), carbon(2e6F), carbon(0, -1e30F)};
        BondAtom nowhere = carbon(0);
        nowhere.hasPosition = false;
        atoms.push_back(nowhere);
        atoms.push_back(carbon(memory_host::farthestBond));
        compare(atoms, 0);
        const Bonds found = findBonds(atoms, 0);
        QCOMPARE(found.distant, 2U);
        QCOMPARE(found.pairs.size(), 1U);
    }

    void crowdedAtomsHaveNoBondsAndOthersKeepTheirs() {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> place(0.0F, 2.0F);
        std::vector<BondAtom> atoms;
        for (int i = 0; i < 100; ++i)
            atoms.push_back(carbon(place(random), place(random), place(random)));
        atoms.push_back(carbon(50));
        atoms.push_back(carbon(51.5F));
        compare(atoms, 0);
        const Bonds bonds = findBonds(atoms, 0);
        QCOMPARE(bonds.crowded, 100U);
        QCOMPARE(bonds.pairs, std::vector<BondPair>({{100, 101}}));
    }

    void heapsTakeLinearTime_data() {
        QTest::addColumn<float>("extent");
        for (const float extent : {0.0F, 1.0F, 10.0F, 30.0F})
            QTest::addRow("within %g", static_cast<double>(extent)) << extent;
    }
    void heapsTakeLinearTime() {
        QFETCH(float, extent);
        std::mt19937 random(2);
        std::uniform_real_distribution<float> place(0.0F, 1.0F);
        std::vector<BondAtom> atoms;
        for (int i = 0; i < 1000000; ++i)
            atoms.push_back(
                carbon(extent * place(random), extent * place(random), extent * place(random)));
        const Bonds bonds = findBonds(atoms, 0);
        QVERIFY(bonds.crowded > 990000);
        QVERIFY(bonds.pairs.size() < 10000);
        // With the atoms of the own cell and of half of those around it.
        QVERIFY2(bonds.compared <= 14 * memory_host::mostInCell * atoms.size(),
                 std::to_string(bonds.compared).c_str());
    }

    void alternativesDoNotLiftTheLimitsOfHeaps() {
        constexpr std::uint32_t alternatives = 30000;
        std::vector<BondAtom> atoms;
        for (int i = 0; i < 60000; ++i) {
            atoms.push_back(carbon(static_cast<float>(i % 20 * 5)));
            atoms.back().alternative = static_cast<std::uint16_t>(i % alternatives + 1);
        }
        const Bonds heaps = findBonds(atoms, alternatives);
        QCOMPARE(heaps.crowded, atoms.size());
        QCOMPARE(heaps.compared, 0U);

        // Less than a heap in each cell, and still more than have bonds.
        std::mt19937 random(4);
        std::uniform_real_distribution<float> place(0.0F, 3.7F);
        atoms.clear();
        for (int i = 0; i < 8000; ++i)
            atoms.push_back(carbon(place(random), place(random), place(random)));
        const Bonds crowd = findBonds(atoms, alternatives);
        QVERIFY2(crowd.crowded > 4000, std::to_string(crowd.crowded).c_str());
    }

    void absurdCoordinatesTakeNoMemory() {
        std::vector<BondAtom> atoms;
        std::mt19937 random(3);
        for (int i = 0; i < 100000; ++i) {
            const float size = std::pow(10.0F, static_cast<float>(random() % 77) - 38.0F);
            atoms.push_back(carbon(size, -size, static_cast<float>(i) * 2));
        }
        atoms.push_back(carbon(std::numeric_limits<float>::infinity()));
        atoms.push_back(carbon(std::numeric_limits<float>::max()));
        QVERIFY(findBonds(atoms, 0).pairs.empty());
    }
};

REGISTER_TEST(BondSearchTest)
#include "BondSearchTest.moc"
