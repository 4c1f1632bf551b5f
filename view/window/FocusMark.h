// The mark of the item in focus: a ring that is painted over the picture.
#pragma once

#include "render/Camera.h"

#include <QPointF>
#include <QRect>
#include <QSizeF>

class QPainter;

namespace view {

/// The ball around an item, Å.
struct FocusMark {
    Point centre{};
    double radius = 0;

    bool operator==(const FocusMark&) const = default;
};

/// Where a ring is seen, in the units of the widget.
struct FocusRing {
    QPointF centre;
    QSizeF radii;
};

/// The ring of a mark in a picture that `camera` saw and that fills `area`; `aspect` is the width
/// of the picture divided by its height, before it filled the area. It leaves the item's atoms
/// free, and is never so small that it could be overlooked.
FocusRing ringOf(const FocusMark& mark, const Camera& camera, double aspect, const QRect& area);

/// Paints a thin ring that stands out from any picture, and most of all from the background.
void paintRing(QPainter& painter, const FocusRing& ring, Colour background);

} // namespace view
