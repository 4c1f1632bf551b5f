// What the mouse and the keys do to the picture.
#include "ViewTestCase.h"

using namespace view_tools;

namespace {

bool isNear(double a, double b, double bound = 1e-4) {
    return std::abs(a - b) <= bound;
}
bool areNear(const view::Point& a, const view::Point& b) {
    return isNear(a[0], b[0]) && isNear(a[1], b[1]) && isNear(a[2], b[2]);
}

} // namespace

class CanvasTest : public ViewTestCase {
    Q_OBJECT

    /// Half a turn goes over the smaller side.
    int halfTurn() { return std::min(canvas().width(), canvas().height()); }

private slots:
    void everythingIsInSightAtFirst() {
        const Structure made = fourAtoms().attach();
        show();
        for (const TAVIK::Compound* atom : made.atoms)
            QVERIFY(canvas().rect().contains(placeOf(atom)));
        QVERIFY(!canvas().isMovedByUser());
        // What is added later is fitted, too.
        Structure far("2far");
        far.add("UNL 1", {{"A", "C", {100, 100, 100}}});
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            far.attach();
        }
        settle();
        QVERIFY(canvas().rect().contains(placeOf(far.atoms[0])));
        QVERIFY(canvas().rect().contains(placeOf(made.atoms[0])));
    }

    void whatTheUserMovedStaysWhenItemsAreAdded() {
        fourAtoms().attach();
        show();
        canvas().zoom(2);
        const double height = canvas().camera().height;
        Structure far("2far");
        far.add("UNL 1", {{"A", "C", {100, 100, 100}}});
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            far.attach();
        }
        settle();
        QCOMPARE(canvas().camera().height, height);
    }

    // The axes of the screen turn against the scene.
    void aLeftDragToTheRightTurnsWhatIsInFrontToTheRight() {
        fourAtoms().attach();
        show();
        canvas().setFixedSize(300, 200);
        settle();
        const QPoint from(20, 20);
        drag(Qt::LeftButton, from, from + QPoint(halfTurn() / 2, 0));
        const view::Camera& camera = canvas().camera();
        // What was in front is on the right now, and what was on the right is behind.
        QVERIFY(areNear(camera.axes[0], {0, 0, 1}));
        QVERIFY(areNear(camera.axes[1], {0, 1, 0}));
        QVERIFY(areNear(camera.axes[2], {-1, 0, 0}));
    }

    void aLeftDragUpwardsTurnsWhatIsInFrontUp() {
        fourAtoms().attach();
        show();
        canvas().setFixedSize(300, 200);
        settle();
        const QPoint from(20, canvas().height() - 10);
        drag(Qt::LeftButton, from, from - QPoint(0, halfTurn() / 2));
        const view::Camera& camera = canvas().camera();
        QVERIFY(areNear(camera.axes[0], {1, 0, 0}));
        QVERIFY(areNear(camera.axes[1], {0, 0, 1}));
        QVERIFY(areNear(camera.axes[2], {0, -1, 0}));
    }

    void theMiddleButtonAndShiftWithTheLeftOneMove() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint by(40, -25);
        const std::pair<Qt::MouseButton, Qt::KeyboardModifiers> gestures[] = {
            {Qt::MiddleButton, Qt::NoModifier}, {Qt::LeftButton, Qt::ShiftModifier}};
        for (const auto& [button, modifiers] : gestures) {
            const QPoint before = placeOf(made.atoms[0]);
            drag(button, {100, 100}, QPoint(100, 100) + by, modifiers);
            const QPoint moved = placeOf(made.atoms[0]) - before;
            QVERIFY((moved - by).manhattanLength() <= 2);
            QCOMPARE(canvas().camera().axes, view::Camera().axes);
        }
        QCOMPARE(selectedNames(), QString());
    }

    void theWheelZoomsAboutTheMiddle() {
        fourAtoms().attach();
        show();
        const view::Camera before = canvas().camera();
        const QPointF at(10, 10);
        for (const int steps : {3, -3}) {
            QWheelEvent wheel(at, canvas().mapToGlobal(at), {}, {0, 120 * steps}, Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(&canvas(), &wheel);
            if (steps > 0)
                QVERIFY(isNear(canvas().camera().height * std::pow(1.15, 3), before.height));
        }
        settle();
        QVERIFY(isNear(canvas().camera().height, before.height));
        QCOMPARE(canvas().camera().centre, before.centre);
    }

    void theWheelGivesTheViewTheKeyboard() {
        QVERIFY((canvas().focusPolicy() & Qt::WheelFocus) == Qt::WheelFocus);
        QCOMPARE(m_view->focusProxy(), &canvas());
    }

    void aWheelToTheSideMovesNothing() {
        fourAtoms().attach();
        show();
        const std::uint64_t number = canvas().order().number;
        QWheelEvent wheel({10, 10}, canvas().mapToGlobal(QPointF(10, 10)), {}, {120, 0},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&canvas(), &wheel);
        QVERIFY(!canvas().isMovedByUser());
        QCOMPARE(canvas().order().number, number);
    }

    void zoomingEndsBeforeTheNumbersDo() {
        fourAtoms().attach();
        show();
        for (const double factor : {1e9, 1e-30}) {
            for (int i = 0; i != 50; ++i)
                canvas().zoom(factor);
            QVERIFY(std::isfinite(canvas().camera().height) && canvas().camera().height > 0.1);
            settle();
        }
    }

    void aRightDragDownwardsCutsFromTheFront() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint place = placeOf(made.atoms[4]); // 10 Å in front of the others
        QCOMPARE(canvas().idAt(place), view::idOf(4));
        const double pixel = canvas().camera().height / canvas().height();
        drag(Qt::RightButton, {100, 20}, {100, 120});
        const double front = canvas().camera().front;
        QVERIFY(std::isfinite(front));
        QVERIFY(std::isinf(canvas().camera().back));
        drag(Qt::RightButton, {100, 20}, {100, 30});
        QVERIFY(isNear(front - canvas().camera().front, 10 * pixel, 1e-6));
        // Far enough for the one in front, and for none of the others.
        while (canvas().camera().front > 5)
            drag(Qt::RightButton, {100, 20}, {100, 30});
        QCOMPARE(canvas().idAt(place), view::noId);
        QCOMPARE(canvas().idAt(placeOf(made.atoms[0])), view::idOf(0));
        // And back until nothing is cut.
        drag(Qt::RightButton, {100, 250}, {100, 10});
        drag(Qt::RightButton, {100, 250}, {100, 10});
        QVERIFY(std::isinf(canvas().camera().front));
        QCOMPARE(canvas().idAt(place), view::idOf(4));
    }

    void aRightDragToTheLeftCutsFromTheBackAndNeverBeyondTheFront() {
        fourAtoms().attach();
        show();
        for (int i = 0; i != 5; ++i)
            drag(Qt::RightButton, {380, 100}, {10, 100});
        const view::Camera& camera = canvas().camera();
        QVERIFY(!std::isinf(camera.back) || camera.back < 0);
        drag(Qt::RightButton, {100, 20}, {100, 290});
        QVERIFY(camera.front > camera.back);
        QTest::keyClick(m_view.get(), Qt::Key_Home);
        settle();
        QVERIFY(std::isinf(camera.front) && std::isinf(camera.back));
    }

    void aRightClickOpensTheMenu() {
        fourAtoms().attach();
        show();
        QTest::mouseClick(&canvas(), Qt::RightButton, {}, {50, 50});
        QWidget* const menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        menu->close();
    }

    void keysTurnZoomAndResetTheView() {
        fourAtoms().attach();
        show();
        const view::Camera before = canvas().camera();
        QTest::keyClick(&canvas(), Qt::Key_Right);
        QVERIFY(isNear(canvas().camera().axes[0][2], std::sin(3.14159265358979 / 18)));
        QTest::keyClick(&canvas(), Qt::Key_Left);
        QTest::keyClick(&canvas(), Qt::Key_Up);
        QTest::keyClick(&canvas(), Qt::Key_Down);
        QVERIFY(areNear(canvas().camera().axes[0], before.axes[0]));
        QTest::keyClick(&canvas(), Qt::Key_Plus);
        QVERIFY(canvas().camera().height < before.height);
        QTest::keyClick(&canvas(), Qt::Key_Home);
        settle();
        QCOMPARE(canvas().camera().height, before.height);
        QCOMPARE(canvas().camera().axes, before.axes);
    }

    void f11FillsTheScreenAndEscapeEndsIt() {
        show();
        QTest::keyClick(&canvas(), Qt::Key_F11);
        QVERIFY(m_view->isFullScreen());
        QTest::keyClick(&canvas(), Qt::Key_Escape);
        QVERIFY(!m_view->isFullScreen());
        QTest::keyClick(&canvas(), Qt::Key_F11);
        QTest::keyClick(&canvas(), Qt::Key_F11);
        QVERIFY(!m_view->isFullScreen());
        settle();
    }

    void everyRepresentationHasAKey() {
        fourAtoms().attach();
        show();
        for (int i = 0; i <= 6; ++i) {
            QTest::keyClick(&canvas(), Qt::Key(Qt::Key_0 + i));
            QCOMPARE(int(canvas().order().look.representation), i);
            settle();
        }
        QTest::keyClick(&canvas(), Qt::Key_W);
        QVERIFY(canvas().order().look.showWaters);
    }

    void theBackgroundIsLightOrDark() {
        show();
        m_view->setLightBackground(true);
        settle();
        QCOMPARE(canvas().drawn().image.pixel(1, 1), 0xffffffffU);
        QTest::keyClick(&canvas(), Qt::Key_L);
        settle();
        QVERIFY(qGray(canvas().drawn().image.pixel(1, 1)) < 64);
    }

    void theCentreOfWhatIsSelectedGoesToTheMiddle() {
        const Structure made = fourAtoms().attach();
        show();
        made.atoms[1]->SetSelected(true);
        made.atoms[3]->SetSelected(true);
        m_view->commUpdate();
        QTest::keyClick(&canvas(), Qt::Key_C);
        settle();
        QVERIFY(areNear(canvas().camera().centre, {10, 0, -5}));
    }

    void aQuickPictureIsFollowedByAWholeOne() {
        fourAtoms().attach();
        show();
        bool wasQuick = false;
        connect(&canvas(), &view::Canvas::shown, this,
                [&] { wasQuick = wasQuick || !canvas().drawn().isWhole; });
        canvas().turn(0.1, 0);
        settle();
        QVERIFY(wasQuick);
        QVERIFY(canvas().drawn().isWhole);
    }

    void theWindowMayBeAsLargeAsFourScreens() {
        const Structure made = fourAtoms().attach();
        canvas().setFixedSize(7680, 4320);
        show();
        QCOMPARE(canvas().drawn().image.size(), canvas().size());
        for (std::size_t i = 0; i != 3; ++i)
            QCOMPARE(canvas().idAt(placeOf(made.atoms[i])), view::idOf(i));
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, placeOf(made.atoms[1]));
        settle();
        QCOMPARE(selectedNames(), QString("B"));
    }

    void theCanvasMayHaveOnePixelOrNone() {
        fourAtoms().attach();
        show();
        view::Canvas small(nullptr);
        small.setSnapshot(canvas().order().snapshot);
        small.show();
        for (const QSize size : {QSize(1, 1), QSize(1, 200), QSize(200, 1), QSize(0, 0)}) {
            small.setGeometry(QRect({0, 0}, size));
            const view::Snapshot& snapshot = canvas().order().snapshot;
            small.fit(
                view::Canvas::fitOf(view::drawnPoints(*snapshot.contents, *snapshot.marks, {})));
            QTest::mouseClick(&small, Qt::LeftButton, {}, {0, 0});
            QTest::mousePress(&small, Qt::LeftButton, {}, {0, 0});
            QTest::mouseMove(&small, {30, 30});
            QTest::mouseRelease(&small, Qt::LeftButton, {}, {30, 30});
            small.zoom(1.1);
            small.grab();
            QTest::qWait(0);
        }
        small.resize(100, 100);
        QTRY_VERIFY(small.isUpToDate());
    }

    void theNameUnderThePointerIsThatOfTheItemThatIsThere() {
        const Structure first = fourAtoms().attach();
        show();
        const QPoint place = placeOf(first.atoms[0]);
        hover(place);
        QCOMPARE(m_view->line(), "/1abc/A/Groups/UNL 1/A");
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(first.entry);
        }
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            Structure other("2xyz");
            other.add("UNL 1", {{"X", "C", {0, 0, 0}},
                                {"B", "C", {10, 0, 0}},
                                {"C", "C", {0, 10, 0}},
                                {"D", "O", {10, 0, -10}},
                                {"E", "C", {-10, -10, 10}}});
            other.attach();
        }
        settle();
        QCOMPARE(m_view->line(), "/2xyz/A/Groups/UNL 1/X");
    }
};

REGISTER_TEST(CanvasTest)
#include "CanvasTest.moc"
