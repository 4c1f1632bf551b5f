// An order of points in which those that follow each other are mostly close together.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace workbench {

/// The numbers of the finite points (Å) in the order of the curve of Morton (1966) through 1024
/// cells along each axis, of 2 Å or what it takes. Points of one cell stay in the order that they
/// come in.
std::vector<std::uint32_t> alongCurve(const std::vector<std::array<float, 3>>& points);

} // namespace workbench
