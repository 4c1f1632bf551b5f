// The ring around the item in focus, and how close the view comes to it.
#include "window/FocusMark.h"
#include "Ancestry.h"
#include "AtomDetails.h"
#include "ChangeData.h"
#include "Focus.h"
#include "Space.h"
#include "ViewTestCase.h"
#include "files/Files.h"

#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

using namespace view_tools;

class FocusMarkTest : public ViewTestCase {
    Q_OBJECT

    QImage seen() {
        settle();
        return canvas().grab().toImage();
    }
    view::FocusRing ring() {
        return view::ringOf(*canvas().mark(), canvas().camera(),
                            double(canvas().width()) / canvas().height(), canvas().rect());
    }
    /// Whether two pictures differ all along the ring, and nowhere else.
    void compareRing(const QImage& with, const QImage& without) {
        const view::FocusRing place = ring();
        QCOMPARE(place.radii.width(), place.radii.height());
        QCOMPARE(with.size(), without.size());
        for (int step = 0; step != 64; ++step) {
            const double angle = step * 3.14159265358979323846 / 32;
            const QPointF at =
                place.centre + place.radii.width() * QPointF(std::cos(angle), std::sin(angle));
            const QPoint pixel(int(std::floor(at.x())), int(std::floor(at.y())));
            if (with.rect().contains(pixel))
                QVERIFY2(with.pixel(pixel) != without.pixel(pixel),
                         qPrintable(QString::number(step)));
        }
        for (int y = 0; y != with.height(); ++y)
            for (int x = 0; x != with.width(); ++x) {
                const QPointF from = QPointF(x + 0.5, y + 0.5) - place.centre;
                const double off = std::hypot(from.x(), from.y()) - place.radii.width();
                if (std::abs(off) > 4)
                    QCOMPARE(with.pixel(x, y), without.pixel(x, y));
            }
    }

private slots:
    void cleanup() override {
        TAVIK::Focus::set(nullptr, nullptr);
        ViewTestCase::cleanup();
    }

    // Seen from the x axis, with y to the right and z up: 4 pixels an ångström.
    void theRingIsWhereTheBallIsSeen() {
        view::Camera camera;
        camera.axes = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
        camera.centre = {1, 2, 3};
        camera.height = 50;
        const view::FocusRing ring =
            view::ringOf({{100, 12, -2}, 5}, camera, 1.5, QRect(0, 0, 300, 200));
        QCOMPARE(ring.centre, QPointF(150 + 40, 100 + 20));
        QCOMPARE(ring.radii, QSizeF(28, 28));
        // A picture of another shape is stretched over the area, and the ring with it.
        const view::FocusRing wide =
            view::ringOf({{1, 12, 3}, 5}, camera, 0.75, QRect(0, 0, 300, 200));
        QCOMPARE(wide.centre, QPointF(150 + 80, 100));
        QCOMPARE(wide.radii, QSizeF(56, 28));
        camera.height = 5000;
        QCOMPARE(view::ringOf({{1, 2, 3}, 5}, camera, 1.5, QRect(0, 0, 300, 200)).radii,
                 QSizeF(9, 9));
    }

    void whatIsInFocusHasARingThroughWhatIsInFront() {
        const Structure made = fourAtoms().attach();
        show();
        for (const bool isLight : {false, true}) {
            m_view->setLightBackground(isLight);
            const QImage before = seen();
            // "D" is behind "B".
            QCOMPARE(canvas().idAt(placeOf(made.atoms[3])), view::idOf(1));
            TAVIK::Focus::set(made.atoms[3], nullptr);
            compareRing(seen(), before);
            TAVIK::Focus::set(nullptr, nullptr);
            QCOMPARE(seen(), before);
        }
    }

    void theRingStaysUntilTheNextClick() {
        const Structure made = fourAtoms().attach();
        show();
        TAVIK::Focus::set(made.atoms[1], nullptr, true);
        drag(Qt::LeftButton, {200, 150}, {150, 170});
        drag(Qt::MiddleButton, {200, 150}, {230, 120});
        QVERIFY(canvas().mark());
        const QImage with = seen();
        const auto mark = canvas().mark();
        canvas().setMark({});
        const QImage without = seen();
        canvas().setMark(mark);
        compareRing(with, without);
        clickOnNothing();
        QVERIFY(!canvas().mark());
        TAVIK::Focus::set(made.atoms[2], nullptr);
        QVERIFY(canvas().mark());
        click(made.atoms[1]);
        QVERIFY(!canvas().mark());
    }

