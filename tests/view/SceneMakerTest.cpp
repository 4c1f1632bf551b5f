// What is drawn of the data, by representation, kind of residue, visibility and colour.
#include "scene/SceneMaker.h"
#include "VanDerWaals.h"
#include "scene/DataReader.h"

#include "SceneTools.h"
#include "TestSupport.h"

#include <set>

using namespace scene_tools;
using view::Look;
using view::Representation;
using view::Scene;
using view::SceneMaker;

namespace {

/// A scene of the data as they are now.
Scene sceneOf(const Look& look) {
    view::DataReader reader;
    reader.read();
    return *SceneMaker().scene(reader.snapshot(), look);
}
Scene sceneOf(Representation representation, bool showWaters = false) {
    return sceneOf({representation, showWaters, 0xff000000});
}

using Atoms = std::vector<std::size_t>;

/// The atom that a point of the scene is of.
std::size_t atomOf(const Scene& scene, std::uint32_t point) {
    return view::itemOf(scene.ids[point]);
}
Atoms balls(const Scene& scene) {
    Atoms atoms;
    for (const view::Ball& ball : scene.balls)
        atoms.push_back(atomOf(scene, ball.point));
    return atoms;
}
Atoms dots(const Scene& scene) {
    Atoms atoms;
    for (const std::uint32_t dot : scene.dots)
        atoms.push_back(atomOf(scene, dot));
    return atoms;
}
/// The atoms of the two ends of a stick or a line.
std::pair<std::size_t, std::size_t> ends(const Scene& scene, const view::Segment& segment) {
    return {atomOf(scene, segment.from), atomOf(scene, segment.to)};
}

/// Two linked amino acids, a ligand of two atoms, an ion and a water: atoms 0 to 9, 10 and 11, 12,
/// 13. Bonds 0-1, 1-2, 10-11.
Structure mixed() {
    Structure made;
    made.add("ALA 1", alanine(0));
    made.add("ALA 2", alanine(3.8F));
    made.add("LIG 3", {{"C1", "C", {20, 0, 0}}, {"C2", "C", {21.5F, 0, 0}}});
    made.add("ZN 4", {{"ZN", "Zn", {30, 0, 0}}});
    made.add("HOH 5", {{"O", "O", {40, 0, 0}}});
    made.bond(0, 1);
    made.bond(1, 2);
    made.bond(10, 11);
    return made;
}

} // namespace

class SceneMakerTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void everyAtomThatIsDrawnHasAPointWithItsColourAndId() {
        const Structure made = mixed().attach();
        made.atoms[3]->SetColor(Color(0xff102030U));
        const Scene scene = sceneOf(Representation::Spheres, true);
        QCOMPARE(scene.pointCount(), std::size_t(14));
        QCOMPARE(scene.point(12), (view::Point{30, 0, 0}));
        for (std::size_t i = 0; i != made.atoms.size(); ++i) {
            QCOMPARE(scene.colours[i], made.atoms[i]->GetColor().rgba());
            QCOMPARE(scene.ids[i], view::idOf(i));
        }
        QCOMPARE(scene.colours[3], 0xff102030U);
    }

    // A second copy of the positions would be among the largest arrays of the view.
    void positionsServeAsPointsWhereMostAtomsAreDrawn() {
        const Structure made = mixed().attach();
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const auto all = maker.scene(reader.snapshot(), {Representation::Sticks, true, 0});
        QCOMPARE(all->sharedPoints.get(), &reader.snapshot().contents->positions);
        QVERIFY(all->points.empty());
        for (std::size_t i = 4; i != made.atoms.size(); ++i)
            made.atoms[i]->SetVisible(false);
        reader.refresh();
        const auto few = maker.scene(reader.snapshot(), {Representation::Sticks, true, 0});
        QVERIFY(!few->sharedPoints);
        QCOMPARE(few->points.size(), std::size_t(4));
    }

    void spheresHaveTheVanDerWaalsRadius() {
        mixed().attach();
        const Scene scene = sceneOf(Representation::Spheres, true);
        QCOMPARE(scene.balls.size(), std::size_t(14));
        QCOMPARE(scene.balls[0].radius, 1.55F);
        QCOMPARE(scene.balls[1].radius, 1.70F);
        QCOMPARE(scene.balls[12].radius, 1.39F);
        QVERIFY(scene.sticks.empty() && scene.lines.empty() && scene.dots.empty());
    }

    void pointsAreDotsAndNothingElse() {
        mixed().attach();
        const Scene scene = sceneOf(Representation::Points);
        QCOMPARE(dots(scene), (Atoms{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
        QVERIFY(scene.sticks.empty() && scene.lines.empty() && scene.balls.empty());
    }

    void atomsWithoutABondAreDotsAmongLinesAndBallsAmongSticks() {
        mixed().attach();
        const Scene lines = sceneOf(Representation::Lines);
        QCOMPARE(lines.lines.size(), std::size_t(3));
        QCOMPARE(ends(lines, lines.lines[2]), std::pair(std::size_t(10), std::size_t(11)));
        QCOMPARE(dots(lines), (Atoms{3, 4, 5, 6, 7, 8, 9, 12}));
        const Scene sticks = sceneOf(Representation::Sticks);
        QCOMPARE(sticks.sticks.size(), std::size_t(3));
        QCOMPARE(balls(sticks), (Atoms{3, 4, 5, 6, 7, 8, 9, 12}));
        QVERIFY(sticks.balls[0].radius >= sticks.stickRadius);
    }

    void ballsOnSticksAreThickerThanTheSticks() {
        mixed().attach();
        const Scene scene = sceneOf(Representation::BallAndStick);
        QCOMPARE(scene.sticks.size(), std::size_t(3));
        QCOMPARE(scene.balls.size(), std::size_t(13));
        for (const view::Ball& ball : scene.balls)
            QVERIFY(ball.radius > scene.stickRadius && ball.radius < 1);
    }

    void hiddenAtomsAndTheirBondsAreLeftOut() {
        const Structure made = mixed().attach();
        made.atoms[10]->SetVisible(false);
        made.residues[0]->SetVisible(false);
        const Scene scene = sceneOf(Representation::BallAndStick);
        QVERIFY(scene.sticks.empty());
        QCOMPARE(balls(scene), (Atoms{5, 6, 7, 8, 9, 11, 12}));
        QCOMPARE(scene.pointCount(), std::size_t(7));
    }

    void onlyTheActiveModelIsDrawn() {
        Structure made;
        TAVIK::Compound* residue = made.add(
            "SER 1",
            {{"CA", "C", {0, 0, 0}}, {"CB", "C", {1.5F, 0, 0}, 1}, {"CB", "C", {0, 1.5F, 0}, 2}});
        made.bond(0, 1);
        made.bond(0, 2);
        made.attach();
        Scene scene = sceneOf(Representation::Sticks);
        QCOMPARE(scene.sticks.size(), std::size_t(1));
        QCOMPARE(ends(scene, scene.sticks[0]).second, std::size_t(1));
        residue->NextModel();
        scene = sceneOf(Representation::Sticks);
        QCOMPARE(scene.sticks.size(), std::size_t(1));
        QCOMPARE(ends(scene, scene.sticks[0]).second, std::size_t(2));
    }

    void watersAreDrawnWhenAskedForOrWhenThereIsNothingElse() {
        const Structure made = mixed().attach();
        QCOMPARE(balls(sceneOf(Representation::Spheres)).back(), std::size_t(12));
        QCOMPARE(balls(sceneOf(Representation::Spheres, true)).back(), std::size_t(13));
        TAVIK::DataMaker::Destroy(made.entry);
        Structure waters;
        waters.add("HOH 1", {{"O", "O", {0, 0, 0}}});
        waters.attach();
        QCOMPARE(balls(sceneOf(Representation::Spheres)), (Atoms{0}));
    }

    void aRibbonLeavesLigandsAsSticksAndIonsAsSpheres() {
        mixed().attach();
        const Scene scene = sceneOf(Representation::Ribbon);
        QCOMPARE(scene.sticks.size(), std::size_t(1));
        QCOMPARE(ends(scene, scene.sticks[0]).first, std::size_t(10));
        QCOMPARE(balls(scene), (Atoms{12}));
        QCOMPARE(scene.balls[0].radius, 1.39F);
    }

    void aResidueThatHoldsALigandIsDrawnInARibbon() {
        Structure made = mixed();
        made.bond(4, 10);
        made.attach();
        const Scene scene = sceneOf(Representation::Ribbon);
        std::set<std::pair<std::size_t, std::size_t>> sticks;
        for (const view::Segment& stick : scene.sticks)
            sticks.insert(ends(scene, stick));
        QCOMPARE(sticks, (std::set<std::pair<std::size_t, std::size_t>>{
                             {0, 1}, {1, 2}, {4, 10}, {10, 11}}));
    }

    void modifiedResiduesOfARibbonAreSticks() {
        Structure made;
        made.add("ALA 1", alanine(0));
        made.add("MSE 2", alanine(3.8F));
        made.bond(0, 1);
        made.bond(5, 6);
        made.attach();
        const Scene scene = sceneOf(Representation::Ribbon);
        QCOMPARE(scene.sticks.size(), std::size_t(1));
        QCOMPARE(ends(scene, scene.sticks[0]).first, std::size_t(5));
    }

    void theFirstPictureOfAFewAtomsIsBallsAndSticks() {
        mixed().attach();
        const Scene scene = sceneOf(Representation::Automatic);
        QCOMPARE(scene.balls.size(), std::size_t(13));
        QCOMPARE(scene.sticks.size(), std::size_t(3));
    }

    void theFirstPictureOfManyAtomsIsSticksWithoutAPolymer() {
        Structure made;
        for (int i = 0; i <= int(view::smallEntry); ++i)
            made.add("UNL " + std::to_string(i), {{"C1", "C", {2.0F * float(i), 0, 0}}});
        for (std::size_t i = 1; i <= view::smallEntry; ++i)
            made.bond(i - 1, i);
        made.attach();
        const Scene scene = sceneOf(Representation::Automatic);
        QCOMPARE(scene.sticks.size(), view::smallEntry);
        QVERIFY(scene.balls.empty());
    }

    void whatIsPickedOutOfALargeEntryIsBallsAndSticksWithItsWaters() {
        Structure made;
        const int count = 2 * int(view::smallEntry); // residues of two atoms
        for (int i = 0; i != count; ++i)
            made.add("UNL " + std::to_string(i), {{"C1", "C", {4.0F * float(i), 0, 0}},
                                                  {"C2", "C", {4.0F * float(i) + 1, 0, 0}}});
        for (int i = 0; i != count; ++i)
            made.bond(std::size_t(2 * i), std::size_t(2 * i + 1));
        made.add("HOH 1", {{"O", "O", {0, 9, 0}}});
        made.add("HOH 2", {{"O", "O", {0, 18, 0}}});
        made.attach();
        QCOMPARE(sceneOf(Representation::Automatic).sticks.size(), std::size_t(count));
        QVERIFY(sceneOf(Representation::Automatic).balls.empty());
        for (std::size_t i = 2; i != made.atoms.size() - 2; ++i)
            made.atoms[i]->SetVisible(false);
        made.atoms.back()->SetVisible(false);
        // Two atoms with their bond, and the one water that is not hidden.
        Scene scene = sceneOf(Representation::Automatic);
        QCOMPARE(scene.sticks.size(), std::size_t(1));
        QCOMPARE(balls(scene), (Atoms{0, 1, made.atoms.size() - 2}));
        // In every representation.
        QCOMPARE(sceneOf(Representation::Spheres).balls.size(), std::size_t(3));
        // With the water, as many as are few, and one more.
        for (std::size_t i = 2; i != view::smallEntry - 1; ++i)
            made.atoms[i]->SetVisible(true);
        QCOMPARE(sceneOf(Representation::Automatic).balls.size(), view::smallEntry);
        made.atoms[view::smallEntry - 1]->SetVisible(true);
        scene = sceneOf(Representation::Automatic);
        QCOMPARE(scene.sticks.size(), view::smallEntry / 2);
        QVERIFY(scene.balls.empty());
    }

    void chainsOfWhichSinglePiecesAreShownAreSticks() {
        Structure made;
        const std::size_t count = 2 * view::smallEntry / 5; // residues of five atoms
        for (std::size_t i = 0; i != count; ++i)
            made.add("ALA " + std::to_string(i + 1), alanine(3.8F * float(i)));
        for (std::size_t i = 0; i != count; ++i) {
            made.bond(5 * i, 5 * i + 1); // N and CA
            if (i > 0)
                made.bond(5 * i - 3, 5 * i); // C and N
        }
        made.attach();
        const auto hide = [&](std::size_t residue) {
            for (std::size_t i = 5 * residue; i != 5 * residue + 5; ++i)
                made.atoms[i]->SetVisible(false);
        };
        QVERIFY(sceneOf(Representation::Automatic).sticks.empty());
        // Pieces of four residues each still are ribbons, those of three are not.
        for (std::size_t i = 4; i < count; i += 5)
            hide(i);
        QVERIFY(sceneOf(Representation::Automatic).sticks.empty());
        for (std::size_t i = 3; i < count; i += 5)
            hide(i);
        QCOMPARE(sceneOf(Representation::Automatic).sticks.size(), count / 5 * (3 + 2));
    }

    void theSameDataGiveTheSameScene() {
        const Structure made = mixed().attach();
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const auto scene = maker.scene(reader.snapshot(), {});
        made.atoms[0]->SetSelected(true);
        reader.refresh();
        QCOMPARE(maker.scene(reader.snapshot(), {}), scene);
        made.atoms[0]->SetColor(Color(0xff00ff00U));
        reader.refresh();
        const auto other = maker.scene(reader.snapshot(), {});
        QVERIFY(other != scene);
        QCOMPARE(other->colours[0], 0xff00ff00U);
    }

    void aMovingSceneHasADotForEachAtomThatIsDrawn() {
        const Structure made = mixed().attach();
        made.atoms[11]->SetVisible(false);
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const Look look{Representation::Spheres, false, 0xff000000};
        const auto scene = maker.quickScene(reader.snapshot(), look);
        std::vector<view::Id> ids;
        for (const std::uint32_t dot : scene->dots)
            ids.push_back(scene->ids[dot]);
        QCOMPARE(ids, (std::vector<view::Id>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13}));
        QVERIFY(scene->balls.empty());
    }

    void linesAndDotsCanBeToldFromTheBackground() {
        const Structure made = mixed().attach();
        made.atoms[0]->SetColor(Color(0xffffffffU));
        made.atoms[1]->SetColor(Color(0xff0000c0U));
        for (const Representation representation :
             {Representation::Lines, Representation::Points, Representation::Spheres}) {
            const Scene onWhite = sceneOf({representation, false, 0xffffffff});
            const Scene onBlack = sceneOf({representation, false, 0xff000000});
            const bool isShaded = representation == Representation::Spheres;
            QCOMPARE(onWhite.colours[0] == 0xffffffffU, isShaded);
            QCOMPARE(onBlack.colours[0], 0xffffffffU);
            QCOMPARE(onWhite.colours[1], 0xff0000c0U);
            QCOMPARE(onBlack.colours[1] == 0xff0000c0U, isShaded);
        }
    }

    void noPictureIsMadeOfNothing() {
        const Scene scene = sceneOf(Representation::Automatic);
        QVERIFY(scene.pointCount() == 0 && scene.balls.empty());
        QVERIFY(view::drawnPoints({}, {}, {}).empty());
    }
};

REGISTER_TEST(SceneMakerTest)
#include "SceneMakerTest.moc"
