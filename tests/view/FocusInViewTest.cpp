// The focus that the view shares with other windows.
#include "Ancestry.h"
#include "Focus.h"
#include "Geometry.h"
#include "ViewTestCase.h"
#include "scene/Styles.h"

using namespace view_tools;

namespace {

class Observer : public TAVIK::FocusObserver {
public:
    void focusMoved(TAVIK::Compound* item, bool) override { seen.push_back(item); }
    Items seen;
};

/// Destroys what gets the focus.
class Destroyer : public TAVIK::FocusObserver {
public:
    void focusMoved(TAVIK::Compound* item, bool) override {
        if (item)
            TAVIK::DataMaker::Destroy(item);
    }
};

} // namespace

class FocusInViewTest : public ViewTestCase {
    Q_OBJECT
private slots:
    void cleanup() override {
        TAVIK::Focus::set(nullptr, nullptr);
        ViewTestCase::cleanup();
    }

    void aClickOnAnAtomSetsTheFocusAndOneOnNothingLeavesIt() {
        const Structure made = fourAtoms().attach();
        show();
        const Observer observer;
        const view::Point centre = canvas().camera().centre;
        click(made.atoms[2]);
        QCOMPARE(observer.seen, Items{made.atoms[2]});
        QCOMPARE(TAVIK::Focus::item(), made.atoms[2]);
        clickOnNothing();
        QCOMPARE(TAVIK::Focus::item(), made.atoms[2]);
        QCOMPARE(canvas().camera().centre, centre);
    }

    void theViewCentresOnWhatAnotherFocusesWhenAsked() {
        const Structure made = fourAtoms().attach();
        show();
        const view::Point centre = canvas().camera().centre;
        TAVIK::Focus::set(made.atoms[1], nullptr, false);
        QCOMPARE(canvas().camera().centre, centre);
        TAVIK::Focus::set(made.atoms[1], nullptr, true);
        QCOMPARE(canvas().camera().centre, (view::Point{10, 0, 0}));
        settle();
        QCOMPARE(canvas().idAt(canvas().rect().center()), view::idOf(1));
        QCOMPARE(selectedNames(), QString());
    }

    void whatHidesTheFocusIsCutAway() {
        const Structure made = fourAtoms().attach(); // the second one hides the fourth
        show();
        const auto inMiddle = [this] {
            settle();
            return canvas().idAt(canvas().rect().center());
        };
        TAVIK::Focus::set(made.atoms[3], nullptr, true);
        QCOMPARE(inMiddle(), view::idOf(3));
        QCOMPARE(canvas().camera().front, 2.0);
        QVERIFY(std::isinf(canvas().camera().back));
        QTest::keyClick(&canvas(), Qt::Key_F);
        QCOMPARE(inMiddle(), view::idOf(1));
        QVERIFY(std::isinf(canvas().camera().front));
        QTest::keyClick(&canvas(), Qt::Key_F);
        QCOMPARE(inMiddle(), view::idOf(3));
        // From elsewhere, too.
        canvas().turn(1, 0.5);
        canvas().centreOn({0, 0, 0});
        QTest::keyClick(&canvas(), Qt::Key_F);
        QTest::keyClick(&canvas(), Qt::Key_F);
        const view::Camera& camera = canvas().camera();
        QVERIFY(std::abs(camera.front - 2 - camera.depthOf({10, 0, -10})) < 1e-5);
        QTest::keyClick(&canvas(), Qt::Key_Home);
        settle();
        QVERIFY(std::isinf(canvas().camera().front));
    }

    void planesOfTheUserStayButForWhatIsLookedAt() {
        const Structure made = fourAtoms().attach();
        show();
        QTest::keyClick(&canvas(), Qt::Key_F);
        TAVIK::Focus::set(made.atoms[3], nullptr, true);
        settle();
        QVERIFY(std::isinf(canvas().camera().front));
        // In front of the middle, and behind it.
        while (canvas().camera().front > 1)
            drag(Qt::RightButton, {100, 20}, {100, 30});
        while (canvas().camera().back < -1)
            drag(Qt::RightButton, {100, 20}, {110, 20});
        QVERIFY(canvas().camera().front < 2);
        TAVIK::Focus::set(made.atoms[1], nullptr, true);
        settle();
        QVERIFY(canvas().camera().front >= 2 && canvas().camera().back <= -2);
        QVERIFY(std::isfinite(canvas().camera().front) && std::isfinite(canvas().camera().back));
        QCOMPARE(canvas().idAt(canvas().rect().center()), view::idOf(1));
        // All of the entry is seen.
        TAVIK::Focus::set(made.entry, nullptr, true);
        settle();
        for (const TAVIK::Compound* atom : {made.atoms[0], made.atoms[2], made.atoms[4]})
            QVERIFY(canvas().idAt(placeOf(atom)) != view::noId);
    }

