// What all steps towards one picture share: the scene, and where its points are on the screen.
#pragma once

#include "Camera.h"
#include "Scene.h"
#include "Workers.h"

#include <cstdint>
#include <stop_token>
#include <vector>

namespace view {

/// A place on the screen, in samples: to the right and down from the upper left corner, and towards
/// the viewer from the camera's centre. A pixel has one sample, or 2 x 2. Sample (i, j) is taken at
/// (i + 0.5, j + 0.5).
struct Place {
    float x; ///< NaN when the point cannot be drawn
    float y;
    float z;
};

/// Every drawn thing has a number, counted through the balls, the two halves of each stick, those
/// of each line, the dots and the triangles of all meshes. Of things that are equally near, the one
/// with the smaller number is seen.
using Number = std::int32_t;
inline constexpr Number noNumber = 0x7FFFFFFF;

struct Frame {
    const Scene* scene = nullptr;
    Camera camera;
    int width = 0;      ///< samples
    int height = 0;     ///< samples
    float scale = 1;    ///< samples an Å
    float front = 0;    ///< z of the planes that cut the scene, in samples
    float back = 0;     ///< likewise
    float lineHalf = 1; ///< half the width of a line, in samples
    float dotHalf = 1;  ///< half the width of a dot, in samples

    std::vector<Place> points; ///< of the scene's points
    Number stickStart = 0;     ///< the first stick's number
    Number lineStart = 0;
    Number dotStart = 0;
    Number triangleStart = 0;
    /// z of the nearest and the farthest of what lies between the planes, in samples, whether or
    /// not the picture shows it.
    float nearZ = 0;
    float farZ = 0;

    /// Where a point is; x is NaN when it is no place.
    Place place(const Point& point) const;
};

/// Fills in what depends on the camera and the size of the picture, and `points`. `samples` is 1 or
/// 2, a pixel's samples a side. Returns false after a stop request.
bool project(Frame& frame, Workers& workers, const std::stop_token& stop);

} // namespace view
