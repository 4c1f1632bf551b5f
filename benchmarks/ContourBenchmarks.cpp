#include "Balls.h"
#include "Contest.h"
#include "Geometry.h"
#include "Peer.h"
#include "RealStructures.h"
#include "Works.h"
#include "files/Files.h"
#include "mesh/Contour.h"

#include <gemmi/ccp4.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <numbers>
#include <sstream>
#include <stdexcept>

#include <malloc.h>

namespace benchmarks {

namespace {

constexpr int madePoints = 200; // along each axis

/// A file of a map with 200 x 200 x 200 values, 1 Å apart, of which the contour at 0 is a gyroid of
/// three periods; written on first use.
std::string madeMap(const std::string& folder) {
    const std::string path = madeFile(folder, "gyroid.ccp4");
    if (std::filesystem::exists(path))
        return path;
    std::array<double, madePoints> sine{};
    std::array<double, madePoints> cosine{};
    for (int i = 0; i != madePoints; ++i) {
        const double angle = 3 * 2 * std::numbers::pi * i / madePoints;
        sine[static_cast<std::size_t>(i)] = std::sin(angle);
        cosine[static_cast<std::size_t>(i)] = std::cos(angle);
    }
    gemmi::Ccp4<float> map;
    map.grid.unit_cell.set(madePoints, madePoints, madePoints, 90, 90, 90);
    map.grid.spacegroup = gemmi::find_spacegroup_by_number(1);
    map.grid.set_size(madePoints, madePoints, madePoints);
    for (std::size_t i = 0; i != map.grid.data.size(); ++i) {
        const std::size_t x = i % madePoints;
        const std::size_t y = i / madePoints % madePoints;
        const std::size_t z = i / madePoints / madePoints;
        map.grid.data[i] =
            static_cast<float>(sine[x] * cosine[y] + sine[y] * cosine[z] + sine[z] * cosine[x]);
    }
    constexpr int singlePrecision = 2;
    map.update_ccp4_header(singlePrecision);
    map.write_ccp4_map(path + ".part");
    std::filesystem::rename(path + ".part", path);
    return path;
}

/// The grid of a map file, with all of its points.
solid::GridView gridOf(const std::string& path) {
    TAVIK::Compound* const item = memory_host::openFile(path).items.front();
    const TAVIK::GridValues* const values =
        TAVIK::GetGridValues(dynamic_cast<const TAVIK::Grid*>(item));
    if (!values)
        throw std::runtime_error("there are no values in " + path);
    return {values->points, values->origin, values->steps, values->values, {}, values->points};
}

/// So many standard deviations above the mean.
double levelAt(std::span<const float> values, double sigmas) {
    double sum = 0;
    double squares = 0;
    for (const double value : values) {
        sum += value;
        squares += value * value;
    }
    const double mean = sum / static_cast<double>(values.size());
    return mean + sigmas * std::sqrt(squares / static_cast<double>(values.size()) - mean * mean);
}

void compare(const std::string& work, const solid::GridView& grid, double level, Peer& peer,
             const std::string& target, int turns) {
    solid::Mesh mesh;
    std::size_t ours = 0;
    std::size_t theirs = 0;
    std::ostringstream question;
    question << "contour " << std::setprecision(9) << level;
    malloc_trim(0); // so that the first turn's peak is all that the work takes
    run({.work = work,
         .size = grid.values.size(),
         .sizeName = "points",
         .items = grid.values.size(),
         .itemName = "point",
         .peer = peer.isThere() ? "PyMOL's isosurface" : "",
         .target = target,
         .isProcessorTime = true,
         .ours = {[&] { mesh = {}; },
                  [&] { mesh = polygonize(solid::Contour(grid, level, true), inTurn()); },
                  {},
                  [&] { return counted(ours = mesh.triangles.size(), "triangles"); }},
         .theirs = {{},
                    [&] { setTime(static_cast<double>(peer.ask(question.str())) * 1e-9); },
                    {},
                    [&] { return counted(theirs = peer.ask("triangles"), "triangles"); }}},
        turns);
    if (theirs > ours)
        throw std::runtime_error("the competitor's " + work + " has more triangles");
}

} // namespace

// Ours on one thread, from the values in memory to the mesh with normals.
void benchmarkContours(const std::string& folder, int turns) {
    const std::string made = "contour of a made map";
    const std::array<double, 2> sigmas = {1, 2.5};
    const auto workOf = [](double sigma) {
        std::ostringstream work;
        work << "contour of 1jzv at " << sigma << " sigma";
        return work.str();
    };
    if (std::any_of(sigmas.begin(), sigmas.end(),
                    [&](double sigma) { return isWanted(workOf(sigma)); })) {
        const std::string path = folder + "/1jzv.ccp4";
        const solid::GridView grid = gridOf(path);
        Peer peer("surface-peer.py", path);
        for (const double sigma : sigmas)
            compare(workOf(sigma), grid, levelAt(grid.values, sigma), peer, "ratio at least 5",
                    turns);
        emptySpace();
    }
    if (isWanted(made)) {
        const std::string path = madeMap(folder);
        const solid::GridView grid = gridOf(path);
        Peer peer("surface-peer.py", path);
        compare(made, grid, 0, peer, "ratio at least 5, at most 0.3 s", turns);
        emptySpace();
    }
}

} // namespace benchmarks
