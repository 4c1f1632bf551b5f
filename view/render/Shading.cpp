#include "Shading.h"

#include "Balls.h"

#include <cmath>
#include <utility>

namespace view {

namespace {

/// In four samples: which way the surface faces, what colour it has, and what it shows.
struct Surface {
    Floats x, y, z;
    Ints colour;
    Ints ids;
    Ints isLit = all(-1);
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

/// The values of four points.
Ints valuesOf(const std::vector<std::uint32_t>& values,
              const std::array<std::uint32_t, 4>& points) {
    return Ints{plain(values[points[0]]), plain(values[points[1]]), plain(values[points[2]]),
                plain(values[points[3]])};
}

Surface ballSurface(const Frame& frame, Ints numbers, Floats x, Floats y, Floats depth) {
    const Scene& scene = *frame.scene;
    const std::array<Ball, 4> balls = {scene.balls[static_cast<std::size_t>(numbers[0])],
                                       scene.balls[static_cast<std::size_t>(numbers[1])],
                                       scene.balls[static_cast<std::size_t>(numbers[2])],
                                       scene.balls[static_cast<std::size_t>(numbers[3])]};
    const std::array<std::uint32_t, 4> points = {balls[0].point, balls[1].point, balls[2].point,
                                                 balls[3].point};
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
            valuesOf(scene.colours, points), valuesOf(scene.ids, points)};
}

/// Places on sticks, of which each has an axis, and the colours and ids of both ends.
struct StickLanes {
    Floats x, y, z;
    Floats axisX, axisY, axisZ;
    Ints firstColour, secondColour, firstId, secondId;
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
                all(plain(scene.colours[stick.to])),
                all(plain(scene.ids[stick.from])),
                all(plain(scene.ids[stick.to]))};
    const std::array<Segment, 4> s = {stick, segment(1), segment(2), segment(3)};
    const Places first(from, frame.points[s[1].from], frame.points[s[2].from],
                       frame.points[s[3].from]);
    const Places second(to, frame.points[s[1].to], frame.points[s[2].to], frame.points[s[3].to]);
    const std::array<std::uint32_t, 4> firstPoints = {s[0].from, s[1].from, s[2].from, s[3].from};
    const std::array<std::uint32_t, 4> secondPoints = {s[0].to, s[1].to, s[2].to, s[3].to};
    return {first.x,
            first.y,
            first.z,
            second.x - first.x,
            second.y - first.y,
            second.z - first.z,
            valuesOf(scene.colours, firstPoints),
            valuesOf(scene.colours, secondPoints),
            valuesOf(scene.ids, firstPoints),
            valuesOf(scene.ids, secondPoints)};
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
    const Ints isFirst = (halves & all(1)) == all(0);
    return {select(isFacing, all(0.0F), dx * inverse), select(isFacing, all(0.0F), -dy * inverse),
            select(isFacing, all(1.0F), dz * inverse),
            select(isFirst, at.firstColour, at.secondColour),
            select(isFirst, at.firstId, at.secondId)};
}

/// The points that lines and dots have their colours and ids of.
std::array<std::uint32_t, 4> flatPoints(const Frame& frame, Ints numbers) {
    const Scene& scene = *frame.scene;
    std::array<std::uint32_t, 4> points;
    for (std::size_t lane = 0; lane < 4; ++lane) {
        const Number number = numbers[lane];
        if (number >= frame.dotStart) {
            points[lane] = scene.dots[static_cast<std::size_t>(number - frame.dotStart)];
        } else {
            const Number half = number - frame.lineStart;
            const Segment& line = scene.lines[static_cast<std::size_t>(half / 2)];
            points[lane] = half % 2 == 0 ? line.from : line.to;
        }
    }
    return points;
}

/// Four samples.
struct Samples {
    Ints numbers;
    Floats x, y, depth;
};

Surface flatSurface(const Frame& frame, Ints numbers) {
    const std::array<std::uint32_t, 4> points = flatPoints(frame, numbers);
    return {all(0.0F),
            all(0.0F),
            all(0.0F),
            valuesOf(frame.scene->colours, points),
            valuesOf(frame.scene->ids, points),
            all(0)};
}

Surface triangleSurface(TriangleSurfaces& triangles, const Samples& samples) {
    const TrianglePoints at = triangles.at(samples.numbers, samples.x, samples.y);
    return {at.x, at.y, at.z, at.colour, at.ids};
}

/// Of samples that show things of one kind.
Surface surfaceOf(const Frame& frame, TriangleSurfaces& triangles, const Samples& samples) {
    const auto& [numbers, x, y, depth] = samples;
    const Number number = numbers[0];
    return number < frame.stickStart      ? ballSurface(frame, numbers, x, y, depth)
           : number < frame.lineStart     ? stickSurface(frame, numbers, x, y, depth)
           : number < frame.triangleStart ? flatSurface(frame, numbers)
                                          : triangleSurface(triangles, samples);
}

/// Of samples that show things of several kinds.
Surface mixedSurface(const Frame& frame, TriangleSurfaces& triangles, const Samples& samples) {
    const Ints numbers = samples.numbers;
    Surface result = {all(0.0F), all(0.0F), all(0.0F), all(0), all(0), all(0)};
    const auto add = [&](Number start, Number end) {
        const Ints mask = (numbers >= all(start)) & (numbers < all(end));
        if (!isAny(mask))
            return;
        // The other lanes are calculated as copies of one.
        const int lane = firstLane(mask);
        const Surface own = surfaceOf(frame, triangles,
                                      {select(mask, numbers, all(numbers[lane])),
                                       select(mask, samples.x, all(samples.x[lane])), samples.y,
                                       select(mask, samples.depth, all(samples.depth[lane]))});
        result = {select(mask, own.x, result.x),     select(mask, own.y, result.y),
                  select(mask, own.z, result.z),     select(mask, own.colour, result.colour),
                  select(mask, own.ids, result.ids), select(mask, own.isLit, result.isLit)};
    };
    add(0, frame.stickStart);
    add(frame.stickStart, frame.lineStart);
    add(frame.lineStart, frame.triangleStart);
    add(frame.triangleStart, noNumber);
    return result;
}

/// What four samples of a row show.
Surface surfaceAt(const Tile& tile, const Frame& frame, Ints background,
                  TriangleSurfaces& triangles, int row, int column) {
    const Ints numbers = load(tile.numbers(row) + column);
    const Ints isSeen = numbers != all(noNumber);
    const Surface nothing = {all(0.0F), all(0.0F), all(0.0F), background, all(plain(noId)), all(0)};
    if (!isAny(isSeen))
        return nothing;
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
    Surface surface = !isAny(numbers < all(frame.triangleStart))
                          ? triangleSurface(triangles, samples)
                      : isOneKind(frame, samples.numbers) ? surfaceOf(frame, triangles, samples)
                                                          : mixedSurface(frame, triangles, samples);
    surface.colour = select(isSeen, surface.colour, background);
    static_assert(noId == 0);
    surface.ids &= isSeen;
    surface.isLit &= isSeen;
    return surface;
}

/// The colours of surfaces, of which z faces the viewer, over what is behind them.
Ints seenThrough(Ints surfaces, Floats z, Ints behind) {
    const Floats away = all(1.0F) - z;
    const Floats opacity = all(facingOpacity) + all(edgeOpacity - facingOpacity) * away * away;
    Ints result = all(plain(0xFF000000U));
    for (const int shift : {0, 8, 16}) {
        const auto channel = [shift](Ints colours) {
            return toFloats((colours >> shift) & all(255));
        };
        const Floats far = channel(behind);
        const Floats near = channel(surfaces);
        result |= toInts(far + (near - far) * opacity + all(0.5F)) << shift;
    }
    return result;
}

} // namespace

