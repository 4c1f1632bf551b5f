#include "Shading.h"

#include "Balls.h"
#include "Triangles.h"

#include <cmath>
#include <utility>

namespace view {

namespace {

/// In four samples: which way the surface faces, and what colour it has. A flat one is not lit.
struct Surface {
    Floats x, y, z;
    Ints colour;
    Ints isFlat;
};

std::int32_t plain(Colour colour) {
    return static_cast<std::int32_t>(colour);
}

/// The point whose colour and id a ball, a half of a stick or of a line, or a dot has.
std::uint32_t pointOf(const Frame& frame, Number number) {
    const auto end = [](const std::vector<Segment>& segments, Number half) {
        const Segment& segment = segments[static_cast<std::size_t>(half / 2)];
        return half % 2 == 0 ? segment.from : segment.to;
    };
    if (number < frame.stickStart)
        return frame.scene->balls[static_cast<std::size_t>(number)].point;
    if (number < frame.lineStart)
        return end(frame.scene->sticks, number - frame.stickStart);
    if (number < frame.dotStart)
        return end(frame.scene->lines, number - frame.lineStart);
    return frame.scene->dots[static_cast<std::size_t>(number - frame.dotStart)];
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

Surface stickSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    const Scene& scene = *frame.scene;
    const auto lane = [&](int i) {
        const Number number = numbers[i] - frame.stickStart;
        const Segment& stick = scene.sticks[static_cast<std::size_t>(number / 2)];
        return std::pair(stick, number % 2 == 0 ? stick.from : stick.to);
    };
    const std::array<std::pair<Segment, std::uint32_t>, 4> ends = {lane(0), lane(1), lane(2),
                                                                   lane(3)};
    const auto at = [&](std::size_t i) -> const Place& { return frame.points[ends[i].first.from]; };
    const auto to = [&](std::size_t i) -> const Place& { return frame.points[ends[i].first.to]; };
    const Floats fromX = {at(0).x, at(1).x, at(2).x, at(3).x};
    const Floats fromY = {at(0).y, at(1).y, at(2).y, at(3).y};
    const Floats fromZ = {at(0).z, at(1).z, at(2).z, at(3).z};
    const Floats axisX = Floats{to(0).x, to(1).x, to(2).x, to(3).x} - fromX;
    const Floats axisY = Floats{to(0).y, to(1).y, to(2).y, to(3).y} - fromY;
    const Floats axisZ = Floats{to(0).z, to(1).z, to(2).z, to(3).z} - fromZ;
    const Floats squaredLength = axisX * axisX + axisY * axisY + axisZ * axisZ;
    Floats dx = x - fromX;
    Floats dy = y - fromY;
    Floats dz = depth - fromZ;
    // From the nearest point of the axis.
    const Floats place = (dx * axisX + dy * axisY + dz * axisZ) / squaredLength;
    const Floats t = smaller(larger(place, all(0.0F)), all(1.0F));
    dx -= t * axisX;
    dy -= t * axisY;
    dz -= t * axisZ;
    const Floats squared = dx * dx + dy * dy + dz * dz;
    const Ints isFacing = (depth == all(frame.front)) | ~(squared > all(0.0F));
    const Floats inverse = all(1.0F) / squareRoot(squared);
    return {select(isFacing, all(0.0F), dx * inverse), select(isFacing, all(0.0F), -dy * inverse),
            select(isFacing, all(1.0F), dz * inverse),
            Ints{plain(scene.colours[ends[0].second]), plain(scene.colours[ends[1].second]),
                 plain(scene.colours[ends[2].second]), plain(scene.colours[ends[3].second])},
            all(0)};
}

/// Of lines and dots.
Ints flatColour(const Frame& frame, Ints numbers) {
    const auto colour = [&](int i) {
        return plain(frame.scene->colours[pointOf(frame, numbers[i])]);
    };
    return Ints{colour(0), colour(1), colour(2), colour(3)};
}

Surface flatSurface(const Frame& frame, Ints numbers) {
    return {all(0.0F), all(0.0F), all(1.0F), flatColour(frame, numbers), all(-1)};
}

Surface triangleSurface(const Frame& frame, Ints numbers, Floats x, Floats y) {
    const TrianglePoints points = trianglePoints(frame, numbers, x, y);
    return {points.x, points.y, points.z, points.colour, all(0)};
}

/// Four samples that show things of several kinds.
Surface mixedSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    Surface surface = {all(0.0F), all(0.0F), all(1.0F), all(0), all(-1)};
    // Lanes of other kinds are calculated as copies of the first lane of the kind.
    const auto add = [&](Number start, Number end, const auto& surfaceOf) {
        const Ints mask = (numbers >= all(start)) & (numbers < all(end));
        if (!isAny(mask))
            return;
        int lane = 0;
        while (mask[lane] == 0)
            ++lane;
        const Surface own =
            surfaceOf(select(mask, numbers, all(numbers[lane])), select(mask, x, all(x[lane])),
                      select(mask, y, all(y[lane])), select(mask, depth, all(depth[lane])));
        surface = {select(mask, own.x, surface.x), select(mask, own.y, surface.y),
                   select(mask, own.z, surface.z), select(mask, own.colour, surface.colour),
                   select(mask, own.isFlat, surface.isFlat)};
    };
    add(0, frame.stickStart,
        [&](Ints n, Floats a, Floats b, Floats z) { return ballSurface(frame, n, a, b, z); });
    add(frame.stickStart, frame.lineStart,
        [&](Ints n, Floats a, Floats b, Floats z) { return stickSurface(frame, n, a, b, z); });
    add(frame.lineStart, frame.triangleStart,
        [&](Ints n, Floats, Floats, Floats) { return flatSurface(frame, n); });
    add(frame.triangleStart, noNumber,
        [&](Ints n, Floats a, Floats b, Floats) { return triangleSurface(frame, n, a, b); });
    return surface;
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
Ints rounded(Floats x) {
    return toInts(x + all(0.5F));
}

/// What all samples of a tile share.
struct Cue {
    Floats nearest;
    Floats factor;
    Ints background;
    std::array<float, 3> highlightAxis = halfway(mainLight);

