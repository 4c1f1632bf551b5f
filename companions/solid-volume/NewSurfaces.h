// From a computation to items: what all commands of this plug-in have in common.
#pragma once

#include "Color.h"
#include "Geometry.h"
#include "Progress.h"
#include "mesh/Polygonizer.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace solid {

/// A surface that is to be made.
struct NewSurface {
    std::string name;
    TAVIK::SurfaceMesh mesh;    ///< without triangles no item is made, and only the report is shown
    std::optional<Color> color; ///< the default colour of surfaces without
    QString report;             ///< a line for the user
};

/// Touches no items, as it runs on another thread.
using Compute = std::function<std::vector<NewSurface>(ProgressReporter&, const ForEach&)>;

/// Says that nothing is made, and why; says nothing for a null `failure`.
void sayWhy(const QString& title, const QString& failure);
/// What the exception that is being handled says.
QString currentFailure();

/// Runs a command. `make` returns why it has made nothing, which is said in a message, or null;
/// what it throws counts as such a reason. `title` is what is made, as "Van der Waals surface".
template <class Make> void makeOrSay(const QString& title, const Make& make) {
    try {
        sayWhy(title, make());
    } catch (...) {
        sayWhy(title, currentFailure());
    }
}

/// Runs `compute` with progress and cancel, makes the surfaces as the last items at the top level,
/// in one change with a label, and shows the reports. Returns why nothing is made, or null; throws
/// what `compute` throws, and then nothing is made, either.
QString addSurfaces(const QString& title, const Compute& compute);

/// Numbers in reports, with commas between thousands: "4,870 Å²", with a decimal where it is small;
/// and "1,213".
QString areaInWords(double area);
QString countInWords(std::size_t count);

/// The plug-in's texts in the user's language.
QString tr(const char* text);

} // namespace solid
