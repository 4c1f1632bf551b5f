// The outline of what is selected, and what a picture shows at a place, on pictures made by hand.
#include "render/Outline.h"
#include "TestSupport.h"
#include "render/Picking.h"

#include <cmath>

using view::idAt;
using view::idNear;
using view::noId;
using view::outline;
using view::Picture;

namespace {

constexpr QRgb drawn = 0xFFFFFF00;

/// A picture by its ids, a digit each, all at the same depth.
Picture byIds(const QStringList& rows) {
    Picture picture;
    picture.image = QImage(int(rows[0].size()), int(rows.size()), QImage::Format_RGB32);
    picture.image.fill(Qt::black);
    for (const QString& row : rows) {
        for (const QChar& id : row) {
            picture.ids.push_back(static_cast<view::Id>(id.digitValue()));
            picture.depths.push_back(picture.ids.back() == noId ? -INFINITY : 0);
        }
    }
    return picture;
}

/// The outlined pixels as '#', the others as '.'.
QStringList outlined(const Picture& picture, const std::vector<bool>& isSelected, int width) {
    QImage image = picture.image;
    outline(image, picture, isSelected, 0xFFFF00, width);
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        QString row;
        for (int x = 0; x < image.width(); ++x)
            row += image.pixel(x, y) == drawn ? QLatin1Char('#') : QLatin1Char('.');
        rows << row;
    }
    return rows;
}

} // namespace

class OutlineTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theOutlineGoesAroundWhatIsSelected() {
        const Picture picture = byIds({"00000000000", //
                                       "01111111000", //
                                       "01111111220", //
                                       "01111111220", //
                                       "01111111000", //
                                       "01111111000", //
                                       "00000000000"});
        QCOMPARE(outlined(picture, {false, true, false}, 1), (QStringList{"...........", //
                                                                          ".#######...", //
                                                                          ".#.....#...", //
                                                                          ".#.....#...", //
                                                                          ".#.....#...", //
                                                                          ".#######...", //
                                                                          "..........."}));
        QCOMPARE(outlined(picture, {false, true, false}, 2), (QStringList{"...........", //
                                                                          ".#######...", //
                                                                          ".#######...", //
                                                                          ".##...##...", //
                                                                          ".#######...", //
                                                                          ".#######...", //
                                                                          "..........."}));
        // No line between two selected things that touch.
        QCOMPARE(outlined(picture, {false, true, true}, 1), (QStringList{"...........", //
                                                                         ".#######...", //
                                                                         ".#......##.", //
                                                                         ".#......##.", //
                                                                         ".#.....#...", //
                                                                         ".#######...", //
                                                                         "..........."}));
    }

    void nothingSelectedHasNoOutline() {
        const Picture picture = byIds({"0110", "0110"});
        QCOMPARE(outlined(picture, {}, 2), (QStringList{"....", "...."}));
        QCOMPARE(outlined(picture, {true, false}, 2), (QStringList{"....", "...."}));
        QImage image;
        outline(image, Picture(), {true, true}, 0, 2);
    }

    void theEdgeOfThePictureIsNoOutline() {
        QCOMPARE(outlined(byIds({"111", "111"}), {false, true}, 2), (QStringList{"...", "..."}));
    }

    void whatIsSelectedInFrontOfWhatIsSelectedHasAnOutline() {
        Picture picture = byIds({"1112222", "1112222"});
        const std::vector<bool> both = {false, true, true};
        for (std::size_t pixel = 0; pixel < picture.ids.size(); ++pixel)
            picture.depths[pixel] = picture.ids[pixel] == 2 ? 10.0F : 8.0F;
        QCOMPARE(outlined(picture, both, 2), (QStringList{".......", "......."}));
        for (float& depth : picture.depths)
            depth *= 5;
        // On the nearer one only.
        QCOMPARE(outlined(picture, both, 2), (QStringList{"...##..", "...##.."}));
    }

    void aPixelIsPicked() {
        const Picture picture = byIds({"012", "340"});
        QCOMPARE(idAt(picture, 0, 0), noId);
        QCOMPARE(idAt(picture, 2, 0), 2U);
        QCOMPARE(idAt(picture, 1, 1), 4U);
        for (const auto& [x, y] : {std::pair(-1, 0), {3, 0}, {0, -1}, {0, 2}, {INT_MIN, INT_MAX}})
            QCOMPARE(idAt(picture, x, y), noId);
        QCOMPARE(idAt(Picture(), 0, 0), noId);
    }

    void theNearestThingAroundIsPicked() {
        Picture picture = byIds({"100002", //
                                 "000000", //
                                 "000300"});
        QCOMPARE(idNear(picture, 0, 0, 4), 1U);
        QCOMPARE(idNear(picture, 1, 0, 0), noId);
        QCOMPARE(idNear(picture, 1, 0, 1), 1U);
        QCOMPARE(idNear(picture, 2, 1, 1), noId);
        QCOMPARE(idNear(picture, 2, 1, 2), 3U);
        // Two are equally far: that in front is picked, else the smaller id.
        QCOMPARE(idNear(picture, 3, 0, 2), 2U);
        picture.depths[15] = 1;
        QCOMPARE(idNear(picture, 3, 0, 2), 3U);
        QCOMPARE(idNear(picture, 5, 2, INT_MAX), 3U);
        // Places beside the picture, and any radius.
        QCOMPARE(idNear(picture, -2, 0, 2), 1U);
        QCOMPARE(idNear(picture, -2, 0, 1), noId);
        QCOMPARE(idNear(picture, INT_MIN, INT_MAX, INT_MAX), noId);
        QCOMPARE(idNear(picture, 1, 0, -5), noId);
        QCOMPARE(idNear(Picture(), 0, 0, 3), noId);
    }
};

REGISTER_TEST(OutlineTest)
#include "OutlineTest.moc"