Shader::Shader(const Frame& frame, const Look& look)
    : m_frame(frame), m_haze{frame.nearZ, 0, look.background} {
    const float range = frame.nearZ - frame.farZ;
    if (range > 0)
        m_haze.factor = look.depthCue / range;
}

std::span<const LitRun> Shader::setRuns(Runs& runs, const Tile& tile, int row, int from, int end,
                                        TriangleSurfaces& triangles, Id* ids) const {
    const Ints background = all(plain(m_haze.background));
    static_assert(LitRun::length == Tile::blockSide);
    for (int column = from; column < end; column += 4) {
        const Surface surface = surfaceAt(tile, m_frame, background, triangles, row, column);
        LitRun& run = runs[static_cast<std::size_t>((column - from) / LitRun::length)];
        const int half = column % LitRun::length;
        store(run.x.data() + half, surface.x);
        store(run.y.data() + half, surface.y);
        store(run.z.data() + half, surface.z);
        store(run.depth.data() + half, load(tile.depths(row) + column));
        store(run.colour.data() + half, surface.colour);
        store(run.isLit.data() + half, surface.isLit);
        store(reinterpret_cast<std::int32_t*>(ids + (column - from)), surface.ids);
    }
    return std::span(runs).first(static_cast<std::size_t>((end - from) / LitRun::length));
}

void Shader::shade(const Tile& tile, int row, int from, int end, TriangleSurfaces& triangles,
                   const ShadedRow& to) const {
    Runs runs;
    light(m_haze, setRuns(runs, tile, row, from, end, triangles, to.ids), to.colours);
}

void Shader::shadeOver(const Tile& tile, int row, int from, int end, TriangleSurfaces& triangles,
                       const ShadedRow& to) const {
    Runs runs;
    std::array<std::int32_t, tileSide> surfaces;
    const std::span<const LitRun> lit = setRuns(runs, tile, row, from, end, triangles, to.ids);
    light(m_haze, lit, surfaces.data());
    std::size_t at = 0;
    for (const LitRun& run : lit)
        for (std::size_t half = 0; half < LitRun::length; half += 4, at += 4) {
            const Ints isSeen = load(run.isLit.data() + half);
            if (!isAny(isSeen))
                continue;
            const Ints behind = load(to.colours + at);
            const Ints seen =
                seenThrough(load(surfaces.data() + at), load(run.z.data() + half), behind);
            store(to.colours + at, select(isSeen, seen, behind));
        }
}

} // namespace view
