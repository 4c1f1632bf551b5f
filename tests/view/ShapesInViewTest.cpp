// Surfaces, poly-lines and boxes of grids in the window: what is seen of them, and what the mouse
// does to them.
#include "Geometry.h"
#include "ViewTestCase.h"

#include <QColor>

using namespace view_tools;

namespace {

constexpr float side = 10; // Å

/// Four corners around a centre in the plane of the screen, with a normal to the viewer or, tilted,
/// 60 degrees off.
TAVIK::SurfaceMesh square(float x, float y, bool isTilted = false) {
    TAVIK::SurfaceMesh mesh;
    mesh.vertices = {{x - side / 2, y - side / 2, 0},
                     {x + side / 2, y - side / 2, 0},
                     {x + side / 2, y + side / 2, 0},
                     {x - side / 2, y + side / 2, 0}};
    const std::array<float, 3> normal =
        isTilted ? std::array<float, 3>{0, -0.8660254F, 0.5F} : std::array<float, 3>{0, 0, 1};
    mesh.normals.assign(4, normal);
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
    return mesh;
}

TAVIK::Compound* surface(const TAVIK::SurfaceMesh& mesh, unsigned int colour = 0xff40a040U) {
    TAVIK::Compound* made = TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
    made->SetColor(Color(colour));
    return made;
}

TAVIK::Compound* line(float y) {
    TAVIK::Compound* made = TAVIK::DataMaker::makePolyLine(
        space(), "line", {TAVIK::Vertex(-8, y, 0, true), TAVIK::Vertex(8, y, 0, true)});
    made->SetColor(Color(0xff30c0f0U));
    return made;
}

/// A box of 12 x 8 x 4 Å around the origin.
TAVIK::Compound* box() {
    TAVIK::GridValues values;
    values.points = {7, 5, 3};
    values.origin = {-6, -4, -2};
    values.steps = {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}};
    values.values.assign(105, 1.0F);
    TAVIK::Compound* made = TAVIK::DataMaker::makeGrid(space(), "grid", values);
    made->SetColor(Color(0xfff0a030U));
    return made;
}

} // namespace

class ShapesInViewTest : public ViewTestCase {
    Q_OBJECT

    QColor colourAt(const std::array<float, 3>& at) {
        return QColor(canvas().drawn().image.pixel(placeOf(at)));
    }

    /// Clicks there, and returns how many pixels of the outline's colour there are then; before,
    /// there are none.
    int outlinedByClick(const std::array<float, 3>& at) {
        const QRgb colour = canvas().order().outline.value_or(0);
        if (count(colour) != 0)
            return -1;
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, placeOf(at));
        settle();
        return count(colour);
    }
    int count(QRgb colour) {
        const QImage& image = canvas().drawn().image;
        int pixels = 0;
        for (int y = 0; y != image.height(); ++y)
            for (int x = 0; x != image.width(); ++x)
                pixels += image.pixel(x, y) == colour ? 1 : 0;
        return pixels;
    }

