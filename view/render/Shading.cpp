#include "Shading.h"

#include "Balls.h"

#include <cmath>
#include <utility>

namespace view {

namespace {

/// In four samples: which way the surface faces, and what colour it has.
struct Surface {
    Floats x, y, z;
    Ints colour;
};

std::int32_t plain(Colour colour) {
    return static_cast<std::int32_t>(colour);
}

/// Whether four numbers are those of things of one kind.
bool isOneKind(const Frame& frame, Ints numbers) {
    const auto isAll = [numbers](Number start, Number end) {
        return !isAny((numbers < all(start)) | (numbers >= all(end)));
    };
    const Number number = numbers[0];
    return number < frame.stickStart      ? isAll(0, frame.stickStart)
           : number < frame.lineStart     ? isAll(frame.stickStart, frame.lineStart)
           : number < frame.triangleStart ? isAll(frame.lineStart, frame.triangleStart)
                                          : isAll(frame.triangleStart, noNumber);
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
                 plain(scene.colours[balls[2].point]), plain(scene.colours[balls[3].point])}};
}

/// Places on sticks, of which each has an axis and the colours of both ends.
struct StickLanes {
    Floats x, y, z;
    Floats axisX, axisY, axisZ;
    Ints firstColour, secondColour;
};

StickLanes stickLanes(const Frame& frame, Ints sticks) {
    const Scene& scene = *frame.scene;
    const auto segment = [&](int lane) -> const Segment& {
        return scene.sticks[static_cast<std::size_t>(sticks[lane])];
    };
    const Segment& stick = segment(0);
    const Place& from = frame.points[stick.from];
    const Place& to = frame.points[stick.to];
    // Neighbours mostly show the same stick.
    if (!isAny(sticks != all(sticks[0])))
        return {all(from.x),
                all(from.y),
                all(from.z),
                all(to.x - from.x),
                all(to.y - from.y),
                all(to.z - from.z),
                all(plain(scene.colours[stick.from])),
                all(plain(scene.colours[stick.to]))};
    const std::array<Segment, 4> s = {stick, segment(1), segment(2), segment(3)};
    const Places first(from, frame.points[s[1].from], frame.points[s[2].from],
                       frame.points[s[3].from]);
    const Places second(to, frame.points[s[1].to], frame.points[s[2].to], frame.points[s[3].to]);
    const auto colours = [&](std::uint32_t Segment::*end) {
        return Ints{plain(scene.colours[s[0].*end]), plain(scene.colours[s[1].*end]),
                    plain(scene.colours[s[2].*end]), plain(scene.colours[s[3].*end])};
    };
    return {first.x,
            first.y,
            first.z,
            second.x - first.x,
            second.y - first.y,
            second.z - first.z,
            colours(&Segment::from),
            colours(&Segment::to)};
}

Surface stickSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    const Ints halves = numbers - all(frame.stickStart);
    const StickLanes at = stickLanes(frame, halves >> 1);
    const Floats squaredLength = at.axisX * at.axisX + at.axisY * at.axisY + at.axisZ * at.axisZ;
    Floats dx = x - at.x;
    Floats dy = y - at.y;
    Floats dz = depth - at.z;
    // From the nearest point of the axis.
    const Floats place = (dx * at.axisX + dy * at.axisY + dz * at.axisZ) / squaredLength;
    const Floats t = smaller(larger(place, all(0.0F)), all(1.0F));
    dx -= t * at.axisX;
    dy -= t * at.axisY;
    dz -= t * at.axisZ;
    const Floats squared = dx * dx + dy * dy + dz * dz;
    const Ints isFacing = (depth == all(frame.front)) | ~(squared > all(0.0F));
    const Floats inverse = all(1.0F) / squareRoot(squared);
    return {select(isFacing, all(0.0F), dx * inverse), select(isFacing, all(0.0F), -dy * inverse),
            select(isFacing, all(1.0F), dz * inverse),
            select((halves & all(1)) == all(0), at.firstColour, at.secondColour)};
}

/// Of lines and dots.
Ints flatColour(const Frame& frame, Ints numbers) {
    const Scene& scene = *frame.scene;
    std::array<std::uint32_t, 4> points;
    if (isAny(numbers < all(frame.dotStart))) {
        for (int lane = 0; lane < 4; ++lane)
            points[static_cast<std::size_t>(lane)] = pointOf(frame, numbers[lane]);
    } else {
        const Ints dots = numbers - all(frame.dotStart);
        for (int lane = 0; lane < 4; ++lane)
            points[static_cast<std::size_t>(lane)] =
                scene.dots[static_cast<std::size_t>(dots[lane])];
    }
    return Ints{plain(scene.colours[points[0]]), plain(scene.colours[points[1]]),
                plain(scene.colours[points[2]]), plain(scene.colours[points[3]])};
}

Surface triangleSurface(const Frame& frame, TriangleSurfaces& triangles, Ints numbers, Floats x,
                        Floats y) {
    const TrianglePoints points = triangles.at(frame, numbers, x, y);
    return {points.x, points.y, points.z, points.colour};
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

/// Where red, green and blue are in a colour.
constexpr std::array<int, 3> shifts = {16, 8, 0};
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
    std::array<Floats, 3> background; ///< red, green and blue
    std::array<float, 3> highlightAxis = halfway(mainLight);

    Cue(const Frame& frame, const Look& look) : nearest(all(frame.nearZ)) {
        const float range = frame.nearZ - frame.farZ;
        factor = all(range > 0 ? look.depthCue / range : 0.0F);
        for (std::size_t i = 0; i < 3; ++i)
            background[i] = toFloats(channel(all(plain(look.background)), shifts[i]));
    }
};

