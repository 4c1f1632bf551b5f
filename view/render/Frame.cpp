#include "Frame.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace view {

namespace {

constexpr std::size_t pointsAPart = 1 << 16;

bool isPlace(const Point& point) {
    return std::abs(point[0]) <= farthest && std::abs(point[1]) <= farthest &&
           std::abs(point[2]) <= farthest;
}

float along(const Point& axis, const Point& from) {
    return axis[0] * from[0] + axis[1] * from[1] + axis[2] * from[2];
}

} // namespace

Place Frame::place(const Point& point) const {
    if (!isPlace(point))
        return {std::numeric_limits<float>::quiet_NaN(), 0, 0};
    const Point from = {point[0] - camera.centre[0], point[1] - camera.centre[1],
                        point[2] - camera.centre[2]};
    return {static_cast<float>(width) * 0.5F + along(camera.axes[0], from) * scale,
            static_cast<float>(height) * 0.5F - along(camera.axes[1], from) * scale,
            along(camera.axes[2], from) * scale};
}

bool project(Frame& frame, Workers& workers, const std::stop_token& stop) {
    frame.scale = static_cast<float>(frame.height / frame.camera.height);
    frame.front = static_cast<float>(frame.camera.front * frame.scale);
    frame.back = static_cast<float>(frame.camera.back * frame.scale);
    const std::vector<Point>& points = frame.scene->points;
    frame.points.resize(points.size());
    return workers.run((points.size() + pointsAPart - 1) / pointsAPart,
                       [&](std::size_t part, std::size_t) {
                           const std::size_t end =
                               std::min(points.size(), (part + 1) * pointsAPart);
                           for (std::size_t i = part * pointsAPart; i < end; ++i)
                               frame.points[i] = frame.place(points[i]);
                       },
                       stop);
}

} // namespace view