private slots:
    void aSurfaceIsLitByItsNormals() {
        surface(square(-8, 0));
        surface(square(8, 0, true));
        m_view->setDepthCue(false);
        show();
        const QColor facing = colourAt({-8, 0, 0});
        const QColor tilted = colourAt({8, 0, 0});
        QVERIFY(facing.green() > facing.red() && tilted.green() > tilted.red());
        QVERIFY(facing.green() > tilted.green() + 30);
    }

    void aSurfaceHasItsOwnColoursOrThoseOfItsVertices() {
        TAVIK::SurfaceMesh mesh = square(8, 0);
        mesh.colors = {0xffff0000U, 0xff0000ffU, 0xff0000ffU, 0xffff0000U};
        surface(mesh);
        TAVIK::Compound* const plain = surface(square(-8, 0), 0xff0000ffU);
        show();
        QVERIFY(colourAt({-8, 0, 0}).blue() > 100);
        QVERIFY(colourAt({4, 0, 0}).red() > 2 * colourAt({4, 0, 0}).blue());
        QVERIFY(colourAt({12, 0, 0}).blue() > 2 * colourAt({12, 0, 0}).red());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            plain->SetColor(Color(0xffff0000U));
        }
        settle();
        QVERIFY(colourAt({-8, 0, 0}).red() > 2 * colourAt({-8, 0, 0}).blue());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            plain->SetVisible(false);
        }
        settle();
        QCOMPARE(canvas().idAt(placeOf(std::array<float, 3>{-8, 0, 0})), view::noId);
    }

    void linesAndBoxesHaveTheirColoursOnTheScreen() {
        line(8);
        box();
        m_view->setDepthCue(false);
        m_view->setLightBackground(false);
        show();
        QCOMPARE(colourAt({0, 8, 0}).rgb(), 0xff30c0f0U);
        QCOMPARE(colourAt({0, 4, 0}).rgb(), 0xfff0a030U);
        QCOMPARE(canvas().idAt(placeOf(std::array<float, 3>{0, 0, 0})), view::noId);
    }

    // A square of 10 Å has an outline of about 2 pixels along four sides.
    void aSelectedSurfaceHasAnOutline() {
        TAVIK::Compound* const item = surface(square(0, 0));
        show();
        const double pixels = side * canvas().height() / canvas().camera().height;
        const int outlined = outlinedByClick({0, 0, 0});
        QVERIFY(item->IsSelected());
        QVERIFY2(std::abs(outlined - 8 * pixels) < 0.2 * 8 * pixels,
                 qPrintable(QString::number(outlined)));
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, {2, 2});
        settle();
        QVERIFY(!item->IsSelected());
        QCOMPARE(count(*canvas().order().outline), 0);
    }

    // Lines are as thin as their outline, and so of its colour in all their length.
    void aSelectedLineHasAnOutline() {
        TAVIK::Compound* const item = line(0);
        show();
        const double length = 16 * canvas().height() / canvas().camera().height;
        const int outlined = outlinedByClick({0, 0, 0});
        QVERIFY(item->IsSelected());
        QVERIFY(outlined > length && outlined < 4 * length);
    }

    void aSelectedGridHasAnOutline() {
        TAVIK::Compound* const item = box();
        show();
        // Seen from the front: both faces are one rectangle.
        const double length = 40 * canvas().height() / canvas().camera().height;
        const int outlined = outlinedByClick({0, 4, 0});
        QVERIFY(item->IsSelected());
        QVERIFY(outlined > length && outlined < 4 * length);
    }

    void shiftAndCtrlWorkOnShapesAsOnAtoms() {
        TAVIK::Compound* const left = surface(square(-8, 0));
        TAVIK::Compound* const right = line(9);
        show();
        const QPoint onLeft = placeOf(std::array<float, 3>{-8, 0, 0});
        const QPoint onRight = placeOf(std::array<float, 3>{0, 9, 0});
        const auto click = [&](Qt::KeyboardModifiers modifiers, const QPoint& at) {
            QTest::mouseClick(&canvas(), Qt::LeftButton, modifiers, at);
            settle();
        };
        click({}, onLeft);
        click(Qt::ShiftModifier, onRight);
        QVERIFY(left->IsSelected() && right->IsSelected());
        click(Qt::ControlModifier, onLeft);
        QVERIFY(!left->IsSelected() && right->IsSelected());
        click({}, onLeft);
        QVERIFY(left->IsSelected() && !right->IsSelected());
    }

    void thePointerNamesAShape() {
        surface(square(0, 0));
        show();
        hover(placeOf(std::array<float, 3>{1, 1, 0}));
        QCOMPARE(m_view->line(), QString("/surface"));
    }

    void aDoubleClickOnASurfaceCentresThePlaceThatWasClicked() {
        surface(square(0, 0));
        show();
        const QPoint place = placeOf(std::array<float, 3>{3, -2, 0});
        const double pixel = canvas().camera().height / canvas().height();
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(&canvas(), Qt::LeftButton, {}, place);
        settle();
        const view::Point& centre = canvas().camera().centre;
        QVERIFY(std::abs(centre[0] - 3) <= pixel && std::abs(centre[1] + 2) <= pixel);
        QVERIFY(std::abs(centre[2]) < 0.1F);
    }

    void whatIsSelectedIsCentredWhateverItIs() {
        surface(square(-8, 0));
        TAVIK::Compound* const item = line(9);
        show();
        item->SetSelected(true);
        m_view->commUpdate();
        QTest::keyClick(&canvas(), Qt::Key_C);
        settle();
        QCOMPARE(canvas().camera().centre, (view::Point{0, 9, 0}));
    }

    // A quarter of a million triangles and more are dots while they move.
    void aLargeSurfaceMovesCoarselyAndRestsWhole() {
        TAVIK::SurfaceMesh mesh;
        constexpr std::uint32_t count = 400;
        for (std::uint32_t row = 0; row <= count; ++row)
            for (std::uint32_t column = 0; column <= count; ++column)
                mesh.vertices.push_back({0.1F * float(column), 0.1F * float(row), 0});
        mesh.normals.assign(mesh.vertices.size(), {0, 0, 1});
        for (std::uint32_t row = 0; row != count; ++row)
            for (std::uint32_t column = 0; column != count; ++column) {
                const std::uint32_t corner = row * (count + 1) + column;
                mesh.triangles.push_back({corner, corner + 1, corner + count + 1});
                mesh.triangles.push_back({corner + 1, corner + count + 2, corner + count + 1});
            }
        surface(mesh);
        show();
        QSize whileMoving;
        connect(&canvas(), &view::Canvas::shown, this, [&] {
            if (!canvas().drawn().isWhole)
                whileMoving = canvas().drawn().image.size();
        });
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            (*space()->ChildBegin())->SetColor(Color(0xff2060c0U));
        }
        m_view->bringUpToDate();
        canvas().turn(0.1, 0);
        settle();
        QCOMPARE(whileMoving.width(), (canvas().drawn().image.width() + 1) / 2);
    }
};

REGISTER_TEST(ShapesInViewTest)
#include "ShapesInViewTest.moc"
