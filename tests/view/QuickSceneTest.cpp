// What is drawn of large scenes while they move: an even part, of bounded size.
#include "scene/QuickScene.h"
#include "scene/Drawing.h"

#include "TestSupport.h"

#include <algorithm>
#include <cmath>

using view::Contents;
using view::Marks;
using view::Scene;
using view::Style;

namespace {

constexpr view::Colour black = 0xff000000;
constexpr view::Colour grey = 0xff909090;

/// Everything shown, in grey.
Marks marksOf(const Contents& contents) {
    Marks marks;
    marks.colours.assign(contents.itemCount(), grey);
    marks.shown.assign(contents.itemCount(), 1);
    marks.bonds.assign(contents.bonds.size(), 1);
    return marks;
}

/// Alpha carbons 3.8 Å apart along x, one a residue, each linked to the one before.
Contents trace(std::uint32_t count) {
    Contents contents;
    contents.entries.push_back({0});
    for (std::uint32_t i = 0; i != count; ++i) {
        contents.positions.push_back({3.8F * float(i), 0, 0});
        contents.atomicNumbers.push_back(6);
        contents.roles.push_back(view::Role::CA);
        contents.residues.push_back(
            {i, 0, view::ResidueKind::AminoAcid, true, false, true, i != 0});
    }
    return contents;
}

view::Styles stylesOf(const Contents& contents, Style style, bool isRibbon) {
    view::Styles styles;
    styles.atoms.assign(contents.atomCount(), style);
    styles.ribbon.assign(contents.residues.size(), isRibbon);
    return styles;
}

float rightmost(const Scene& scene) {
    float x = 0;
    for (const view::Point& point : scene.points)
        x = std::max(x, point[0]);
    return x;
}

/// A flat net of count x count squares with sides of 0.1 Å.
std::shared_ptr<view::Mesh> net(std::uint32_t count) {
    auto mesh = std::make_shared<view::Mesh>();
    for (std::uint32_t row = 0; row <= count; ++row)
        for (std::uint32_t column = 0; column <= count; ++column)
            mesh->vertices.push_back({0.1F * float(column), 0.1F * float(row), 0});
    mesh->normals.assign(mesh->vertices.size(), {0, 0, 1});
    mesh->colours.assign(1, grey);
    mesh->ids.assign(1, view::idOf(0));
    for (std::uint32_t row = 0; row != count; ++row)
        for (std::uint32_t column = 0; column != count; ++column) {
            const std::uint32_t corner = row * (count + 1) + column;
            mesh->triangles.push_back({corner, corner + 1, corner + count + 1});
            mesh->triangles.push_back({corner + 1, corner + count + 2, corner + count + 1});
        }
    return mesh;
}

Contents netContents(std::uint32_t count) {
    Contents contents;
    view::Shape shape;
    shape.mesh = net(count);
    contents.shapes.push_back(shape);
    return contents;
}

} // namespace

class QuickSceneTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    // So that few need to be made legible. One colour of all vertices stays as it is.
    void dotsOfAMeshHaveFewerColoursThanItsVertices() {
        Contents contents;
        auto mesh = net(1);
        mesh->colours = {0xffa1a2a3, 0xffa7a6a5, 0xffb9bbbf, 0xffb8b8b8};
        view::Shape shape;
        shape.mesh = mesh;
        contents.shapes.push_back(shape);
        const auto colours = [&] {
            return view::makeQuickScene(contents, marksOf(contents), {}, black).colours;
        };
        QCOMPARE(colours(),
                 (std::vector<view::Colour>{0xffa0a0a0, 0xffa0a0a0, 0xffb8b8b8, 0xffb8b8b8}));
        mesh->colours = {0xffa1a2a3};
        QCOMPARE(colours(), std::vector<view::Colour>(4, 0xffa1a2a3));
    }

    void ofTooManyAtomsAnEvenPartIsDots() {
        const Contents contents = trace(1'000'000);
        const Scene scene = view::makeQuickScene(contents, marksOf(contents),
                                                 stylesOf(contents, Style::Sphere, false), black);
        QCOMPARE(scene.dots.size(), std::size_t(166'667));
        QVERIFY(scene.dots.size() <= view::dotsWhileMoving);
        QCOMPARE(scene.ids[scene.dots[1]], view::idOf(6));
        QCOMPARE(rightmost(scene), contents.positions.back()[0]);
    }

    void ofALongRibbonEverySecondOrThirdResidueIsPassed() {
        const Contents few = trace(1000);
        const Scene whole =
            view::makeQuickScene(few, marksOf(few), stylesOf(few, Style::None, true), black);
        QCOMPARE(whole.lines.size(), std::size_t(999));
        Contents many = trace(500'001);
        // A gap between two residues, where no line may be.
        many.residues[250'000].isLinkedToPrevious = false;
        const Scene part =
            view::makeQuickScene(many, marksOf(many), stylesOf(many, Style::None, true), black);
        QVERIFY(part.lines.size() <= view::linesWhileMoving);
        QVERIFY(part.lines.size() > view::linesWhileMoving / 2);
        QCOMPARE(rightmost(part), many.positions.back()[0]);
        const float gap = (many.positions[249'999][0] + many.positions[250'000][0]) / 2;
        for (const view::Segment& line : part.lines) {
            const float from = part.points[line.from][0];
            const float to = part.points[line.to][0];
            QVERIFY(to - from < 3 * 3.8F + 1);
            QVERIFY(!(from < gap && to > gap));
        }
    }

    void ofTooManyLinesAnEvenPartIsDrawn() {
        Contents contents;
        view::Shape shape;
        for (std::uint32_t i = 0; i <= 1'000'000; ++i)
            shape.points.push_back({float(i), 0, 0});
        for (std::uint32_t i = 0; i != 1'000'000; ++i)
            shape.segments.push_back({i, i + 1});
        contents.shapes.push_back(shape);
        const Scene scene = view::makeQuickScene(contents, marksOf(contents), {}, black);
        QVERIFY(scene.lines.size() <= view::linesWhileMoving);
        QVERIFY(scene.lines.size() > view::linesWhileMoving / 2);
        QVERIFY(rightmost(scene) > 999'990);
        QCOMPARE(scene.points.size(), 2 * scene.lines.size());
    }

    // The whole scene is not even made: that takes longer than a quick picture may.
    void theFirstQuickPictureOfALargeSurfaceIsCoarse() {
        for (const std::uint32_t count : {100U, 400U}) {
            view::Order order;
            const Contents contents = netContents(count);
            order.snapshot.marks = std::make_shared<const Marks>(marksOf(contents));
            order.snapshot.selection = std::make_shared<view::SelectionMarks>(1);
            order.snapshot.contents = std::make_shared<const Contents>(contents);
            order.camera.fit(contents.shapes[0].mesh->vertices, 1, 0);
            order.width = order.height = 200;
            order.isMoving = true;
            view::Drawing drawing(1);
            const auto moving = drawing.draw(order);
            // 20,000 triangles are drawn as they are, 320,000 as dots.
            QCOMPARE(moving->image.width(), count == 100 ? 200 : 100);
            QCOMPARE(moving->picture->ids[moving->picture->ids.size() / 2 +
                                          std::size_t(moving->image.width()) / 2],
                     view::idOf(0));
            order.isMoving = false;
            QCOMPARE(drawing.draw(order)->image.width(), 200);
        }
    }
};

REGISTER_TEST(QuickSceneTest)
#include "QuickSceneTest.moc"
