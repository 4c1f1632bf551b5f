#include "Contours.h"

#include "NewSurfaces.h"
#include "SelectedOrShown.h"
#include "Space.h"
#include "SurfaceArea.h"
#include "mesh/Contour.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

namespace solid {

namespace {

using TAVIK::Grid;

// The selected grid with values, else the first one that is shown; else null.
const Grid* gridToContour() {
    return selectedOrShown<Grid>([](const Grid& grid) { return TAVIK::GetGridValues(&grid); });
}

/// Of the values that are numbers.
struct Spread {
    double mean = 0;
    double sigma = 0;
    double least = 0;
    double most = 0;

    /// A level as the user reads it: with its distance from the mean, where values differ.
    QString inWords(double level) const {
        QString text = QString::number(level, 'g', 4);
        if (!(sigma > 0))
            return text;
        const double apart = (level - mean) / sigma;
        const bool isUsual = std::abs(apart) < 1000;
        return tr("%1 (%2 sigma)").arg(text, QString::number(apart, isUsual ? 'f' : 'g', 2));
    }
};

Spread spreadOf(const std::vector<float>& values) {
    float least = std::numeric_limits<float>::infinity();
    float most = -least;
    double sum = 0;
    std::size_t count = 0;
    for (const float value : values)
        if (std::isfinite(value)) {
            least = std::min(least, value);
            most = std::max(most, value);
            sum += value;
            ++count;
        }
    if (count == 0)
        return {};
    Spread spread{sum / static_cast<double>(count), 0, least, most};
    // From the mean: of squares alone a large one would leave no digits.
    double squares = 0;
    for (const float value : values)
        if (std::isfinite(value)) {
            const double apart = value - spread.mean;
            squares += apart * apart;
        }
    spread.sigma = std::sqrt(squares / static_cast<double>(count));
    return spread;
}

// Why there is nothing to contour; null if there is.
QString obstacle(const Grid* grid, double level) {
    if (!std::isfinite(level))
        return tr("the level is no number");
    if (!grid)
        return tr("no map is selected or shown");
    for (std::size_t axis = 0; axis != 3; ++axis)
        if (grid->m_upper[axis] - grid->m_lower[axis] < 2)
            return tr("the shown part of %1 is only a plane")
                .arg(QString::fromLatin1(grid->GetName()));
    return {};
}

GridView viewOf(const Grid& grid) {
    const TAVIK::GridValues& values = *TAVIK::GetGridValues(&grid);
    GridView view{values.points, values.origin, values.steps, values.values, {}, {}};
    std::copy_n(grid.m_lower, 3, view.lower.begin());
    std::copy_n(grid.m_upper, 3, view.upper.begin());
    return view;
}

// What all contours of a map have their names begin with.
std::string nameOf(const std::string& map, bool isHigh) {
    return (isHigh ? "ContourHigh " : "ContourLow ") + map + ' ';
}

// Blue above, red below, as crystallographers have them; further contours of the same map in other
// colours, as they lie within the first one or around it.
Color colorOf(const std::string& map, bool isHigh) {
    constexpr std::array<std::uint32_t, 3> high = {0xff4080ffU, 0xff20b090U, 0xffa060e0U};
    constexpr std::array<std::uint32_t, 3> low = {0xffff4040U, 0xffe08020U, 0xffd040a0U};
    TAVIK::Space* const space = TAVIK::Space::instance();
    const std::string name = nameOf(map, isHigh);
    const auto others =
        std::count_if(space->ChildBegin(), space->ChildEnd(), [&name](TAVIK::Compound* item) {
            return dynamic_cast<TAVIK::Surface*>(item) && item->GetName().starts_with(name);
        });
    const std::size_t index = static_cast<std::size_t>(others) % high.size();
    return Color(isHigh ? high[index] : low[index]);
}

struct Wanted {
    QString title;
    std::string map;
    double level;
    bool isHigh;
    Color color;
};

NewSurface contourOf(const GridView& view, const Spread& spread, const Wanted& wanted,
                     const ForEach& forEach) {
    Mesh mesh = polygonize(Contour(view, wanted.level, wanted.isHigh), forEach);
    if (mesh.triangles.empty())
        throw std::runtime_error(
            tr("no value in the shown part of %1 reaches %2; its values are %3 to %4")
                .arg(QString::fromLatin1(wanted.map), spread.inWords(wanted.level),
                     spread.inWords(spread.least), spread.inWords(spread.most))
                .toStdString());
    NewSurface made;
    made.name =
        nameOf(wanted.map, wanted.isHigh) + QByteArray::number(wanted.level, 'g', 4).toStdString();
    made.color = wanted.color;
    made.mesh.vertices = std::move(mesh.vertices);
    made.mesh.normals = std::move(mesh.normals);
    made.mesh.triangles = std::move(mesh.triangles);
    made.report =
        tr("%1 of %2 at %3: %4, %5 triangles")
            .arg(wanted.title, QString::fromLatin1(wanted.map), spread.inWords(wanted.level),
                 areaInWords(areaOf(made.mesh)), countInWords(made.mesh.triangles.size()));
    return made;
}

} // namespace

void addContour(double level, bool isHigh) {
    const QString title = isHigh ? tr("High contour") : tr("Low contour");
    makeOrSay(title, [&title, level, isHigh] {
        const Grid* const grid = gridToContour();
        if (QString why = obstacle(grid, level); !why.isNull())
            return why;
        // What the other thread needs, read here. The values stay while the space is locked.
        const GridView view = viewOf(*grid);
        const std::vector<float>& values = TAVIK::GetGridValues(grid)->values;
        const std::string map = grid->GetName();
        const Wanted wanted{title, map, level, isHigh, colorOf(map, isHigh)};
        return addSurfaces(title, [&](ProgressReporter& progress, const ForEach& forEach) {
            const Spread spread = spreadOf(values);
            progress.report(
                tr("%1 at %2").arg(QString::fromLatin1(map), spread.inWords(wanted.level)), -1);
            std::vector<NewSurface> all;
            all.push_back(contourOf(view, spread, wanted, forEach));
            return all;
        });
    });
}

} // namespace solid
