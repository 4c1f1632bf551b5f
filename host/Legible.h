// Text colours with enough contrast to their background, for any palette. Luminance and contrast
// are those of the Web Content Accessibility Guidelines, version 2.
#pragma once

#include "HostExport.h"

#include <QColor>

namespace legible {

/// The minimum contrast of text.
inline constexpr double least = 4.5;

/// The relative luminance of an opaque colour: 0 for black, 1 for white.
HOST_EXPORT double luminance(const QColor& color);
/// From 1, for equal luminance, to 21, for black and white. Symmetric.
HOST_EXPORT double contrast(const QColor& one, const QColor& other);
/// Black or white, whichever has more contrast to `background`; always above 4.5.
HOST_EXPORT QColor blackOrWhite(const QColor& background);
/// `wanted`, if its contrast to `background` is sufficient; else the nearest darker or lighter
/// colour of the same hue whose contrast is. The result is opaque; `background` is taken as opaque.
HOST_EXPORT QColor text(const QColor& wanted, const QColor& background);

} // namespace legible
