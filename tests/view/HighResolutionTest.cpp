// The view on a screen with several pixels to a unit of the widget; run with QT_SCALE_FACTOR above
// 1.
#include "Focus.h"
#include "ViewTestCase.h"
#include "window/FocusMark.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <optional>

using namespace view_tools;

class HighResolutionTest : public ViewTestCase {
    Q_OBJECT

    double ratio() { return canvas().devicePixelRatioF(); }
    QSize pixels() {
        return {int(std::lround(canvas().width() * ratio())),
                int(std::lround(canvas().height() * ratio()))};
    }
    const QImage& image() { return canvas().drawn().image; }
    QRgb background() { return canvas().order().look.background; }
    /// How many pixels of a row or column of the picture, of one colour or of another one than the
    /// background's.
    int inColumn(int x, std::optional<QRgb> colour = {}) {
        int found = 0;
        for (int y = 0; y != image().height(); ++y)
            found += colour ? image().pixel(x, y) == *colour : image().pixel(x, y) != background();
        return found;
    }
    /// Turns to one representation, without what makes colours depend on the depth.
    void showAs(view::Representation representation) {
        m_view->setRepresentation(representation);
        m_view->setDepthCue(false);
        show();
    }

private slots:
    void initTestCase() {
        if (qApp->devicePixelRatio() <= 1)
            QFAIL("QT_SCALE_FACTOR=2 is missing in the environment");
    }

    void thePictureHasAPixelForEachOfTheScreen() {
        fourAtoms().attach();
        show();
        QCOMPARE(image().size(), pixels());
        QVERIFY(image().width() > canvas().width());
        const QImage seen = canvas().grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(seen.size(), pixels());
        QImage same = image();
        same.setDevicePixelRatio(seen.devicePixelRatio());
        QCOMPARE(seen, same);
    }

    void whatTheMouseMeetsIsWhatIsSeenThere() {
        const Structure made = fourAtoms().attach();
        show();
        for (const std::size_t i : {0, 1, 2, 4}) {
            const QPoint place = placeOf(made.atoms[i]);
            QCOMPARE(canvas().idAt(place), view::idOf(i));
            // Half of a unit of the widget, in Å, on each side, and the sphere's radius in front.
            const view::Point at = canvas().pointAt(place);
            const TAVIK::Vertex atom = made.atoms[i]->GetPosition();
            const double unit = canvas().camera().height / canvas().height();
            QVERIFY(std::abs(at[0] - atom[0]) < unit && std::abs(at[1] - atom[1]) < unit);
            QVERIFY(std::abs(at[2] - atom[2] - 1.7F) < 0.1F);
            hover(place);
            QCOMPARE(m_view->line(),
                     "/1abc/A/Groups/UNL 1/" + QString::fromStdString(made.atoms[i]->GetName()));
            click(made.atoms[i]);
            QCOMPARE(selectedNames(), QString::fromStdString(made.atoms[i]->GetName()));
        }
        // A carbon ends 1.7 Å from its middle, and is met up to 3 units of the widget further.
        const double end = 1.7 * canvas().height() / canvas().camera().height;
        const QPoint middle = placeOf(made.atoms[0]);
        QCOMPARE(canvas().idAt(middle + QPoint(int(end + 2), 0)), view::idOf(0));
        QCOMPARE(canvas().idAt(middle + QPoint(int(end + 5), 0)), view::noId);
        QCOMPARE(canvas().idAt(middle - QPoint(0, int(end + 2))), view::idOf(0));
        QCOMPARE(canvas().idAt(middle - QPoint(0, int(end + 5))), view::noId);
    }