    Cue(const Frame& frame, const Look& look)
        : nearest(all(frame.nearZ)), background(all(plain(look.background))) {
        const float range = frame.nearZ - frame.farZ;
        factor = all(range > 0 ? look.depthCue / range : 0.0F);
    }
};

/// Colours at a depth: own(shift) is a channel of theirs, 0 to 255.
template <class Own> Ints cued(const Cue& cue, Floats depth, const Own& own) {
    const Floats away = smaller(larger((cue.nearest - depth) * cue.factor, all(0.0F)), all(1.0F));
    Ints result = all(plain(0xFF000000U));
    for (const int shift : {0, 8, 16}) {
        const Floats near = own(shift);
        const Floats mixed = near + (toFloats(channel(cue.background, shift)) - near) * away;
        result |= rounded(mixed) << shift;
    }
    return result;
}

Ints lit(const Surface& surface, Floats depth, const Cue& cue) {
    const Floats light = select(surface.isFlat, all(1.0F),
                                all(ambientPart) + all(mainPart) * cosine(surface, mainLight) +
                                    all(fillPart) * cosine(surface, fillLight));
    Floats shine = cosine(surface, cue.highlightAxis);
    for (int power = 1; power < 32; power *= 2)
        shine *= shine;
    shine = select(surface.isFlat, all(0.0F), shine * all(highlightPart * 255));
    return cued(cue, depth, [&](int shift) {
        return smaller(toFloats(channel(surface.colour, shift)) * light + shine, all(255.0F));
    });
}

/// Colours of four samples that show something.
Ints coloursOf(const Frame& frame, const Cue& cue, Ints numbers, Floats x, Floats y, Floats depth) {
    const auto isAll = [numbers](Number start, Number end) {
        return !isAny((numbers < all(start)) | (numbers >= all(end)));
    };
    if (isAll(0, frame.stickStart))
        return lit(ballSurface(frame, numbers, x, y, depth), depth, cue);
    if (isAll(frame.stickStart, frame.lineStart))
        return lit(stickSurface(frame, numbers, x, y, depth), depth, cue);
    if (isAll(frame.triangleStart, noNumber))
        return lit(triangleSurface(frame, numbers, x, y), depth, cue);
    if (isAll(frame.lineStart, frame.triangleStart)) {
        const Ints colour = flatColour(frame, numbers);
        return cued(cue, depth, [colour](int shift) { return toFloats(channel(colour, shift)); });
    }
    return lit(mixedSurface(frame, numbers, x, y, depth), depth, cue);
}

} // namespace

void shade(const Tile& tile, const Frame& frame, const Look& look, TileColours& colours) {
    const Cue cue(frame, look);
    const Ints background = all(plain(look.background | 0xFF000000U));
    const auto shadeGroup = [&](int row, int column) {
        Ints numbers = load(tile.numbers(row) + column);
        const Ints isSeen = numbers != all(noNumber);
        Ints result = background;
        if (isAny(isSeen)) {
            Floats depth = load(tile.depths(row) + column);
            const float left = static_cast<float>(tile.left() + column) + 0.5F;
            Floats x = {left, left + 1, left + 2, left + 3};
            if (isAny(~isSeen)) {
                // The others are calculated as copies of one.
                int lane = 0;
                while (isSeen[lane] == 0)
                    ++lane;
                numbers = select(isSeen, numbers, all(numbers[lane]));
                depth = select(isSeen, depth, all(depth[lane]));
                x = select(isSeen, x, all(x[lane]));
            }
            const Floats y = all(static_cast<float>(tile.top() + row) + 0.5F);
            result = select(isSeen, coloursOf(frame, cue, numbers, x, y, depth), background);
        }
        store(colours.data() + row * tileSide + column, result);
    };
    for (int row = 0; row < tile.height(); ++row)
        Tile::eachRun(Tile::runsOf(tile.drawnRuns(), row), [&](int from, int end) {
            for (int column = from; column < end; column += 4)
                shadeGroup(row, column);
        });
}

Id idOf(const Frame& frame, Number number) {
    if (number < frame.triangleStart)
        return frame.scene->ids[pointOf(frame, number)];
    const PlacedMesh& placed = frame.meshOf(number);
    return placed.id(static_cast<std::size_t>(number - placed.start));
}

} // namespace view
