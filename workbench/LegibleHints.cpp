#include "LegibleHints.h"

#include "Legible.h"

#include <QApplication>
#include <QPalette>

namespace workbench {

namespace {

constexpr double leastContrast = 3; // a hint is to be told from what was typed
constexpr float opacity = 0.6F;

// A colour as it is seen on another one.
QColor mixed(const QColor& color, const QColor& base) {
    const auto mix = [part = color.alphaF()](float over, float under) {
        return over * part + under * (1 - part);
    };
    return QColor::fromRgbF(mix(color.redF(), base.redF()), mix(color.greenF(), base.greenF()),
                            mix(color.blueF(), base.blueF()));
}

} // namespace

void makeHintsLegible() {
    const QPalette theme = QApplication::palette();
    const QColor base = theme.color(QPalette::Base);
    if (legible::contrast(mixed(theme.color(QPalette::PlaceholderText), base), base) >=
        leastContrast)
        return;
    QColor color = theme.color(QPalette::Text);
    color.setAlphaF(opacity);
    // Where the text itself is pale, there is nothing left to take from it.
    if (legible::contrast(mixed(color, base), base) < leastContrast)
        color = legible::text(theme.color(QPalette::Text), base);
    QPalette own = theme; // of which only this one is the program's: the others follow the theme
    own.setColor(QPalette::PlaceholderText, color);
    QApplication::setPalette(own);
}

} // namespace workbench
