// From where a scene is seen: an orthographic projection, so that equal lengths are equal anywhere
// in the picture.
#pragma once

#include "Scene.h"

#include <cmath>
#include <limits>
#include <span>

namespace view {

struct Camera {
    /// Unit vectors of the screen in the space of the scene: to the right, up, and towards the
    /// viewer. Right-handed.
    std::array<Point, 3> axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Point centre{};        ///< Å; seen in the middle of the picture
    double height = 100.0; ///< Å from the lower to the upper edge of the picture

    /// What is drawn, as distance from the centre towards the viewer in Å.
    double front = std::numeric_limits<double>::infinity();
    double back = -std::numeric_limits<double>::infinity();

    /// Turns the scene about the screen's axes through the centre: what faces the viewer goes to
    /// the right by the angle `right`, and up by `up`. Radians.
    void turn(double right, double up);
    /// Turns the scene about the line of sight, counter-clockwise. Radians.
    void roll(double angle);
    /// Moves the scene on the screen, to the right and up. Å.
    void move(double right, double up);

    /// How far a point lies in front of the centre, towards the viewer. Å.
    double depthOf(const Point& point) const;

    /// Puts the middle of the points' bounding box into the middle of the picture, and shows all of
    /// the points at any rotation, with `margin` Å around them; `aspect` is the width of the
    /// picture divided by its height. Points that are not finite, or further than `farthest` from
    /// the origin, do not count; without points nothing changes.
    void fit(std::span<const Point> points, double aspect, double margin);
};

/// Å. Coordinates beyond it are no places in a structure: files have no room to write them.
inline constexpr float farthest = 1e7F;
/// False for NaN, too.
inline bool isPlace(const Point& point) {
    return std::abs(point[0]) <= farthest && std::abs(point[1]) <= farthest &&
           std::abs(point[2]) <= farthest;
}

} // namespace view
