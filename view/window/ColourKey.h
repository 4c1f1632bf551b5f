// The keys to the colours of values, which are painted over the picture.
#pragma once

#include "Geometry.h"
#include "render/Scene.h"

#include <QRectF>
#include <QString>

#include <vector>

class QImage;
class QPainter;

namespace view {

/// With three significant digits, as the locale "C" writes it; an exponent where the number is very
/// large or very small.
QString keyNumber(double value);

/// Where paintKeys() paints: in the upper right corner of `area`, at most a third of its width and
/// of its height. Empty without a scale, and where no key is legible in so little room.
QRectF keysPlace(QPainter& painter, const std::vector<TAVIK::ValueScale>& scales,
                 const QRectF& area);

/// Paints for each scale a bar of its colours, with the title above it and the lowest, the middle
/// and the greatest value below; as many scales as there is room for. In the painter's font, or a
/// smaller one.
void paintKeys(QPainter& painter, const std::vector<TAVIK::ValueScale>& scales, const QRectF& area,
               Colour background);

/// Likewise onto a picture, in which everything is `scale` times as large.
void paintKeys(QImage& image, const std::vector<TAVIK::ValueScale>& scales, double scale,
               Colour background);

} // namespace view
