// What tests look for in pictures of a screen.
#pragma once

#include <QColor>
#include <QImage>

#include <functional>
#include <optional>

namespace end_to_end {

using IsColour = std::function<bool(const QColor&)>;

/// Whether nothing is drawn there but the background.
bool isEmpty(const QImage& part);
/// How many pixels have such a colour.
int count(const QImage& part, const IsColour& isColour);
/// The middle of a square of such pixels with sides of `size`, the first one from above.
std::optional<QPoint> findSquare(const QImage& part, int size, const IsColour& isColour);
/// How far two pictures of one size are apart, from 0 to 255: the mean over squares of 8 pixels, so
/// that a picture that is drawn more finely is about the same. 255 for pictures of unequal sizes.
double difference(const QImage& one, const QImage& other);

} // namespace end_to_end
