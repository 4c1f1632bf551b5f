// The keys to the colours of values: where they are, what they say, and in which colours.
#include "window/ColourKey.h"
#include "Legible.h"
#include "TestSupport.h"

#include <QImage>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>

using TAVIK::ValueScale;
using view::keysPlace;
using view::paintKeys;

namespace {

constexpr view::Colour dark = 0xff22272f;
constexpr view::Colour light = 0xffffffff;

const ValueScale potential = {"Potential (kT/e)", -5, 5, {0xffff0000U, 0xffffffffU, 0xff0000ffU}};

QImage blank(const QSize& size, view::Colour background) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(background));
    return image;
}

QImage painted(const QSize& size, const std::vector<ValueScale>& scales, double scale = 1,
               view::Colour background = dark) {
    QImage image = blank(size, background);
    paintKeys(image, scales, scale, background);
    return image;
}

QRectF placeIn(const QSize& size, const std::vector<ValueScale>& scales) {
    QImage image = blank(size, dark);
    QPainter painter(&image);
    return keysPlace(painter, scales, QRectF(image.rect()));
}

/// What differs from the background.
QRect changed(const QImage& image, view::Colour background) {
    QRect box;
    for (int y = 0; y != image.height(); ++y)
        for (int x = 0; x != image.width(); ++x)
            if (image.pixel(x, y) != background)
                box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

class ColourKeyTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void numbersHaveThreeDigits() {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        QCOMPARE(view::keyNumber(0), QString("0"));
        QCOMPARE(view::keyNumber(-0.0), QString("0"));
        QCOMPARE(view::keyNumber(-5), QString("-5"));
        QCOMPARE(view::keyNumber(double(0.1F)), QString("0.1"));
        QCOMPARE(view::keyNumber(2.345678), QString("2.35"));
        QCOMPARE(view::keyNumber(12345), QString("12300"));
        QCOMPARE(view::keyNumber(-999.9), QString("-1000"));
        QCOMPARE(view::keyNumber(1.5e9), QString("1.5e+09"));
        QCOMPARE(view::keyNumber(0.00001234), QString("1.23e-05"));
        QLocale::setDefault(before);
    }

    void theKeyIsInTheUpperRightCornerOfAnyWindow_data() {
        QTest::addColumn<QSize>("size");
        QTest::newRow("large") << QSize(1600, 1000);
        QTest::newRow("usual") << QSize(900, 700);
        QTest::newRow("small") << QSize(300, 200);
        QTest::newRow("wide") << QSize(1200, 150);
        QTest::newRow("narrow") << QSize(200, 900);
        QTest::newRow("tiny") << QSize(40, 30);
        QTest::newRow("one pixel") << QSize(1, 1);
    }
    void theKeyIsInTheUpperRightCornerOfAnyWindow() {
        QFETCH(QSize, size);
        const std::vector<ValueScale> scales(3, potential);
        const QRectF place = placeIn(size, scales);
        const QRectF third(size.width() * 2 / 3.0, 0, size.width() / 3.0, size.height() / 3.0);
        QVERIFY(place.isEmpty() || third.adjusted(-1e-9, 0, 1e-9, 1e-9).contains(place));
        QCOMPARE(place.isEmpty(), size.width() < 100);
        // A frame is as wide as a pixel.
        const QRect box = changed(painted(size, scales), dark);
        QVERIFY(box.isEmpty() == place.isEmpty());
        QVERIFY(place.isEmpty() || place.toAlignedRect().adjusted(-1, -1, 1, 1).contains(box));
    }

    void withoutAScaleThereIsNoKey() {
        QVERIFY(changed(painted({900, 700}, {}), dark).isEmpty());
        QVERIFY(placeIn({900, 700}, {}).isEmpty());
    }

    void theBarHasTheColoursFromLeftToRight() {
        const QImage image = painted({900, 700}, {potential});
        const QRectF place = placeIn(image.size(), {potential});
        // The row of the bar: where the left is purely red.
        int row = -1;
        const int left = int(place.left()) + 7;
        for (int y = 0; y != image.height() && row == -1; ++y)
            if (qRed(image.pixel(left, y)) > 250 && qBlue(image.pixel(left, y)) < 10)
                row = y + 2;
        QVERIFY(row > place.top() && row < place.bottom());
        const QColor middle(image.pixel(int(place.center().x()), row));
        const QColor quarter(image.pixel(int(place.left() + place.width() / 4), row));
        const QColor right(image.pixel(int(place.right()) - 8, row));
        QVERIFY(middle.green() > 245 && middle.red() > 245 && middle.blue() > 245);
        QVERIFY(quarter.red() > 250 && std::abs(quarter.green() - 128) < 12);
        QVERIFY(right.blue() > 250 && right.red() < 10);
    }

    void everyKeyHasItsPlaceWhereThereIsRoom() {
        const double one = placeIn({900, 700}, {potential}).height();
        const double three = placeIn({900, 700}, {potential, potential, potential}).height();
        QVERIFY(three > 2.5 * one);
        // Not more than fit.
        QVERIFY(placeIn({900, 250}, {potential, potential, potential}).height() < 2.5 * one);
    }

    void aLargePictureHasALargeKey() {
        const QRect once = changed(painted({900, 700}, {potential}), dark);
        const QRect twice = changed(painted({1800, 1400}, {potential}, 2), dark);
        QVERIFY(std::abs(twice.width() - 2 * once.width()) <= 4);
        QVERIFY(std::abs(twice.height() - 2 * once.height()) <= 4);
    }

    // Over a picture of any colour there is text with enough contrast to what is around it.
    void theTextIsLegibleOnAnyGround() {
        for (const view::Colour background : {dark, light})
            for (const QRgb below : {0xff000000U, 0xffffffffU, 0xff808080U}) {
                QImage image = blank({900, 700}, below);
                paintKeys(image, {potential}, 1, background);
                const QRectF place = placeIn(image.size(), {potential});
                const QRgb panel = image.pixel(int(place.left()) + 1, int(place.top()) + 1);
                double best = 1;
                for (int y = int(place.top()) + 5; y < int(place.top()) + 15; ++y)
                    for (int x = int(place.left()) + 5; x < int(place.right()); ++x)
                        best = std::max(
                            best, legible::contrast(QColor(image.pixel(x, y)), QColor(panel)));
                QVERIFY2(best >= legible::least, qPrintable(QString::number(best)));
            }
    }

    void aTitleThatIsTooLongIsCutShort() {
        ValueScale longer = potential;
        longer.title = std::string(500, 'W');
        QVERIFY(placeIn({900, 700}, {longer}).width() <= 300);
    }
};

REGISTER_TEST(ColourKeyTest)
#include "ColourKeyTest.moc"