/// Colours at a depth: own(shift) is a channel of theirs, 0 to 255.
template <class Own> Ints cued(const Cue& cue, Floats depth, const Own& own) {
    const Floats away = smaller(larger((cue.nearest - depth) * cue.factor, all(0.0F)), all(1.0F));
    const auto mixed = [&](std::size_t i) {
        const Floats near = own(shifts[i]);
        return rounded(near + (cue.background[i] - near) * away) << shifts[i];
    };
    return all(plain(0xFF000000U)) | mixed(0) | mixed(1) | mixed(2);
}

Ints lit(const Surface& surface, Floats depth, const Cue& cue) {
    const Floats light = all(ambientPart) + all(mainPart) * cosine(surface, mainLight) +
                         all(fillPart) * cosine(surface, fillLight);
    // No power of it is seen, nor so small that processors take long to calculate with it.
    constexpr float dark = 0.125F;
    Floats shine = larger(cosine(surface, cue.highlightAxis), all(dark));
    for (int power = 1; power < 32; power *= 2)
        shine *= shine;
    shine *= all(highlightPart * 255);
    return cued(cue, depth, [&](int shift) {
        return smaller(toFloats(channel(surface.colour, shift)) * light + shine, all(255.0F));
    });
}

/// Four samples.
struct Samples {
    Ints numbers;
    Floats x, y, depth;
};

/// Colours of samples that show things of one kind.
Ints coloursOf(const Frame& frame, TriangleSurfaces& triangles, const Cue& cue,
               const Samples& samples) {
    const auto& [numbers, x, y, depth] = samples;
    const Number number = numbers[0];
    if (number >= frame.lineStart && number < frame.triangleStart) {
        // Lines and dots are not lit.
        const Ints colour = flatColour(frame, numbers);
        return cued(cue, depth, [&](int shift) { return toFloats(channel(colour, shift)); });
    }
    const Surface surface = number < frame.stickStart ? ballSurface(frame, numbers, x, y, depth)
                            : number < frame.lineStart
                                ? stickSurface(frame, numbers, x, y, depth)
                                : triangleSurface(frame, triangles, numbers, x, y);
    return lit(surface, depth, cue);
}

/// Colours of samples that show things of several kinds.
Ints mixedColours(const Frame& frame, TriangleSurfaces& triangles, const Cue& cue,
                  const Samples& samples) {
    const Ints numbers = samples.numbers;
    Ints result = all(0);
    const auto add = [&](Number start, Number end) {
        const Ints mask = (numbers >= all(start)) & (numbers < all(end));
        if (!isAny(mask))
            return;
        // The other lanes are calculated as copies of one.
        const int lane = firstLane(mask);
        const Ints own = coloursOf(frame, triangles, cue,
                                   {select(mask, numbers, all(numbers[lane])),
                                    select(mask, samples.x, all(samples.x[lane])), samples.y,
                                    select(mask, samples.depth, all(samples.depth[lane]))});
        result = select(mask, own, result);
    };
    add(0, frame.stickStart);
    add(frame.stickStart, frame.lineStart);
    add(frame.lineStart, frame.triangleStart);
    add(frame.triangleStart, noNumber);
    return result;
}

} // namespace

void shade(const Tile& tile, const Frame& frame, const Look& look, TriangleSurfaces& triangles,
           TileColours& colours) {
    const Cue cue(frame, look);
    const Ints background = all(plain(look.background | 0xFF000000U));
    const auto shadeGroup = [&](int row, int column) {
        const Ints numbers = load(tile.numbers(row) + column);
        const Ints isSeen = numbers != all(noNumber);
        if (!isAny(isSeen))
            return background;
        const float left = static_cast<float>(tile.left() + column) + 0.5F;
        Samples samples = {numbers,
                           {left, left + 1, left + 2, left + 3},
                           all(static_cast<float>(tile.top() + row) + 0.5F),
                           load(tile.depths(row) + column)};
        if (isAny(~isSeen)) {
            // Those that show nothing are calculated as copies of one.
            const int lane = firstLane(isSeen);
            samples.numbers = select(isSeen, numbers, all(numbers[lane]));
            samples.x = select(isSeen, samples.x, all(samples.x[lane]));
            samples.depth = select(isSeen, samples.depth, all(samples.depth[lane]));
        }
        return select(isSeen,
                      isOneKind(frame, samples.numbers)
                          ? coloursOf(frame, triangles, cue, samples)
                          : mixedColours(frame, triangles, cue, samples),
                      background);
    };
    for (int row = 0; row < tile.height(); ++row)
        Tile::eachRun(Tile::runsOf(tile.drawnRuns(), row), [&](int from, int end) {
            for (int column = from; column < end; column += 4)
                store(colours.data() + row * tileSide + column, shadeGroup(row, column));
        });
}

Id idOf(const Frame& frame, Number number) {
    if (number < frame.triangleStart)
        return frame.scene->ids[pointOf(frame, number)];
    const PlacedMesh& placed = frame.meshOf(number);
    return placed.id(static_cast<std::size_t>(number - placed.start));
}

} // namespace view
