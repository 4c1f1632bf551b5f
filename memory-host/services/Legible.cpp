#include "Legible.h"

#include <algorithm>
#include <cmath>

namespace legible {

double luminance(const QColor& color) {
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) +
           0.0722 * linear(color.blue());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor blackOrWhite(const QColor& background) {
    return contrast(Qt::black, background) >= contrast(Qt::white, background) ? QColor(Qt::black)
                                                                              : QColor(Qt::white);
}

QColor text(const QColor& wanted, const QColor& background) {
    const auto mixed = [alpha = wanted.alphaF()](int above, int below) {
        return static_cast<int>(std::lround(alpha * above + (1 - alpha) * below));
    };
    const QColor seen(mixed(wanted.red(), background.red()),
                      mixed(wanted.green(), background.green()),
                      mixed(wanted.blue(), background.blue()));
    if (contrast(seen, background) >= least)
        return seen;
    const bool darker = blackOrWhite(background) == QColor(Qt::black);
    float hue = 0;
    float saturation = 0;
    float lightness = 0;
    seen.getHslF(&hue, &saturation, &lightness);
    // As a screen shows it, with 8 bits a channel.
    const auto shade = [&](int step) {
        const float to = darker ? 0.0F : 1.0F;
        const float part = static_cast<float>(step) / 255.0F;
        return QColor(QColor::fromHslF(hue, saturation, lightness + part * (to - lightness)).rgb());
    };
    // Binary search, because luminance rises with lightness.
    int tooClose = 0;
    int enough = 255;
    while (enough - tooClose > 1) {
        const int middle = (tooClose + enough) / 2;
        (contrast(shade(middle), background) >= least ? enough : tooClose) = middle;
    }
    return shade(enough);
}

} // namespace legible
