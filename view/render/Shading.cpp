#include "Shading.h"

#include "Balls.h"

#include <cmath>

namespace view {

namespace {

/// In four samples: which way the surface faces, and what colour it has. A flat one is not lit.
struct Surface {
    Floats x, y, z;
    Ints colour;
    Ints isFlat;
};

/// In one sample.
struct Spot {
    float x, y, z;
    Colour colour;
    bool isFlat;
};

std::int32_t plain(Colour colour) {
    return static_cast<std::int32_t>(colour);
}

Surface ballSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    const Scene& scene = *frame.scene;
    const std::array<Ball, 4> balls = {scene.balls[static_cast<std::size_t>(numbers[0])],
                                       scene.balls[static_cast<std::size_t>(numbers[1])],
                                       scene.balls[static_cast<std::size_t>(numbers[2])],
                                       scene.balls[static_cast<std::size_t>(numbers[3])]};
    const std::array<Place, 4> at = {frame.points[balls[0].point], frame.points[balls[1].point],
                                     frame.points[balls[2].point], frame.points[balls[3].point]};
    const Floats radius =
        Floats{balls[0].radius, balls[1].radius, balls[2].radius, balls[3].radius} *
        all(frame.scale);
    const Floats dx = x - Floats{at[0].x, at[1].x, at[2].x, at[3].x};
    const Floats dy = y - Floats{at[0].y, at[1].y, at[2].y, at[3].y};
    const Floats rest = radius * radius - dy * dy - dx * dx;
    // A cut faces the viewer, and so does what is too small to show a shape.
    const Ints isFacing =
        (rest < all(0.0F)) | (radius < all(leastRound)) | (depth == all(frame.front));
    const Floats inverse = all(1.0F) / radius;
    return {select(isFacing, all(0.0F), dx * inverse), select(isFacing, all(0.0F), -dy * inverse),
            select(isFacing, all(1.0F), squareRoot(larger(rest, all(0.0F))) * inverse),
            Ints{plain(scene.colours[balls[0].point]), plain(scene.colours[balls[1].point]),
                 plain(scene.colours[balls[2].point]), plain(scene.colours[balls[3].point])},
            all(0)};
}

Spot spotOf(const Frame& frame, Number number, float x, float y, float depth) {
    if (number < frame.stickStart) {
        const Surface ball = ballSurface(frame, all(number), all(x), all(y), all(depth));
        return {ball.x[0], ball.y[0], ball.z[0], static_cast<Colour>(ball.colour[0]), false};
    }
    return {0, 0, 1, 0, true};
}

/// Four samples, some of which may be empty.
Surface mixedSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    std::array<Spot, 4> spots;
    for (std::size_t lane = 0; lane < spots.size(); ++lane)
        spots[lane] = numbers[lane] == noNumber
                          ? Spot{0, 0, 1, 0, true}
                          : spotOf(frame, numbers[lane], x[lane], y[lane], depth[lane]);
    const auto& [a, b, c, d] = spots;
    return {Floats{a.x, b.x, c.x, d.x}, Floats{a.y, b.y, c.y, d.y}, Floats{a.z, b.z, c.z, d.z},
            Ints{plain(a.colour), plain(b.colour), plain(c.colour), plain(d.colour)},
            Ints{-a.isFlat, -b.isFlat, -c.isFlat, -d.isFlat}};
}

/// The cosine of the angle to a light, 0 on the side that is turned away.
Floats cosine(const Surface& surface, const std::array<float, 3>& light) {
    return larger(surface.x * all(light[0]) + surface.y * all(light[1]) + surface.z * all(light[2]),
                  all(0.0F));
}

/// Half-way between a light and the viewer.
std::array<float, 3> halfway(const std::array<float, 3>& light) {
    const float z = light[2] + 1;
    const float length = std::sqrt(light[0] * light[0] + light[1] * light[1] + z * z);
    return {light[0] / length, light[1] / length, z / length};
}

/// One of red, green and blue, by its place in a colour.
Ints channel(Ints colour, int shift) {
    return (colour >> shift) & all(255);
}
Floats toFloats(Ints x) {
    return __builtin_convertvector(x, Floats);
}
Ints rounded(Floats x) {
    return __builtin_convertvector(x + all(0.5F), Ints);
}

struct Cue {
    Floats nearest;
    Floats factor;
    Ints background;

    Cue(const Frame& frame, const Look& look)
        : nearest(all(frame.nearZ)), background(all(plain(look.background))) {
        const float range = frame.nearZ - frame.farZ;
        factor = all(range > 0 ? look.depthCue / range : 0.0F);
    }
};

Ints lit(const Surface& surface, Floats depth, const Cue& cue, const Surface& highlightAxis) {
    const Floats light = select(surface.isFlat, all(1.0F),
                                all(ambientPart) + all(mainPart) * cosine(surface, mainLight) +
                                    all(fillPart) * cosine(surface, fillLight));
    Floats shine = larger(surface.x * highlightAxis.x + surface.y * highlightAxis.y +
                              surface.z * highlightAxis.z,
                          all(0.0F));
    for (int power = 1; power < 32; power *= 2)
        shine *= shine;
    shine = select(surface.isFlat, all(0.0F), shine * all(highlightPart * 255));
    const Floats away = smaller(larger((cue.nearest - depth) * cue.factor, all(0.0F)), all(1.0F));
    Ints result = all(plain(0xFF000000U));
    for (const int shift : {0, 8, 16}) {
        const Floats own =
            smaller(toFloats(channel(surface.colour, shift)) * light + shine, all(255.0F));
        const Floats mixed = own + (toFloats(channel(cue.background, shift)) - own) * away;
        result |= rounded(mixed) << shift;
    }
    return result;
}

} // namespace

void shade(const Tile& tile, const Frame& frame, const Look& look, TileColours& colours) {
    const Cue cue(frame, look);
    const Ints background = all(plain(look.background | 0xFF000000U));
    const std::array<float, 3> axis = halfway(mainLight);
    const Surface highlightAxis = {all(axis[0]), all(axis[1]), all(axis[2]), {}, {}};
    for (int row = 0; row < tile.height(); ++row) {
        const Floats y = all(static_cast<float>(tile.top() + row) + 0.5F);
        for (int column = 0; column < tile.width(); column += 4) {
            const Ints numbers = load(tile.numbers(row) + column);
            const Ints isSeen = numbers != all(noNumber);
            Ints result = background;
            if (isAny(isSeen)) {
                const Floats depth = load(tile.depths(row) + column);
                const float left = static_cast<float>(tile.left() + column) + 0.5F;
                const Floats x = {left, left + 1, left + 2, left + 3};
                const bool isMixed = isAny(numbers >= all(frame.stickStart));
                result = lit(isMixed ? mixedSurface(frame, numbers, x, y, depth)
                                     : ballSurface(frame, numbers, x, y, depth),
                             depth, cue, highlightAxis);
                result = select(isSeen, result, background);
            }
            store(colours.data() + row * tileSide + column, result);
        }
    }
}

Id idOf(const Frame& frame, Number number) {
    if (number < frame.stickStart)
        return frame.scene->ids[frame.scene->balls[static_cast<std::size_t>(number)].point];
    return noId;
}

} // namespace view
