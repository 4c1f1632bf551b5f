// What is drawn of items that are neither atoms nor bonds: surfaces, lines, and the boxes of grids.
#pragma once

#include "Compound.h"
#include "Contents.h"

#include <optional>
#include <vector>

namespace view {

/// What there is to draw of an item whose index among the items is `index`; nothing for a kind of
/// which nothing is ever drawn. Of a grid the box is drawn whose edges its shown points span.
std::optional<Shape> shapeOf(TAVIK::Compound* item, std::size_t index);

/// Whether shapeOf() would give the same again.
bool isAsRead(const Shape& shape, TAVIK::Compound* item);

/// Appends all points of a shape, as a camera is fitted to them.
void addPoints(const Shape& shape, std::vector<Point>& points);

} // namespace view
