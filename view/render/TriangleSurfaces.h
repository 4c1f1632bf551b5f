// What the surfaces of triangles look like at samples that show them.
#pragma once

#include "Lanes.h"
#include "Triangles.h"

#include <array>
#include <cstddef>

namespace view {

/// The surfaces of triangles at four samples.
struct TrianglePoints {
    Floats x, y, z; ///< unit vectors: right, up, and towards the viewer (z not below 0)
    Ints colour;
    Ints ids;
};

/// Remembers what changes evenly over each of the last triangles, as neighbours mostly show the
/// same ones.
class TriangleSurfaces {
public:
    /// To be called before each picture.
    void begin(const Frame& frame);
    /// The samples are in the triangles, but for rounding, and all in one row.
    TrianglePoints at(Ints triangles, Floats x, Floats y);

private:
    /// A value in four channels: at the upper left corner of the picture, and how fast it changes
    /// along x and y.
    struct Plane {
        Floats start, alongX, alongY;
        Floats at(Floats x, Floats y) const { return start + (alongX * x + alongY * y); }
    };
    /// In one line of the processor's cache.
    struct alignas(64) Surface {
        Plane normal; ///< right, up, towards the viewer; of any length
        std::int32_t colour;
        std::int32_t id;
        std::int32_t isPlain; ///< -1: in that colour; 0: there is a plane of it
        Number number;
    };
    static_assert(sizeof(Surface) == 64);
    static constexpr std::size_t remembered = 256;

    static std::size_t slotOf(Number triangle) {
        return static_cast<std::size_t>(triangle) % remembered;
    }
    const Surface& surfaceOf(Number triangle) {
        Surface& surface = m_surfaces[slotOf(triangle)];
        if (surface.number != triangle)
            make(surface, triangle);
        return surface;
    }
    void make(Surface& surface, Number triangle);
    /// Of a triangle that is not plain.
    std::int32_t colourAt(Number triangle, Floats x, Floats y) const;

    const Frame* m_frame = nullptr;
    MeshFinder m_meshes;
    std::array<Surface, remembered> m_surfaces;
    std::array<Plane, remembered> m_colours; ///< red, green, blue
};

} // namespace view
