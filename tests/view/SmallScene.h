// Scenes that are put together by hand, seen in a picture of 200 x 100 pixels of 0.1 Å.
#pragma once

#include "render/Renderer.h"

#include <QColor>

#include <cmath>

namespace small_scene {

constexpr int width = 200;
constexpr int height = 100;

inline view::Settings smallPicture() {
    return {.width = width, .height = height, .background = 0x102030, .depthCue = 0};
}
inline view::Camera smallCamera() {
    view::Camera camera;
    camera.height = 10;
    return camera;
}

/// Adds a point; its id is the number of points.
inline std::uint32_t addPoint(view::Scene& scene, const view::Point& at, view::Colour colour) {
    scene.points.push_back(at);
    scene.colours.push_back(colour);
    scene.ids.push_back(static_cast<view::Id>(scene.points.size()));
    return static_cast<std::uint32_t>(scene.points.size() - 1);
}
inline void addBall(view::Scene& scene, const view::Point& centre, float radius,
                    view::Colour colour) {
    scene.balls.push_back({addPoint(scene, centre, colour), radius});
}

/// The pixel's index that holds a place right of and above the middle, in Å.
inline std::size_t pixelAt(double right, double up) {
    const auto column = static_cast<int>(std::floor(width / 2.0 + right * 10));
    const auto row = static_cast<int>(std::floor(height / 2.0 - up * 10));
    return static_cast<std::size_t>(row * width + column);
}
inline view::Id idAt(const view::Picture& picture, double right, double up) {
    return picture.ids[pixelAt(right, up)];
}
inline float depthAt(const view::Picture& picture, double right, double up) {
    return picture.depths[pixelAt(right, up)];
}
inline QRgb colourAt(const view::Picture& picture, double right, double up) {
    const auto pixel = static_cast<int>(pixelAt(right, up));
    return picture.image.pixel(pixel % width, pixel / width);
}

/// Within a step of rounding.
inline bool isSimilar(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= 1 && std::abs(qGreen(a) - qGreen(b)) <= 1 &&
           std::abs(qBlue(a) - qBlue(b)) <= 1;
}

} // namespace small_scene
