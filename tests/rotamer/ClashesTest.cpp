// What counts as a clash, on two balls; and the clashes of real side chains against a plain search
// through all pairs, and against gemmi's neighbour search.
#include "Conformation.h"
#include "GemmiReading.h"
#include "NearAtoms.h"
#include "Residues.h"
#include "TestSupport.h"
#include "files/Files.h"

#include <gemmi/neighbor.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using namespace rotamer_testing;
using rotamer::Ball;
using rotamer::BondRole;
using rotamer::Clashes;
using rotamer::Point;

namespace {

/// The clashes of two balls with their centres `apart` Å from each other.
Clashes clashes(double a, BondRole roleA, double b, BondRole roleB, double apart) {
    const std::array<Ball, 1> first = {{{{1, 2, 3}, a, roleA}}};
    const std::array<Ball, 1> second = {{{{1, 2, 3 + apart}, b, roleB}}};
    return rotamer::findClashes(first, second);
}

} // namespace

class ClashesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void twoBallsClashFromACertainOverlapOn_data() {
        QTest::addColumn<double>("first");
        QTest::addColumn<BondRole>("firstRole");
        QTest::addColumn<double>("second");
        QTest::addColumn<BondRole>("secondRole");
        QTest::addColumn<double>("allowed");
        const auto none = BondRole::None;
        const auto hydrogen = BondRole::Hydrogen;
        const auto heavy = BondRole::Heavy;
        QTest::newRow("carbons") << 1.7 << none << 1.7 << none << 0.4;
        QTest::newRow("carbon and oxygen") << 1.7 << none << 1.52 << heavy << 0.4;
        QTest::newRow("carbon and a donated hydrogen") << 1.7 << none << 1.1 << hydrogen << 0.4;
        QTest::newRow("a hydrogen bond") << 1.1 << hydrogen << 1.52 << heavy << 1.0;
        QTest::newRow("the same the other way") << 1.55 << heavy << 1.1 << hydrogen << 1.0;
        QTest::newRow("two donated hydrogens") << 1.1 << hydrogen << 1.1 << hydrogen << 0.4;
        QTest::newRow("hydrogens that no file has") << 1.55 << heavy << 1.52 << heavy << 0.7;
    }
    void twoBallsClashFromACertainOverlapOn() {
        QFETCH(const double, first);
        QFETCH(const BondRole, firstRole);
        QFETCH(const double, second);
        QFETCH(const BondRole, secondRole);
        QFETCH(const double, allowed);
        const double limit = first + second - allowed;
        QCOMPARE(clashes(first, firstRole, second, secondRole, limit + 0.001).count, 0U);
        const Clashes found = clashes(first, firstRole, second, secondRole, limit - 0.001);
        QCOMPARE(found.count, 1U);
        QVERIFY(std::abs(found.worst - allowed - 0.001) < 1e-9);
        QCOMPARE(found.atom, 0U);
        QCOMPARE(found.other, 0U);
    }

    void theWorstOfSeveralIsNamed() {
        const std::vector<Ball> atoms = {{{0, 0, 0}, 1.7, {}}, {{5, 0, 0}, 1.7, {}}};
        const std::vector<Ball> others = {
            {{0, 2.9, 0}, 1.7, {}}, {{50, 0, 0}, 1.7, {}}, {{5, 0, 2.1}, 1.7, {}}};
        const Clashes found = rotamer::findClashes(atoms, others);
        QCOMPARE(found.count, 2U);
        QVERIFY(std::abs(found.worst - 1.3) < 1e-9);
        QCOMPARE(found.atom, 1U);
        QCOMPARE(found.other, 2U);
    }

    void nothingClashesWithNothing() {
        const std::vector<Ball> one = {{{0, 0, 0}, 1.7, {}}};
        QCOMPARE(rotamer::findClashes({}, one).count, 0U);
        QCOMPARE(rotamer::findClashes(one, {}).count, 0U);
        constexpr double nan = std::numeric_limits<double>::quiet_NaN();
        const std::vector<Ball> lost = {{{nan, 0, 0}, 1.7, {}}};
        QCOMPARE(rotamer::findClashes(one, lost).count, 0U);
    }

    void aHydrogenIsWhatItIsBondedTo() {
        addEntry("1abc", {{"SER 1", serine()}});
        std::map<std::string, BondRole> roles;
        for (const Compound* item : atomsOf(residue("SER 1"))) {
            const auto& atom = dynamic_cast<const TAVIK::Atom&>(*item);
            roles[item->GetName()] = rotamer::ballOf(atom, placeOf(item)).role;
        }
        QVERIFY(roles["HG"] == BondRole::Hydrogen);
        QVERIFY(roles["OG"] == BondRole::Heavy && roles["N"] == BondRole::Heavy);
        QVERIFY(roles["CA"] == BondRole::None);
    }

    // For each rotamer of each residue: all pairs, with the rules written down again.
    void realClashesAreThoseOfAPlainSearch_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("hydrogens, alternatives") << "1ejg.pdb";
        QTest::newRow("a ligand, waters, chains") << "1tii.pdb";
    }
    void realClashesAreThoseOfAPlainSearch() {
        QFETCH(const QString, file);
        m_balls.clear(); // atoms of another file were at the same addresses
        memory_host::openFile(structure(file).toStdString());
        memory_host::openFile(structure(file).toStdString()); // another entry in the same place
        Compound* const entry = *TAVIK::Space::instance()->ChildBegin();
        const Items all = atomsOf(entry);
        std::size_t clashing = 0;
        std::size_t checked = 0;
        for (Compound* item : residuesOf(entry)) {
            const rotamer::Conformation conformation = rotamer::readConformation(item);
            const rotamer::SideChain chain = sideChainOf(conformation);
            if (!conformation.fault.empty() || !chain.fault().empty() || ++checked > 40)
                continue;
            const std::vector<Other> others = plainOthers(item, all);
            QStringList expected;
            for (const rotamer::Rotamer& rotamer : chain.rotamers()) {
                const std::vector<Point> points = chain.turned(rotamer);
                std::vector<Other> moved;
                for (std::size_t i = 0; i != points.size(); ++i)
                    if (chain.isTurned(i)) {
                        moved.push_back(plainBall(conformation.atoms[i].item));
                        moved.back().at = points[i];
                    }
                expected << told(moved, others);
                clashing += expected.last() == "no clash" ? 0 : 1;
            }
            QString details;
            if (addRotamers(item, &details).startsWith("No rotamers"))
                continue; // bonded elsewhere
            QStringList found = details.split(" %), with ").mid(1);
            for (QString& one : found)
                one = one.section(" Å", 0, 0).section(';', 0, 0);
            QCOMPARE(found, expected);
            // Of what was added, nothing is in the way of others.
        }
        QVERIFY(clashing > 40);
    }

    // Which atoms are near enough to clash with a side chain as it is.
    void realNeighboursAreThoseOfGemmi() {
        const std::string path = structure("1tii.pdb").toStdString();
        memory_host::openFile(path);
        gemmi::Structure read = gemmi_reading::readStructure(path);
        gemmi::NeighborSearch search(read.first_model(), gemmi::UnitCell(), 5);
        search.populate();
        constexpr double radius = 4.2371;
        std::vector<Point> centres;
        for (const Compound* atom : atomsOf(TAVIK::Space::instance()))
            if (atom->GetName() == "CB" || atom->GetName() == "O")
                centres.push_back(placeOf(atom));
        QVERIFY(centres.size() > 1000);
        const rotamer::NearAtoms near(centres, radius);
        for (const Point& at : centres) {
            // As floats, to which atoms round the numbers of the file.
            std::vector<std::array<float, 3>> ours, theirs;
            for (const Compound* other : near.within(at)) {
                const TAVIK::Vertex place = other->GetPosition();
                ours.push_back({place[0], place[1], place[2]});
            }
            search.for_each(
                gemmi::Position(at[0], at[1], at[2]), '*', radius,
                [&](gemmi::NeighborSearch::Mark& mark, double) {
                    const gemmi::Position& place = mark.to_cra(read.first_model()).atom->pos;
                    theirs.push_back({static_cast<float>(place.x), static_cast<float>(place.y),
                                      static_cast<float>(place.z)});
                });
            std::ranges::sort(ours);
            std::ranges::sort(theirs);
            QVERIFY(ours == theirs);
        }
    }