    void noFileHasTheRing() {
        const Structure made = fourAtoms().attach();
        show();
        const QTemporaryDir folder;
        const QString without = folder.filePath("without.png");
        const QString with = folder.filePath("with.png");
        QCOMPARE(m_view->savePicture(without, {200, 150}), std::string());
        TAVIK::Focus::set(made.atoms[3], nullptr);
        QVERIFY(canvas().mark());
        QCOMPARE(m_view->savePicture(with, {200, 150}), std::string());
        QCOMPARE(QImage(with), QImage(without));
    }

    void theRingFollowsTheData() {
        const Structure made = fourAtoms().attach();
        show();
        TAVIK::Focus::set(made.atoms[1], nullptr);
        QCOMPARE(canvas().mark()->centre, (view::Point{10, 0, 0}));
        changeData(DataPoint<TAVIK::Space>(nullptr, TAVIK::Space::instance()),
                   [&](const DataPointBase&) {
                       TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(made.atoms[1]),
                                              TAVIK::Vertex(3, 4, 5, true));
                   });
        settle();
        QCOMPARE(canvas().mark()->centre, (view::Point{3, 4, 5}));
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(made.atoms[1]);
        }
        settle();
        QVERIFY(!canvas().mark());
    }

    // An entry is no place that one would have to look for.
    void anEntryHasNoRingAndAResidueHasOneAroundItsAtoms() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        show();
        TAVIK::Focus::set(*space()->ChildBegin(), nullptr, true);
        QVERIFY(!canvas().mark());
        Items residues;
        TAVIK::GetResidues(space(), residues, true);
        TAVIK::Compound* const residue = residues.at(110);
        QCOMPARE(residue->GetName(), std::string("ARG 111"));
        TAVIK::Focus::set(residue, nullptr, true);
        settle();
        Items atoms;
        TAVIK::GetAtoms(residue, atoms, true);
        const view::FocusRing place = ring();
        for (const TAVIK::Compound* atom : atoms) {
            const QPointF from = placeOf(atom) - place.centre;
            QVERIFY(std::hypot(from.x(), from.y()) < place.radii.width());
        }
        // And all of it, with room on each side, is in the window.
        QVERIFY(place.radii.height() < canvas().height() * 0.45);
        QVERIFY(place.radii.height() > canvas().height() * 0.15);
    }

    void theViewComesCloseAndStaysCloseAndSeesTheWhole() {
        const Structure made = fourAtoms().attach();
        show();
        canvas().zoom(0.1);
        TAVIK::Focus::set(made.atoms[1], nullptr, true);
        QCOMPARE(canvas().camera().height, 16.0);
        canvas().zoom(4);
        TAVIK::Focus::set(made.atoms[2], nullptr, true);
        QCOMPARE(canvas().camera().height, 4.0);
        QCOMPARE(canvas().camera().centre, (view::Point{0, 10, 0}));
        // Without being asked to, it does not move.
        TAVIK::Focus::set(made.atoms[1], nullptr, false);
        QCOMPARE(canvas().camera().height, 4.0);
        QCOMPARE(canvas().camera().centre, (view::Point{0, 10, 0}));
        // All of the five atoms, the farthest at the corner of a box of 20 x 20 x 20 Å.
        TAVIK::Focus::set(TAVIK::GetParent(made.atoms[0]), nullptr, true);
        QCOMPARE(canvas().camera().centre, (view::Point{0, 0, 0}));
        QVERIFY(std::abs(canvas().camera().height - 2 * (std::sqrt(300.0) + 2)) < 1e-4);
        // In a narrow window the width counts.
        m_view->resize(150, 300);
        settle();
        canvas().zoom(0.01);
        TAVIK::Focus::set(made.atoms[1], nullptr, true);
        const double width = canvas().camera().height * canvas().width() / canvas().height();
        QVERIFY(std::abs(width - 16.0) < 1e-9);
    }
};

REGISTER_TEST(FocusMarkTest)
#include "FocusMarkTest.moc"
