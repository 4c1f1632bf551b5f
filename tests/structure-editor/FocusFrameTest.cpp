// The frame around the current row: inside of its cell on every screen, so that it goes with the
// cell's next painting, and in a colour that is seen.
#include "Legible.h"
#include "TestSupport.h"
#include "tree/CellText.h"

#include <QImage>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QtMath>

#include <algorithm>

namespace {

const QRect cell(5, 7, 40, 14);

QImage framed(qreal scale, const QColor& text = Qt::black, const QColor& base = Qt::white,
              QStyle::State state = {}) {
    QImage image(QSize(60, 30) * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(base);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.rect = cell;
    option.state = QStyle::State_Enabled | QStyle::State_Active | state;
    option.palette = QPalette(text, Qt::white, Qt::lightGray, Qt::darkGray, Qt::gray, Qt::black,
                              Qt::white, base, Qt::white);
    option.palette.setColor(QPalette::Highlight, base);
    drawFocus(&painter, option);
    return image;
}

bool hasInk(const QImage& image, const QRect& area) {
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixelColor(x, y) != Qt::white)
                return true;
    return false;
}

} // namespace

class FocusFrameTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void nothingOfItStandsOutOfTheCell_data() {
        QTest::addColumn<qreal>("scale");
        for (const qreal scale : {1.0, 1.25, 1.5, 2.0, 3.0})
            QTest::addRow("%g", scale) << scale;
    }
    void nothingOfItStandsOutOfTheCell() {
        QFETCH(qreal, scale);
        const QImage image = framed(scale);
        const QRect inside =
            QRectF(cell.topLeft() * scale, QSizeF(cell.size()) * scale).toAlignedRect();
        const QRect all = image.rect();
        const int width = all.width();
        QVERIFY(!hasInk(image, {0, 0, width, inside.top()}));
        QVERIFY(!hasInk(image, {0, inside.bottom() + 1, width, all.bottom() - inside.bottom()}));
        QVERIFY(!hasInk(image, {0, 0, inside.left(), all.height()}));
        QVERIFY(
            !hasInk(image, {inside.right() + 1, 0, all.right() - inside.right(), all.height()}));
        // Each side is there, at the very edge; corners do not count.
        const int pen = qCeil(scale);
        const QRect across = inside.adjusted(2 * pen, 0, -2 * pen, 0);
        const QRect down = inside.adjusted(0, 2 * pen, 0, -2 * pen);
        QVERIFY(hasInk(image, {across.left(), inside.top(), across.width(), pen}));
        QVERIFY(hasInk(image, {across.left(), inside.bottom() + 1 - pen, across.width(), pen}));
        QVERIFY(hasInk(image, {inside.left(), down.top(), pen, down.height()}));
        QVERIFY(hasInk(image, {inside.right() + 1 - pen, down.top(), pen, down.height()}));
    }

    void itIsSeenOnWhateverIsBehindIt() {
        for (const QColor& base : {QColor(Qt::white), QColor(Qt::black), QColor(0x80, 0x80, 0x80)})
            for (const QColor& text : {base, base.lighter(120), base.darker(120)})
                for (const QStyle::State state : {QStyle::State_None, QStyle::State_Selected}) {
                    const QImage image = framed(1.0, text, base, state);
                    double most = 1.0;
                    for (int x = cell.left(); x <= cell.right(); ++x)
                        most = std::max(most,
                                        legible::contrast(image.pixelColor(x, cell.top()), base));
                    QVERIFY2(most >= legible::least, qPrintable(base.name() + ' ' + text.name()));
                }
    }
};

REGISTER_TEST(FocusFrameTest)
#include "FocusFrameTest.moc"
