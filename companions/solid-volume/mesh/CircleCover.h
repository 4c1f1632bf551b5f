// Whether a circle is within balls all around: a quick look that leaves doubtful cases open.
#pragma once

#include "Lanes.h"
#include "Mesh.h"
#include "Vectors.h"

#include <cstddef>
#include <vector>

namespace solid {

/// Å.
struct Circle {
    Vector centre;
    Vector axis; ///< a unit vector, as are the two that span the plane
    Vector across;
    Vector along;
    double radius;
};

class CircleCover {
public:
    /// Forgets all balls. Those of circles near `origin` follow.
    void clear(const Vector& origin);
    /// Those that cover most come best first.
    void add(const Ball& ball);

    /// True only if each point of a circle is within a ball, by at least what rounding may hide;
    /// not always if it is.
    bool isAllAround(const Circle& circle) const;

private:
    struct Four {
        Lanes x, y, z, square; ///< of the radius
    };

    Vector m_origin;
    std::vector<Four> m_fours;
    std::size_t m_count = 0;
};

} // namespace solid
