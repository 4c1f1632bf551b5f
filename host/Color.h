// The host's colour value: 32 bits, red, green, blue and alpha.
#pragma once

#include "HostExport.h"

#include <QColor>

/// A colour with alpha. Small enough to be kept in every item.
class HOST_EXPORT Color {
public:
    /// Opaque white.
    Color() = default;
    /// The RGB and alpha parts of `color`; an invalid one gives opaque black, as QColor::rgba()
    /// does.
    explicit Color(const QColor& color) : m_rgba(color.rgba()) {}
    /// `rgba` packed as Qt packs a QRgb: 0xAARRGGBB.
    explicit Color(unsigned int rgba) : m_rgba(rgba) {}

    QColor toQColor() const { return QColor::fromRgba(m_rgba); }
    /// Packed as in the constructor.
    unsigned int rgba() const { return m_rgba; }

    bool operator==(const Color&) const = default;

private:
    unsigned int m_rgba = 0xffffffffU;
};
