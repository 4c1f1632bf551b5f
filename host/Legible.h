// Text that can be read on what is behind it, whatever palette and colours are in use. Luminance
// and contrast are those of the Web Content Accessibility Guidelines, version 2.
#pragma once

#include "HostExport.h"

#include <QColor>

namespace legible {

/// The contrast that text has at least.
inline constexpr double least = 4.5;

/// The relative luminance of an opaque colour: 0 for black, 1 for white.
HOST_EXPORT double luminance(const QColor& color);
/// From 1, for equal luminance, to 21, for black and white. The order does not matter.
HOST_EXPORT double contrast(const QColor& one, const QColor& other);
/// Black or white, whichever can be read better on `background`; its contrast is always above 4.5.
HOST_EXPORT QColor blackOrWhite(const QColor& background);
/// `wanted`, when it can be read on `background`; else the nearest to it, among the darker or the
/// lighter colours of its hue, that can. Opaque, as `background` is taken to be.
HOST_EXPORT QColor text(const QColor& wanted, const QColor& background);

} // namespace legible