private:
    struct Other {
        Point at{};
        double radius = 0;
        bool isHeavyPolar = false;
        bool isPolarHydrogen = false;
    };

    // "2 clashes, the worst of 0.62"
    static QString told(const std::vector<Other>& atoms, const std::vector<Other>& others) {
        int count = 0;
        double worst = 0;
        for (const Other& a : atoms)
            for (const Other& b : others)
                if (const double overlap = a.radius + b.radius - distance(a.at, b.at);
                    overlap >= allowed(a, b)) {
                    ++count;
                    worst = std::max(worst, overlap);
                }
        const QString depth = "of " + QString::number(worst, 'f', 2);
        return count == 0   ? QString("no clash")
               : count == 1 ? "a clash " + depth
                            : QString("%1 clashes, the worst ").arg(count) + depth;
    }

    static Other plainBall(const Compound* atom) {
        static const std::map<std::string, double> radii = {
            {"H", 1.10}, {"C", 1.70}, {"N", 1.55}, {"O", 1.52}, {"S", 1.80}};
        const std::string element = atom->GetType();
        Other ball{placeOf(atom), double(float(radii.at(element))),
                   element == "N" || element == "O", false};
        if (element == "H") { // by distance, not by bonds
            Compound* const around = parentResidue(atom);
            for (const Compound* other : atomsOfModel(around, std::max(modelOf(atom), 1U)))
                if ((other->GetType() == "N" || other->GetType() == "O") &&
                    distance(placeOf(atom), placeOf(other)) < 1.3)
                    ball.isPolarHydrogen = true;
        }
        return ball;
    }
    static Compound* parentResidue(const Compound* atom) {
        const std::string name = atom->GetFQName();
        for (Compound* item : residuesOf(*TAVIK::Space::instance()->ChildBegin()))
            if (name.starts_with(item->GetFQName() + "/"))
                return item;
        return nullptr;
    }
    static double allowed(const Other& a, const Other& b) {
        if (a.isHeavyPolar && b.isHeavyPolar)
            return 0.7;
        return (a.isPolarHydrogen && b.isHeavyPolar) || (a.isHeavyPolar && b.isPolarHydrogen) ? 1.0
                                                                                              : 0.4;
    }
    // All atoms of the entry that a side chain of `residue` is compared with.
    std::vector<Other> plainOthers(Compound* residue, const Items& all) {
        const std::string prefix = residue->GetFQName() + "/";
        std::vector<Other> others;
        for (Compound* atom : all) {
            const std::string name = atom->GetFQName();
            if (name.starts_with(prefix) || name.find("/HOH ") != std::string::npos ||
                modelOf(atom) > 1 || isBonded(atom, residue))
                continue;
            others.push_back(cached(atom));
        }
        return others;
    }
    static bool isBonded(const Compound* atom, Compound* residue) {
        for (const QString& bond : bondsOf(residue, 1))
            if (bond.endsWith("-" + QString::fromStdString(atom->GetFQName())))
                return true;
        return false;
    }
    const Other& cached(const Compound* atom) {
        auto [found, isNew] = m_balls.try_emplace(atom);
        if (isNew)
            found->second = plainBall(atom);
        return found->second;
    }
    std::map<const Compound*, Other> m_balls;
};

REGISTER_TEST(ClashesTest)
#include "ClashesTest.moc"