    void aDragMovesThingsWithThePointer() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint before = placeOf(made.atoms[0]);
        drag(Qt::MiddleButton, {100, 100}, {140, 75});
        const QPoint moved = placeOf(made.atoms[0]) - before;
        QVERIFY((moved - QPoint(40, -25)).manhattanLength() <= 2);
        QCOMPARE(canvas().idAt(before + QPoint(40, -25)), view::idOf(0));
    }

    void linesAreTwoUnitsWide() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {-9, 0, 0}}, {"B", "C", {9, 0, 0}}, {"C", "C", {0, 9, 0}}});
        made.bond(0, 1);
        made.attach();
        showAs(view::Representation::Lines);
        // In the middle of the line; a pixel at each side may have a part of it.
        const int width = inColumn(image().width() / 4);
        QVERIFY2(width >= 2 * ratio() && width <= 2 * ratio() + 1,
                 qPrintable(QString::number(width)));
    }

    void dotsAreThreeUnitsWide() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {0, 0, 0}}});
        made.attach();
        showAs(view::Representation::Points);
        const int width = inColumn(image().width() / 2);
        QVERIFY2(width >= 3 * ratio() - 1 && width <= 3 * ratio() + 1,
                 qPrintable(QString::number(width)));
    }

    void theOutlineIsTwoUnitsWide() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {0, 0, 0}}});
        made.attach();
        showAs(view::Representation::Spheres);
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, canvas().rect().center());
        settle();
        QVERIFY(canvas().order().outline);
        // Above and below.
        QCOMPARE(inColumn(image().width() / 2, canvas().order().outline),
                 2 * int(std::lround(2 * ratio())));
    }

    void theRingIsAroundWhatIsInFocus() {
        const Structure made = fourAtoms().attach();
        show();
        const auto seen = [this] { return canvas().grab().toImage(); };
        const QImage without = seen();
        TAVIK::Focus::set(made.atoms[2], nullptr);
        const QImage with = seen();
        QCOMPARE(with.size(), pixels());
        const auto& mark = canvas().mark();
        QVERIFY(mark);
        const view::FocusRing ring =
            view::ringOf(*mark, canvas().camera(), double(canvas().width()) / canvas().height(),
                         canvas().rect());
        QRect changed;
        for (int y = 0; y != with.height(); ++y)
            for (int x = 0; x != with.width(); ++x)
                if (with.pixel(x, y) != without.pixel(x, y))
                    changed |= QRect(x, y, 1, 1);
        // The pen is 4 units wide.
        const QRectF expected(ring.centre.x() - ring.radii.width() - 2,
                              ring.centre.y() - ring.radii.height() - 2, 2 * ring.radii.width() + 4,
                              2 * ring.radii.height() + 4);
        const auto isNear = [this](double pixel, double place) {
            return std::abs(pixel - place * ratio()) <= 2 * ratio() + 1;
        };
        QVERIFY(isNear(changed.left(), expected.left()) && isNear(changed.top(), expected.top()));
        QVERIFY(isNear(changed.right() + 1, expected.right()));
        QVERIFY(isNear(changed.bottom() + 1, expected.bottom()));
    }

    void thePictureThatIsOfferedIsTheOneOnTheScreen() {
        fourAtoms().attach();
        showAs(view::Representation::Points);
        const QTemporaryDir folder;
        const QString path = folder.filePath("p.png");
        QSize offered;
        QTimer::singleShot(0, [&] {
            QWidget* const dialog = QApplication::activeModalWidget();
            QVERIFY(dialog);
            const auto sides = dialog->findChildren<QSpinBox*>();
            offered = QSize(sides[0]->value(), sides[1]->value());
            dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel)->click();
        });
        m_view->askForPicture();
        QTRY_COMPARE(offered, pixels());
        QCOMPARE(m_view->savePicture(path, offered), std::string());
        QCOMPARE(QImage(path).convertToFormat(QImage::Format_RGB32), image());
    }

    void aQuickPictureFillsTheWindowAndKnowsItsIds() {
        const Structure made = fourAtoms().attach();
        show();
        const view::Id before = canvas().idAt(placeOf(made.atoms[4]));
        bool wasQuick = false;
        connect(&canvas(), &view::Canvas::shown, this, [&] {
            wasQuick = wasQuick || (!canvas().drawn().isWhole &&
                                    canvas().idAt(placeOf(made.atoms[4])) == before);
        });
        canvas().zoom(1.01);
        settle();
        QVERIFY(wasQuick);
    }
};

REGISTER_TEST(HighResolutionTest)
#include "HighResolutionTest.moc"
