// Surfaces, poly-lines and boxes of grids in the window: what is seen of them, and what the mouse
// does to them.
#include "Geometry.h"
#include "ViewTestCase.h"

#include <QColor>
#include <QTemporaryDir>

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
        TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
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

    // Chosen by keys, for what is selected or for all.
    void aStyleIsThatOfTheSelectedSurfacesOrOfAll() {
        TAVIK::Compound* const left = surface(square(-8, 0));
        surface(square(8, 0));
        m_view->setDepthCue(false);
        m_view->setLightBackground(false);
        show();
        const QColor opaque = colourAt({8, 1, 0});
        QCOMPARE(colourAt({-8, 1, 0}), opaque);

        left->SetSelected(true);
        m_view->commUpdate();
        QTest::keyClick(&canvas(), Qt::Key_T);
        QCOMPARE(m_view->line(), QString("See-through: selected surfaces: 1 of 2"));
        settle();
        const QColor seeThrough = colourAt({-8, 1, 0});
        QVERIFY(seeThrough.green() < opaque.green() - 20);
        QCOMPARE(colourAt({8, 1, 0}), opaque);
        // It is picked where nothing else is.
        hover(placeOf(std::array<float, 3>{-8, 1, 0}));
        QCOMPARE(m_view->line(), QString("/surface"));

        // Without a selection it is that of all, and of new ones.
        clickOnNothing();
        QTest::keyClick(&canvas(), Qt::Key_T);
        QCOMPARE(m_view->line(), QString("See-through: all surfaces, and new ones"));
        settle();
        QCOMPARE(colourAt({8, 1, 0}), seeThrough);
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            surface(square(0, 11));
        }
        m_view->commAdd();
        settle();
        QCOMPARE(colourAt({1, 12, 0}), seeThrough);

        // Lines along the edges: along the diagonal, and not beside it.
        QTest::keyClick(&canvas(), Qt::Key_M);
        settle();
        QCOMPARE(canvas().idAt(placeOf(std::array<float, 3>{9, -2, 0})), view::noId);
        QVERIFY(canvas().idAt(placeOf(std::array<float, 3>{8, 0, 0})) != view::noId);
        QTest::keyClick(&canvas(), Qt::Key_O);
        settle();
        QCOMPARE(colourAt({8, 1, 0}), opaque);
        QCOMPARE(colourAt({-8, 1, 0}), opaque);
        QCOMPARE(takeHostLog().size(), 4);
    }

    void aStyleMayBeChosenBeforeThereIsASurface() {
        show();
        QTest::keyClick(&canvas(), Qt::Key_M);
        QCOMPARE(m_view->line(), QString("Mesh lines: surfaces, once there are any"));
        surface(square(0, 0));
        m_view->commAdd();
        settle();
        QVERIFY(canvas().idAt(placeOf(std::array<float, 3>{0, 0, 0})) != view::noId);
        QCOMPARE(canvas().idAt(placeOf(std::array<float, 3>{2, -3, 0})), view::noId);
        QCOMPARE(takeHostLog().size(), 1);
    }

    void whatIsBehindASeeThroughSurfaceIsClicked() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {0, 0, -5}}});
        made.attach();
        TAVIK::Compound* const item = surface(square(0, 0));
        show();
        QTest::keyClick(&canvas(), Qt::Key_T);
        settle();
        click(made.atoms[0]);
        QVERIFY(made.atoms[0]->IsSelected() && !item->IsSelected());
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, placeOf(std::array<float, 3>{4, 4, 0}));
        settle();
        QVERIFY(!made.atoms[0]->IsSelected() && item->IsSelected());
        QCOMPARE(takeHostLog().size(), 1);
    }

    void aSurfaceShowsItsOwnColoursUntilItGetsAnother() {
        TAVIK::SurfaceMesh mesh = square(0, 0);
        mesh.colors.assign(4, 0xffff0000U);
        mesh.scale = {"Potential", -1, 1, {0xffff0000U, 0xff0000ffU}};
        TAVIK::Compound* const item = TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
        show();
        const auto isRed = [this] {
            const QColor colour = colourAt({1, 0, 0});
            return colour.red() > 2 * colour.blue();
        };
        QVERIFY(isRed());
        QCOMPARE(canvas().scales().size(), std::size_t(1));
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            item->SetColor(Color(0xff0000ffU));
        }
        settle();
        QVERIFY(!isRed());
        QVERIFY(canvas().scales().empty());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            item->RestoreColor();
        }
        settle();
        QVERIFY(isRed());
        QCOMPARE(canvas().scales().size(), std::size_t(1));
    }

    // The picture of the widget, and the one that is saved.
    void theKeyIsOnTheScreenAndInSavedPictures() {
        TAVIK::SurfaceMesh mesh = square(0, 0);
        mesh.colors.assign(4, 0xffff0000U);
        mesh.scale = {"Potential", -1, 1, {0xff00ff00U, 0xff0000ffU}};
        TAVIK::Compound* const item = TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
        m_view->resize(600, 400);
        show();
        const auto greens = [](const QImage& image) {
            int count = 0;
            for (int y = 0; y < image.height() / 3; ++y)
                for (int x = image.width() * 2 / 3; x < image.width(); ++x)
                    count +=
                        qGreen(image.pixel(x, y)) > 200 && qRed(image.pixel(x, y)) < 20 ? 1 : 0;
            return count;
        };
        const QTemporaryDir folder;
        const QString path = folder.filePath("picture.png");
        const auto saved = [&] {
            const std::string problem = m_view->savePicture(path, {1200, 800});
            return problem.empty() ? QImage(path) : QImage();
        };
        QVERIFY(greens(canvas().grab().toImage()) > 100);
        QVERIFY(greens(saved()) > 400);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            item->SetVisible(false);
        }
        settle();
        QCOMPARE(greens(canvas().grab().toImage()), 0);
        QCOMPARE(greens(saved()), 0);
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
