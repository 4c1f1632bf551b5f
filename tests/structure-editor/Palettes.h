// Palettes that the tests paint with, and what can be seen in a picture.
#pragma once

#include "Legible.h"

#include <QImage>
#include <QPalette>
#include <QRect>
#include <QString>

#include <map>
#include <utility>
#include <vector>

namespace palettes {

inline QPalette of(const QColor& base, const QColor& text, const QColor& highlight,
                   const QColor& highlightedText, const QColor& disabledText) {
    QPalette palette(base);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase,
                     base.lightness() < 128 ? base.lighter(150) : base.darker(110));
    palette.setColor(QPalette::Window, base);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, highlightedText);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, highlight.darker(120));
    palette.setColor(QPalette::Disabled, QPalette::Text, disabledText);
    return palette;
}

inline const std::vector<std::pair<QString, QPalette>>& all() {
    static const std::vector<std::pair<QString, QPalette>> each = {
        {QStringLiteral("light"),
         of(Qt::white, Qt::black, {48, 140, 198}, Qt::white, {190, 190, 190})},
        {QStringLiteral("dark"),
         of({35, 35, 35}, Qt::white, {42, 130, 218}, Qt::black, {120, 120, 120})},
        {QStringLiteral("black"),
         of(Qt::black, {230, 230, 230}, {0, 60, 130}, {200, 200, 255}, {80, 80, 80})},
        {QStringLiteral("grey"),
         of({128, 128, 128}, Qt::black, {90, 90, 200}, Qt::white, {100, 100, 100})},
        {QStringLiteral("yellowish"),
         of({253, 246, 227}, {101, 123, 131}, {181, 137, 0}, {253, 246, 227}, {147, 161, 161})},
        {QStringLiteral("of high contrast"),
         of(Qt::black, Qt::yellow, Qt::cyan, Qt::black, Qt::green)},
    };
    return each;
}

/// How often each colour stands in a part of a picture.
inline std::map<QRgb, int> coloursIn(const QImage& image, const QRect& part) {
    std::map<QRgb, int> found;
    const QRect seen = part & image.rect();
    for (int y = seen.top(); y <= seen.bottom(); ++y)
        for (int x = seen.left(); x <= seen.right(); ++x)
            ++found[image.pixel(x, y) | 0xff000000U];
    return found;
}

/// What is wrong with a part of a picture in which text without smoothed edges stands on one
/// colour: nothing behind it but `background`, and nothing in front that cannot be read.
inline QString faultOf(const QImage& image, const QRect& part, const QColor& background) {
    const std::map<QRgb, int> found = coloursIn(image, part);
    int text = 0;
    for (const auto& [color, count] : found) {
        if (color == background.rgb())
            continue;
        text += count;
        if (legible::contrast(QColor(color), background) < legible::least)
            return QStringLiteral("%1 on %2").arg(QColor(color).name(), background.name());
    }
    if (text < 10)
        return QStringLiteral("no text on %1").arg(background.name());
    if (text > part.width() * part.height() / 2)
        return QStringLiteral("mostly not %1").arg(background.name());
    return {};
}

} // namespace palettes
