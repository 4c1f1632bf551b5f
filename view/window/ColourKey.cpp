#include "ColourKey.h"

#include "Legible.h"

#include <QColor>
#include <QFont>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace view {

namespace {

using TAVIK::ValueScale;

constexpr int smallestFont = 7; // pixels
constexpr double widest = 240;
constexpr double edge = 5;       // between the texts and the panel's edges
constexpr double fromCorner = 6; // between the panel and the corner
constexpr int panelAlpha = 215;

/// The values below a bar; without the middle one where there is no room.
struct Labels {
    QString lower, middle, upper;
};

Labels labelsOf(const ValueScale& scale) {
    const double lower = double(scale.lower);
    const double upper = double(scale.upper);
    double middle = lower / 2 + upper / 2;
    // What is left of a sum that is none.
    constexpr double rounding = 1e-6;
    if (std::abs(middle) < rounding * (upper - lower))
        middle = 0;
    return {keyNumber(lower), keyNumber(middle), keyNumber(upper)};
}

/// How keys are laid out.
struct Layout {
    QFont font;
    double line = 0; ///< the height of a text
    double bar = 0;  ///< of the colours
    double width = 0;
    bool hasMiddle = true;
    std::size_t count = 0; ///< of keys

    double keyHeight() const { return 2 * line + bar; }
    double height() const {
        return double(count) * keyHeight() + double(count - 1) * edge + 2 * edge;
    }
};

/// The least width of a bar with these texts below it.
double labelsWidth(const QFontMetricsF& metrics, const Labels& labels, bool hasMiddle) {
    const double blank = metrics.horizontalAdvance(QLatin1Char(' '));
    const double lower = metrics.horizontalAdvance(labels.lower);
    const double upper = metrics.horizontalAdvance(labels.upper);
    if (!hasMiddle)
        return lower + upper + blank;
    const double middle = metrics.horizontalAdvance(labels.middle);
    return middle + 2 * (std::max(lower, upper) + blank);
}

double neededWidth(const QFontMetricsF& metrics, const std::vector<ValueScale>& scales,
                   bool hasMiddle) {
    double width = 0;
    for (const ValueScale& scale : scales)
        width = std::max(width, labelsWidth(metrics, labelsOf(scale), hasMiddle));
    return width + 2 * edge;
}

/// The largest texts with which at least one key fits; a count of 0 where none does.
Layout layoutOf(QPainter& painter, const std::vector<ValueScale>& scales, const QRectF& area) {
    Layout layout;
    layout.font = painter.font();
    const double mostWidth = area.width() / 3;
    const double mostHeight = area.height() / 3;
    for (const bool hasMiddle : {true, false}) {
        for (int pixels = std::max(smallestFont, QFontInfo(painter.font()).pixelSize());
             pixels >= smallestFont; --pixels) {
            layout.font.setPixelSize(pixels);
            const QFontMetricsF metrics(layout.font, painter.device());
            layout.line = std::ceil(metrics.height());
            layout.bar = std::ceil(0.8 * pixels);
            layout.hasMiddle = hasMiddle;
            const double needed = neededWidth(metrics, scales, hasMiddle);
            layout.count = 1;
            if (needed > mostWidth || layout.height() > mostHeight)
                continue;
            layout.width = std::min(mostWidth, std::max(needed, widest));
            while (layout.count < scales.size()) {
                ++layout.count;
                if (layout.height() > mostHeight) {
                    --layout.count;
                    break;
                }
            }
            return layout;
        }
    }
    layout.count = 0;
    return layout;
}

QRectF placeOf(const Layout& layout, const QRectF& area) {
    if (layout.count == 0)
        return {};
    const double right = area.right() - std::min(fromCorner, area.width() / 3 - layout.width);
    const double top = area.top() + std::min(fromCorner, area.height() / 3 - layout.height());
    return {right - layout.width, top, layout.width, layout.height()};
}

void paintBar(QPainter& painter, const QRectF& bar, const ValueScale& scale, const QColor& frame) {
    QLinearGradient colours(bar.topLeft(), bar.topRight());
    const double last = double(scale.colors.size() - 1);
    QGradientStops stops;
    for (std::size_t i = 0; i != scale.colors.size(); ++i)
        stops.push_back({double(i) / last, QColor::fromRgb(scale.colors[i])});
    colours.setStops(stops);
    painter.setPen(QPen(frame, 1));
    painter.setBrush(colours);
    painter.drawRect(bar);
}

} // namespace

QString keyNumber(double value) {
    if (value == 0)
        return QStringLiteral("0"); // without a sign
    constexpr double large = 1e6;
    const double rounded = QString::number(value, 'g', 3).toDouble();
    return std::abs(rounded) >= 1000 && std::abs(rounded) < large ? QString::number(rounded, 'f', 0)
                                                                  : QString::number(value, 'g', 3);
}

QRectF keysPlace(QPainter& painter, const std::vector<ValueScale>& scales, const QRectF& area) {
    return scales.empty() ? QRectF() : placeOf(layoutOf(painter, scales, area), area);
}

void paintKeys(QPainter& painter, const std::vector<ValueScale>& scales, const QRectF& area,
               Colour background) {
    if (scales.empty())
        return;
    const Layout layout = layoutOf(painter, scales, area);
    const QRectF place = placeOf(layout, area);
    if (place.isEmpty())
        return;
    const QColor behind = QColor::fromRgb(background);
    const QColor text = legible::blackOrWhite(behind);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    QColor panel = behind;
    panel.setAlpha(panelAlpha);
    painter.fillRect(place, panel);
    painter.setFont(layout.font);
    const QFontMetricsF metrics(layout.font, painter.device());
    double top = place.top() + edge;
    for (std::size_t i = 0; i != layout.count; ++i) {
        const double left = place.left() + edge;
        const double width = place.width() - 2 * edge;
        const QRectF bar(left, top + layout.line, width, layout.bar);
        paintBar(painter, bar, scales[i], text);
        painter.setPen(text);
        painter.drawText(
            QRectF(left, top, width, layout.line), Qt::AlignLeft | Qt::AlignVCenter,
            metrics.elidedText(QString::fromStdString(scales[i].title), Qt::ElideRight, width));
        const Labels labels = labelsOf(scales[i]);
        const QRectF below(left, bar.bottom(), width, layout.line);
        painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter, labels.lower);
        if (layout.hasMiddle)
            painter.drawText(below, Qt::AlignHCenter | Qt::AlignVCenter, labels.middle);
        painter.drawText(below, Qt::AlignRight | Qt::AlignVCenter, labels.upper);
        top += layout.keyHeight() + edge;
    }
    painter.restore();
}

void paintKeys(QImage& image, const std::vector<ValueScale>& scales, double scale,
               Colour background) {
    if (scales.empty())
        return;
    QPainter painter(&image);
    painter.scale(scale, scale);
    paintKeys(painter, scales, QRectF({}, QSizeF(image.size()) / scale), background);
}

} // namespace view
