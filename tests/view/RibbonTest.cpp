// Ribbons as meshes: closed bodies, what they look like, and which residue each part belongs to.
#include "ribbon/Ribbon.h"

#include "MeshChecks.h"
#include "RibbonTools.h"
#include "TestSupport.h"
#include "ribbon/Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <vector>

using ribbon_tools::chain;
using ribbon_tools::meshOf;
using ribbon_tools::plainStyle;
using ribbon_tools::protein;
using ribbon_tools::Residues;
using ribbon_tools::spacing;
using view::Mesh;
using view::Point;
using view::RibbonResidue;
using view::RibbonStyle;
using view::SecondaryStructure;
using view::vectorOf;
using view_testing::bodyCount;
using view_testing::corner;
using view_testing::inwardNormals;
using view_testing::isClosed;
using view_testing::isWhole;
using view_testing::volume;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// The largest distance from the x axis along y or z of the vertices near x.
double extent(const Mesh& mesh, double x, std::size_t axis) {
    double largest = 0;
    for (const Point& vertex : mesh.vertices)
        if (std::abs(vertex[0] - x) < 1e-3)
            largest = std::max(largest, std::abs(double(vertex[axis])));
    return largest;
}

/// What is seen of a ribbon of which some is hidden, as one mesh.
Mesh seenOf(const view::Ribbon& ribbon, const std::vector<std::uint8_t>& shown) {
    Mesh seen = ribbon.mesh;
    seen.triangles.clear();
    seen.ids.clear();
    for (std::size_t i = 0; i < ribbon.mesh.triangles.size(); ++i) {
        const view::Id id = ribbon.mesh.ids[i];
        if (shown[id - 1] == 0)
            continue;
        seen.triangles.push_back(ribbon.mesh.triangles[i]);
        seen.ids.push_back(id);
    }
    Mesh caps;
    view::addCaps(ribbon, shown, caps);
    const auto first = static_cast<std::uint32_t>(seen.vertices.size());
    seen.vertices.insert(seen.vertices.end(), caps.vertices.begin(), caps.vertices.end());
    seen.normals.insert(seen.normals.end(), caps.normals.begin(), caps.normals.end());
    seen.ids.insert(seen.ids.end(), caps.ids.begin(), caps.ids.end());
    for (const auto& [a, b, c] : caps.triangles)
        seen.triangles.push_back({first + a, first + b, first + c});
    return seen;
}

} // namespace

class RibbonTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void noResiduesMakeNoMesh() {
        const Mesh mesh = meshOf({}, plainStyle());
        QVERIFY(mesh.vertices.empty() && mesh.triangles.empty());
    }

    void aStraightTubeIsAPrism() {
        const RibbonStyle style = plainStyle();
        const Mesh mesh = meshOf(chain("-----"), style);
        // Sections at 4 * 4 + 1 points, and a cap at each end.
        QCOMPARE(mesh.vertices.size(), (17U + 2) * 6);
        QCOMPARE(mesh.triangles.size(), 16U * 6 * 2 + 2 * 4);
        QVERIFY(isWhole(mesh));
        QVERIFY(isClosed(mesh));
        QCOMPARE(inwardNormals(mesh), 0U);
        const double hexagon = 1.5 * std::sqrt(3.0) * style.coilRadius * style.coilRadius;
        QVERIFY(std::abs(volume(mesh) - hexagon * 4 * spacing) < 1e-4);
    }

    void aStrandIsAnArrow() {
        const RibbonStyle style = plainStyle();
        const Mesh mesh = meshOf(chain("EEEEE"), style);
        QCOMPARE(bodyCount(mesh), 2U);
        QVERIFY(isWhole(mesh));
        QVERIFY(isClosed(mesh));
        QCOMPARE(inwardNormals(mesh), 0U);
        // The head is the last one and a half residues.
        const double thickness = 2 * style.strandHalfThickness;
        const double shaft = 2.5 * spacing * thickness * 2 * style.strandHalfWidth;
        const double head = 1.5 * spacing * thickness * (style.arrowHalfWidth + style.coilRadius);
        QVERIFY(std::abs(volume(mesh) - shaft - head) < 1e-3);
        QVERIFY(std::abs(extent(mesh, spacing, 1) - style.strandHalfWidth) < 1e-5);
        QVERIFY(std::abs(extent(mesh, 2.5 * spacing, 1) - style.arrowHalfWidth) < 1e-5);
        QVERIFY(std::abs(extent(mesh, 4 * spacing, 1) - style.coilRadius) < 1e-5);
        QVERIFY(std::abs(extent(mesh, spacing, 2) - style.strandHalfThickness) < 1e-5);
    }

    void aHelixIsWideAndFlatAndNarrowsToTheTube() {
        const RibbonStyle style = plainStyle();
        const Mesh mesh = meshOf(chain("--HGI--"), style);
        QCOMPARE(bodyCount(mesh), 1U);
        QVERIFY(isClosed(mesh));
        QCOMPARE(inwardNormals(mesh), 0U);
        for (const double residue : {2.0, 3.0, 4.0})
            QVERIFY(std::abs(extent(mesh, residue * spacing, 1) - style.helixHalfWidth) < 1e-5);
        for (const double residue : {1.0, 5.0})
            QVERIFY(std::abs(extent(mesh, residue * spacing, 1) - style.coilRadius) < 1e-5);
        QVERIFY(std::abs(extent(mesh, 1.5 * spacing, 1) -
                         (style.helixHalfWidth + style.coilRadius) / 2) < 1e-5);
    }

    void aNucleicAcidIsABandWithItsFlatSideToTheBases() {
        const RibbonStyle style = plainStyle();
        Residues residues = chain("----");
        for (RibbonResidue& residue : residues)
            residue.kind = RibbonResidue::Kind::Nucleotide;
        const Mesh mesh = meshOf(residues, style);
        QVERIFY(isClosed(mesh));
        // The direction to the bases is y, and so the width is along z.
        QVERIFY(std::abs(extent(mesh, spacing, 2) - style.nucleicHalfWidth) < 1e-5);
        QVERIFY(extent(mesh, spacing, 1) < style.nucleicHalfThickness + 1e-5);
    }

    void aHelixOrStrandOfOneResidueIsATube() {
        const Mesh tube = meshOf(chain("-----"), plainStyle());
        QCOMPARE(meshOf(chain("--E--"), plainStyle()).vertices, tube.vertices);
        QCOMPARE(meshOf(chain("H--H-"), plainStyle()).vertices, tube.vertices);
        QVERIFY(meshOf(chain("-EE--"), plainStyle()).vertices != tube.vertices);
    }

    void turnsBendsAndBridgesAreTubes() {
        QCOMPARE(meshOf(chain("-TSBT-"), plainStyle()).vertices,
                 meshOf(chain("------"), plainStyle()).vertices);
    }

    void aResidueOnItsOwnIsABall() {
        const RibbonStyle style = plainStyle();
        Residues residues = chain("-");
        residues[0].guide = {1, 2, 3};
        const Mesh mesh = meshOf(residues, style);
        QVERIFY(!mesh.triangles.empty());
        QVERIFY(isWhole(mesh));
        QVERIFY(isClosed(mesh));
        QCOMPARE(inwardNormals(mesh), 0U);
        for (const Point& vertex : mesh.vertices)
            QVERIFY(std::abs(view::distance(vectorOf(vertex), {1, 2, 3}) - style.loneRadius) <
                    1e-5);
        QVERIFY(
            std::all_of(mesh.ids.begin(), mesh.ids.end(), [](view::Id id) { return id == 100; }));
    }

    void residuesInOnePlaceAreBalls() {
        Residues residues = chain("HHHH");
        for (RibbonResidue& residue : residues)
            residue.guide = {1, 2, 3};
        const Mesh mesh = meshOf(residues, plainStyle());
        QVERIFY(isWhole(mesh));
        QVERIFY(isClosed(meshOf({residues.data(), 1}, plainStyle())));
        QCOMPARE(mesh.triangles.size(),
                 4 * meshOf({residues.data(), 1}, plainStyle()).triangles.size());
    }

    void eachPartHasTheIdOfTheNearestResidue() {
        const Mesh mesh = meshOf(chain("--HHHH--EEEE--"), plainStyle());
        std::set<view::Id> ids;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            const double x =
                (corner(mesh, i, 0).x + corner(mesh, i, 1).x + corner(mesh, i, 2).x) / 3 / spacing;
            const double nearest = std::round(x);
            // Caps stand between two residues.
            const bool isBetween = std::abs(std::abs(x - nearest) - 0.5) < 1e-3;
            if (!isBetween)
                QCOMPARE(mesh.ids[i], 100 + static_cast<view::Id>(nearest));
            ids.insert(mesh.ids[i]);
        }
        QCOMPARE(ids.size(), 14U);
    }

    void chainsAreNotJoined_data() {
        QTest::addColumn<int>("what");
        QTest::newRow("no link") << 0;
        QTest::newRow("another kind") << 1;
        QTest::newRow("no guide point") << 2;
        QTest::newRow("a guide point that is no place") << 3;
    }

    void chainsAreNotJoined() {
        QFETCH(int, what);
        Residues residues = chain("--------");
        residues[4].isLinkedToPrevious = what != 0;
        for (std::size_t i = 4; i < residues.size(); ++i)
            if (what == 1)
                residues[i].kind = RibbonResidue::Kind::Nucleotide;
        if (what > 1)
            residues[4].guide[1] = what == 2 ? notANumber : 1e20F;
        const Mesh mesh = meshOf(residues, plainStyle());
        QVERIFY(isWhole(mesh));
        QVERIFY(isClosed(mesh));
        QCOMPARE(bodyCount(mesh), 2U);
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            const auto side = [&](std::size_t number) {
                return corner(mesh, i, number).x > 3.4 * spacing;
            };
            QVERIFY(side(0) == side(1) && side(1) == side(2));
        }
        QVERIFY(std::count(mesh.ids.begin(), mesh.ids.end(), 104U) == 0 || what < 2);
    }

    void linkedResiduesAreJoinedHoweverFarApart() {
        for (const float apart : {0.6F, 5.6F, 50.0F}) {
            Residues residues = chain("--");
            residues[1].guide[0] = apart;
            const Mesh mesh = meshOf(residues, plainStyle());
            QVERIFY(isWhole(mesh) && isClosed(mesh));
            QCOMPARE(bodyCount(mesh), 1U);
            residues[1].isLinkedToPrevious = false;
            QCOMPARE(bodyCount(meshOf(residues, plainStyle())), 2U);
        }
    }

    void hiddenResiduesLeaveAGapAndChangeNothingElse() {
        const Residues residues = protein(structure("1ubq.pdb"));
        const view::Ribbon ribbon = view::makeRibbon(residues, plainStyle());
        std::vector<std::uint8_t> shown;
        for (std::size_t i = 0; i < residues.size(); ++i)
            shown.push_back(i % 7 > 2);
        const Mesh some = seenOf(ribbon, shown);
        QVERIFY(isWhole(some));
        QVERIFY(isClosed(some));
        QVERIFY(volume(some) > 0 && volume(some) < volume(ribbon.mesh));
        // Caps stand where the ribbon was cut, and face away from it.
        const std::set<Point> places(ribbon.mesh.vertices.begin(), ribbon.mesh.vertices.end());
        for (const Point& vertex : some.vertices)
            QVERIFY(places.contains(vertex));
        Mesh caps;
        view::addCaps(ribbon, shown, caps);
        QVERIFY(!caps.triangles.empty());
        QCOMPARE(inwardNormals(caps), 0U);
        for (const view::Id id : caps.ids)
            QVERIFY(shown[id - 1] != 0);
    }

    void whatIsShownOrHiddenAltogetherHasNoCaps() {
        const view::Ribbon ribbon = view::makeRibbon(protein(structure("1ubq.pdb")), plainStyle());
        for (const std::uint8_t isShown : {0, 1}) {
            Mesh caps;
            view::addCaps(ribbon, std::vector<std::uint8_t>(76, isShown), caps);
            QVERIFY(caps.vertices.empty() && caps.triangles.empty());
        }
    }

    void eachResidueMayBeAloneInSight() {
        const Residues residues = chain("--HHHH--EEEE--");
        const view::Ribbon ribbon = view::makeRibbon(residues, plainStyle());
        double sum = 0;
        for (std::size_t i = 0; i < residues.size(); ++i) {
            std::vector<std::uint8_t> shown(residues.back().id, 0);
            shown[residues[i].id - 1] = 1;
            const Mesh one = seenOf(ribbon, shown);
            QVERIFY(isWhole(one) && isClosed(one));
            QVERIFY(volume(one) > 0);
            sum += volume(one);
        }
        // Together they are the whole.
        QVERIFY(std::abs(sum - volume(ribbon.mesh)) < 1e-3 * sum);
    }

    void strandsDoNotZigzag() {
        Residues residues = chain("EEEEEEEE");
        for (std::size_t i = 0; i < residues.size(); ++i)
            residues[i].guide[2] = i % 2 == 0 ? 0.9F : -0.9F;
        const Mesh mesh = meshOf(residues, plainStyle());
        // It is flat but for the ends, which have no neighbours.
        for (const Point& vertex : mesh.vertices)
            if (vertex[0] > 1.9 * spacing && vertex[0] < 5.1 * spacing)
                QVERIFY(std::abs(vertex[2]) < plainStyle().strandHalfThickness + 0.1);
    }

    void directionsThatAlternateChangeNothing() {
        for (const char* structures : {"EEEEEEEE", "--EEEE--", "--HHHH--", "--------"}) {
            Residues residues = chain(structures);
            const Mesh mesh = meshOf(residues, plainStyle());
            for (std::size_t i = 1; i < residues.size(); i += 2)
                residues[i].direction[1] = -1;
            QCOMPARE(meshOf(residues, plainStyle()).vertices, mesh.vertices);
        }
    }

    void unknownDirectionsStillMakeARibbon() {
        Residues residues = chain("--HHHHH--EEEEE--");
        for (const Point& direction : {Point{}, Point{notANumber, 0, 0}, Point{1, 0, 0}}) {
            for (RibbonResidue& residue : residues)
                residue.direction = direction;
            const Mesh mesh = meshOf(residues, plainStyle());
            QVERIFY(isWhole(mesh));
            QVERIFY(isClosed(mesh));
            QCOMPARE(inwardNormals(mesh), 0U);
        }
    }

    void realProteinsAreClosedBodies_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("1ubq") << "1ubq.pdb";
        QTest::newRow("1ejg") << "1ejg.pdb";
        QTest::newRow("1cbs") << "1cbs.cif.gz";
        QTest::newRow("1tii") << "1tii.pdb";
    }

    void realProteinsAreClosedBodies() {
        QFETCH(QString, file);
        const Residues residues = protein(structure(file));
        // Where the path turns or twists much from one section to the next, a narrow triangle may
        // face the other way: ever fewer do with more sections.
        const std::map<unsigned, double> mostInward = {{2, 0.04}, {4, 0.004}, {10, 0.0003}};
        for (const auto& [subdivisions, most] : mostInward) {
            RibbonStyle style = plainStyle();
            style.subdivisions = subdivisions;
            const Mesh mesh = meshOf(residues, style);
            QVERIFY(isWhole(mesh));
            QVERIFY(isClosed(mesh));
            QVERIFY(volume(mesh) > 0);
            QVERIFY(static_cast<double>(inwardNormals(mesh)) <=
                    most * 3 * static_cast<double>(mesh.triangles.size()));
        }
    }

    void anyStyleIsMadeUsable() {
        RibbonStyle style;
        style.subdivisions = 0;
        style.corners = 0;
        const Mesh mesh = meshOf(chain("----"), style);
        QCOMPARE(mesh.vertices.size(), (7U + 2) * 3);
        QVERIFY(isClosed(mesh));
        style.subdivisions = 3;
        QCOMPARE(meshOf(chain("----"), style).vertices.size(), (13U + 2) * 3);
    }

    void garbageMakesAWholeMesh() {
        std::mt19937 random(8);
        std::uniform_real_distribution<float> near(-2, 2);
        constexpr std::array<float, 5> bad = {notANumber, std::numeric_limits<float>::infinity(),
                                              1e30F, -1e-40F, 9.9e6F};
        constexpr std::array<char, 6> letters = {'H', 'G', 'E', 'E', 'T', ' '};
        for (int turn = 0; turn < 300; ++turn) {
            Residues residues(20);
            for (std::size_t i = 0; i < residues.size(); ++i) {
                RibbonResidue& residue = residues[i];
                residue.guide = {near(random), near(random), near(random)};
                residue.direction = {near(random), near(random), near(random)};
                residue.structure =
                    static_cast<SecondaryStructure>(letters[random() % letters.size()]);
                residue.id = static_cast<view::Id>(random() % residues.size() + 1);
                residue.isLinkedToPrevious = random() % 8 != 0;
                if (i > 0 && random() % 4 == 0)
                    residue.guide = residues[i - 1].guide;
                if (random() % 20 == 0)
                    residue.guide[random() % 3] = bad[random() % bad.size()];
                if (random() % 5 == 0)
                    residue.direction[random() % 3] = bad[random() % bad.size()];
                if (random() % 10 == 0)
                    residue.kind = RibbonResidue::Kind::Nucleotide;
            }
            const view::Ribbon ribbon = view::makeRibbon(residues, plainStyle());
            QVERIFY(isWhole(ribbon.mesh));
            std::vector<std::uint8_t> shown;
            for (std::size_t i = 0; i < residues.size(); ++i)
                shown.push_back(random() % 2);
            QVERIFY(isWhole(seenOf(ribbon, shown)));
        }
    }
};

REGISTER_TEST(RibbonTest)
#include "RibbonTest.moc"
