#include "TriangleSurfaces.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace view {

namespace {

/// Relative to the sides' lengths, a smaller area says nothing about how a value changes.
constexpr float leastArea = 1e-3F;

Floats normalOf(const Frame& frame, const Point& normal) {
    const auto part = [&](std::size_t i) {
        return all(normal[i]) *
               Floats{frame.camera.axes[0][i], frame.camera.axes[1][i], frame.camera.axes[2][i], 0};
    };
    return part(0) + part(1) + part(2);
}

Floats channelsOf(Colour colour) {
    const auto channel = [&](int shift) { return static_cast<float>(colour >> shift & 255U); };
    return Floats{channel(16), channel(8), channel(0), 0};
}

/// Changes in x and y from the first corner to the two others, and twice the area.
struct Sides {
    float bx, by, cx, cy, area;
    bool isNarrow() const {
        return !(std::abs(area) > leastArea * (std::abs(bx * cy) + std::abs(by * cx)));
    }
};

} // namespace

void TriangleSurfaces::forget() {
    m_numbers.fill(noNumber);
}

TriangleSurfaces::Surface TriangleSurfaces::make(const Frame& frame, Number triangle) {
    const PlacedMesh& placed = frame.meshOf(triangle);
    const Mesh& mesh = *placed.mesh;
    const auto index = static_cast<std::size_t>(triangle - placed.start);
    const auto& [first, second, third] = (*placed.triangles)[index];
    const Place* const vertices = frame.vertices.data() + placed.firstVertex;
    const Place& a = vertices[first];
    const Place& b = vertices[second];
    const Place& c = vertices[third];
    Sides sides = {b.x - a.x, b.y - a.y, c.x - a.x, c.y - a.y, 0};
    sides.area = sides.bx * sides.cy - sides.by * sides.cx;
    const float inverse = 1 / sides.area;
    const auto plane = [&](Floats atA, Floats atB, Floats atC) -> Plane {
        if (sides.isNarrow())
            return {(atA + atB + atC) * all(1.0F / 3), all(0.0F), all(0.0F)};
        const Floats toB = (atB - atA) * all(inverse);
        const Floats toC = (atC - atA) * all(inverse);
        const Floats alongX = toB * all(sides.cy) - toC * all(sides.by);
        const Floats alongY = toC * all(sides.bx) - toB * all(sides.cx);
        return {atA - (alongX * all(a.x) + alongY * all(a.y)), alongX, alongY};
    };
    Surface surface = {
        plane(normalOf(frame, mesh.normals[first]), normalOf(frame, mesh.normals[second]),
              normalOf(frame, mesh.normals[third])),
        {},
        static_cast<std::int32_t>(mesh.colours.empty()
                                      ? (*frame.scene->idColours)[placed.id(index) - 1]
                                      : mesh.colours[0]),
        true};
    if (mesh.colours.size() <= 1)
        return surface;
    const Colour atA = mesh.colours[first];
    const Colour atB = mesh.colours[second];
    const Colour atC = mesh.colours[third];
    surface.plainColour = static_cast<std::int32_t>(atA);
    surface.isPlain = atA == atB && atA == atC;
    if (!surface.isPlain)
        surface.colour = plane(channelsOf(atA), channelsOf(atB), channelsOf(atC));
    return surface;
}

TrianglePoints TriangleSurfaces::at(const Frame& frame, Ints triangles, Floats x, Floats y) {
    std::array<Floats, 4> normals;
    TrianglePoints points;
    for (int lane = 0; lane < 4; ++lane) {
        // Two triangles may share a place in the memory.
        const Surface& surface = surfaceOf(frame, triangles[lane]);
        const Floats atX = all(x[lane]);
        normals[static_cast<std::size_t>(lane)] = surface.normal.at(atX, y);
        points.colour[lane] = surface.plainColour;
        if (surface.isPlain)
            continue;
        const Floats channels =
            smaller(larger(surface.colour.at(atX, y), all(0.0F)), all(255.0F)) + all(0.5F);
        const Ints whole = __builtin_convertvector(channels, Ints);
        points.colour[lane] = whole[0] << 16 | whole[1] << 8 | whole[2];
    }
    transpose(normals[0], normals[1], normals[2], normals[3]);
    const auto& [right, up, near, unused] = normals;
    const Floats squared = right * right + up * up + near * near;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const Ints isKnown = (squared > all(0.0F)) & (squared < all(infinity));
    const Floats factor = select(near < all(0.0F), all(-1.0F), all(1.0F)) / squareRoot(squared);
    points.x = select(isKnown, right * factor, all(0.0F));
    points.y = select(isKnown, up * factor, all(0.0F));
    points.z = select(isKnown, near * factor, all(1.0F));
    return points;
}

} // namespace view
