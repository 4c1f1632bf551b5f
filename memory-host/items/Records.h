// What items are made from: the values of an atom, and of a grid.
#pragma once

#include "PartialCharge.h"
#include "Vertex.h"

#include <array>
#include <string_view>
#include <vector>

namespace memory_host {

/// The values of an atom.
struct AtomRecord {
    std::string_view name;    ///< as "CA"
    std::string_view type;    ///< element symbol as "C" or "Cu"; "X" where it is unknown
    TAVIK::Vertex position;   ///< Å
    float temperature = 0.0F; ///< Å²
    unsigned int model = 0;   ///< 0: shared by all alternative models; at most 65535
    TAVIK::PartialCharge partial{};
};

/// The values of a grid and where they lie.
struct GridRecord {
    std::array<int, 3> points{};    ///< number of points along x, y, z; each at least 1
    std::array<double, 3> origin{}; ///< position of point (0, 0, 0) in Å
    /// Å from a point to its neighbour along each of the three axes: steps[axis] is a vector.
    std::array<std::array<double, 3>, 3> steps{};
    std::vector<float> values; ///< x fastest; points[0] * points[1] * points[2] of them
};

} // namespace memory_host
