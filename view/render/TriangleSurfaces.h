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
};

/// Remembers what changes evenly over each of the last triangles, as neighbours mostly show the
/// same ones.
class TriangleSurfaces {
public:
    TriangleSurfaces() { forget(); }
    /// To be called before each picture.
    void forget();
    /// The samples are in the triangles, but for rounding, and all in one row.
    TrianglePoints at(const Frame& frame, Ints triangles, Floats x, Floats y);

private:
    /// A value in four channels: at the upper left corner of the picture, and how fast it changes
    /// along x and y.
    struct Plane {
        Floats start, alongX, alongY;
        Floats at(Floats x, Floats y) const { return start + (alongX * x + alongY * y); }
    };
    struct Surface {
        Plane normal; ///< right, up, towards the viewer; of any length
        Plane colour; ///< red, green, blue
        std::int32_t plainColour;
        bool isPlain;
    };
    static constexpr std::size_t remembered = 256;

    const Surface& surfaceOf(const Frame& frame, Number triangle) {
        const std::size_t slot = static_cast<std::size_t>(triangle) % remembered;
        if (m_numbers[slot] != triangle) {
            m_surfaces[slot] = make(frame, triangle);
            m_numbers[slot] = triangle;
        }
        return m_surfaces[slot];
    }
    static Surface make(const Frame& frame, Number triangle);

    std::array<Number, remembered> m_numbers;
    std::array<Surface, remembered> m_surfaces;
};

} // namespace view
