#include "FocusMark.h"

#include "Legible.h"

#include <QColor>
#include <QPainter>

#include <algorithm>

namespace view {

namespace {

constexpr double beside = 2; // Å between the atoms' middles and the ring
constexpr double least = 9;  // of the ring's radius, in the units of the widget

} // namespace

FocusRing ringOf(const FocusMark& mark, const Camera& camera, double aspect, const QRect& area) {
    double right = 0;
    double up = 0;
    for (std::size_t i = 0; i != 3; ++i) {
        const double from = double(mark.centre[i]) - double(camera.centre[i]);
        right += from * double(camera.axes[0][i]);
        up += from * double(camera.axes[1][i]);
    }
    const double perUp = area.height() / camera.height;
    const double perRight = area.width() / (camera.height * aspect);
    const double radius = mark.radius + beside;
    return {QRectF(area).center() + QPointF(right * perRight, -up * perUp),
            {std::max(least, radius * perRight), std::max(least, radius * perUp)}};
}

void paintRing(QPainter& painter, const FocusRing& ring, Colour background) {
    const QColor behind = QColor::fromRgb(background);
    const QColor line = legible::luminance(behind) > 0.5 ? Qt::black : Qt::white;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    for (const QPen& pen : {QPen(behind, 4), QPen(line, 1.5)}) {
        painter.setPen(pen);
        painter.drawEllipse(ring.centre, ring.radii.width(), ring.radii.height());
    }
    painter.restore();
}

} // namespace view
