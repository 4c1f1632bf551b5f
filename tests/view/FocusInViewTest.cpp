// The focus that the view shares with other windows.
#include "Focus.h"
#include "Geometry.h"
#include "ViewTestCase.h"

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
