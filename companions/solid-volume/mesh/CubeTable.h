// Which triangles stand in a cube of a lattice, by the corners that are inside.
//
// Source: W. E. Lorensen and H. E. Cline, Computer Graphics 21 (1987) 163-169. The table is made
// here from one rule for a face whose inside corners face each other: each of them is cut off by
// itself. Two cubes decide alike about the face between them, so that what they make is closed.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace solid {

/// Corners of a cube are numbered x + 2 y + 4 z. An edge is 4 times its axis plus the number of
/// its lower corner's two other coordinates: of x-edges y + 2 z, of y-edges x + 2 z, of z-edges
/// x + 2 y.
struct CubeEdge {
    std::uint8_t axis;
    std::array<std::uint8_t, 3> corner; ///< the lower one
};

inline constexpr int cubeEdges = 12;

constexpr CubeEdge cubeEdge(int edge) {
    const int axis = edge / 4;
    const auto low = static_cast<std::uint8_t>(edge & 1);
    const auto high = static_cast<std::uint8_t>((edge >> 1) & 1);
    CubeEdge made{static_cast<std::uint8_t>(axis), {}};
    made.corner[axis == 0 ? 1 : 0] = low;
    made.corner[axis == 2 ? 1 : 2] = high;
    return made;
}

struct CubeCase {
    std::array<std::array<std::uint8_t, 3>, 5> triangles; ///< of edges
    std::uint8_t count;

    std::span<const std::array<std::uint8_t, 3>> all() const { return {triangles.data(), count}; }
};

/// By the corners that are inside, a bit each. Triangles are counterclockwise seen from outside.
const std::array<CubeCase, 256>& cubeTable();

} // namespace solid
