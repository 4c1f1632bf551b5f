// The surface of a solid as triangles: marching cubes, block by block on several threads.
#pragma once

#include "Blocks.h"
#include "Mesh.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace solid {

/// Calls its second argument with each number below the first, on one or more threads, and throws
/// what a call throws, or what ends the work early, when none is running any more.
using ForEach = std::function<void(std::size_t, const std::function<void(std::size_t)>&)>;

/// Where a surface crosses an edge of the lattice.
struct Crossing {
    Point position; ///< Å
    Point normal;   ///< a unit vector, pointing outwards
    std::uint32_t ball;
    /// How much of a cell's face it stands for: less than all where the cells around the edge are
    /// not all of the solid's; nothing where the area is known.
    float share = 1;
};

/// From a corner of the lattice to the next along each axis, in Å.
using CellSteps = std::array<std::array<double, 3>, 3>;

constexpr CellSteps cubicSteps(double step) {
    return {{{step, 0, 0}, {0, step, 0}, {0, 0, step}}};
}

/// What a surface encloses. Its functions are called by several threads at a time.
class Solid {
public:
    virtual ~Solid() = default;

    virtual CellSteps steps() const = 0;
    /// Of the parts of the surface whose crossings have a share of 0, in Å².
    virtual double knownArea() const { return 0; }
    /// Whether crossings name the balls they are next to.
    virtual bool hasBalls() const { return true; }
    /// All blocks that may have a corner inside, those on its upper faces included, sorted by
    /// packed(). No own corner on a lower face is inside if there is no block below it.
    virtual std::span<const BlockPlace> blocks() const = 0;
    /// Which of the block's own corners are inside.
    virtual void findInside(std::size_t block, OwnSigns& signs) const = 0;
    /// Adds where the surface crosses the block's own edges; as many crossings as edges.
    virtual void findCrossings(std::size_t block, const BlockEdges& edges,
                               std::vector<Crossing>& crossings) const = 0;
};

/// The surface, closed: each directed edge is in one triangle, its reverse in another. The same on
/// any number of threads.
///
/// The area is what the crossings stand for: of all lattice lines along one axis, each crossing
/// stands for the area that projects onto the face of a cell. Over the three axes, weighted with
/// the squares of the normal's parts along them, that becomes a sum that needs no triangle, and
/// whose error is less than what flat triangles lose where the surface is bent.
///
/// Throws std::length_error for more vertices than 32 bits can number.
Mesh polygonize(const Solid& solid, const ForEach& forEach);

} // namespace solid