    void theResidueInFocusIsDrawnWithItsAtomsWhereItWouldNotBe() {
        Structure made;
        for (int i = 0; i != 5; ++i)
            made.add("ALA " + std::to_string(i + 1), alanine(3.8F * float(i)));
        for (std::size_t i = 1; i != 5; ++i)
            made.bond(5 * i - 3, 5 * i);
        made.add("HOH 6", {{"O", "O", {0, 20, 0}}});
        made.attach();
        m_view->setRepresentation(view::Representation::Ribbon);
        show();
        const auto drawn = [this] {
            settle();
            const view::Order& order = canvas().order();
            std::string styles;
            for (const view::Style style :
                 chooseStyles(*order.snapshot.contents, *order.snapshot.marks, order.look).atoms)
                styles += style == view::Style::None ? '-' : 'x';
            return styles;
        };
        const std::string none(26, '-');
        QCOMPARE(drawn(), none);
        // An atom stands for its residue.
        TAVIK::Focus::set(made.atoms[11], nullptr, false);
        const std::string third = "----------xxxxx-----------";
        QCOMPARE(drawn(), third);
        TAVIK::Focus::set(TAVIK::GetParent(made.atoms[25]), nullptr, true);
        QCOMPARE(drawn(), "-------------------------x");
        TAVIK::Focus::set(made.atoms[11], nullptr, true);
        QCOMPARE(drawn(), third);
        // A click on one of its atoms leaves it.
        click(made.atoms[11]);
        QCOMPARE(drawn(), third);
        // Ids are others when there is more in front.
        {
            const DataDelete<TAVIK::Compound> guard(nullptr, space());
            TAVIK::DataMaker::Destroy(TAVIK::GetParent(made.atoms[0]));
        }
        QCOMPARE(drawn(), third.substr(5));
        clickOnNothing();
        QCOMPARE(drawn(), none.substr(5));
        // An entry, and what is gone, is not drawn in another way.
        TAVIK::Focus::set(made.entry, nullptr, false);
        QCOMPARE(drawn(), none.substr(5));
        TAVIK::Focus::set(made.atoms[11], nullptr, false);
        TAVIK::Focus::set(nullptr, nullptr, false);
        QCOMPARE(drawn(), none.substr(5));
    }

    void everyKindOfItemHasAMiddle() {
        const Structure made = fourAtoms().attach();
        TAVIK::Compound* bond =
            TAVIK::DataMaker::makeBond(made.bonds, made.atoms[0], made.atoms[1]);
        TAVIK::Compound* set =
            TAVIK::DataMaker::makeSet(space(), "set", {made.atoms[0], made.atoms[2]});
        TAVIK::Compound* line = TAVIK::DataMaker::makePolyLine(space(), "line",
                                                               {TAVIK::Vertex(0, 0, 4, true),
                                                                TAVIK::Vertex(9, 9, 9, false),
                                                                TAVIK::Vertex(2, 0, 0, true)});
        TAVIK::Compound* empty = TAVIK::DataMaker::makeCore(space(), "empty", "Composite");
        show();
        const auto centreAfter = [&](TAVIK::Compound* item) {
            TAVIK::Focus::set(item, nullptr, true);
            return canvas().camera().centre;
        };
        QCOMPARE(centreAfter(made.entry), (view::Point{0, 0, 0}));
        QCOMPARE(centreAfter(bond), (view::Point{5, 0, 0}));
        QCOMPARE(centreAfter(set), (view::Point{0, 5, 0}));
        QCOMPARE(centreAfter(line), (view::Point{1, 0, 2}));
        // Where there is nothing to look at, the view stays.
        QCOMPARE(centreAfter(empty), (view::Point{1, 0, 2}));
        QCOMPARE(centreAfter(nullptr), (view::Point{1, 0, 2}));
        settle();
    }

    void anObserverMayDestroyWhatWasClicked() {
        const Structure made = fourAtoms().attach();
        show();
        const Destroyer destroyer;
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, placeOf(made.atoms[2]));
        QVERIFY(!TAVIK::Focus::item());
        settle();
        QCOMPARE(canvas().order().snapshot.contents->atomCount(), std::size_t(4));
    }
};

REGISTER_TEST(FocusInViewTest)
#include "FocusInViewTest.moc"
