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

void TriangleSurfaces::begin(const Frame& frame) {
    for (Surface& surface : m_surfaces)
        surface.number = noNumber;
    m_frame = &frame;
    m_meshes = MeshFinder(frame);
}

void TriangleSurfaces::make(Surface& surface, Number triangle) {
    const Frame& frame = *m_frame;
    const PlacedMesh& placed = m_meshes.meshOf(triangle);
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
    const Id id = placed.id(index);
    surface.normal =
        plane(normalOf(frame, mesh.normals[first]), normalOf(frame, mesh.normals[second]),
              normalOf(frame, mesh.normals[third]));
    surface.id = static_cast<std::int32_t>(id);
    surface.number = triangle;
    const bool isOfId = mesh.colours.empty() || placed.look.hasIdColours;
    const bool isOne = isOfId || mesh.colours.size() == 1;
    const Colour atA = isOfId ? (*frame.scene->idColours)[id - 1] : mesh.colours[isOne ? 0 : first];
    surface.colour = static_cast<std::int32_t>(atA);
    const bool isPlain = isOne || (atA == mesh.colours[second] && atA == mesh.colours[third]);
    surface.isPlain = isPlain ? -1 : 0;
    if (!isPlain)
        m_colours[slotOf(triangle)] = plane(channelsOf(atA), channelsOf(mesh.colours[second]),
                                            channelsOf(mesh.colours[third]));
}

std::int32_t TriangleSurfaces::colourAt(Number triangle, Floats x, Floats y) const {
    const Floats colour = m_colours[slotOf(triangle)].at(x, y);
    const Ints whole = toInts(smaller(larger(colour, all(0.0F)), all(255.0F)) + all(0.5F));
    return whole[0] << 16 | whole[1] << 8 | whole[2];
}

TrianglePoints TriangleSurfaces::at(Ints triangles, Floats x, Floats y) {
    std::array<Floats, 4> normals;
    std::array<Floats, 4> rest;
    const auto set = [&](std::size_t lane) {
        // Two triangles may share a place in the memory.
        const Surface& surface = surfaceOf(triangles[lane]);
        normals[lane] = surface.normal.at(all(x[lane]), y);
        rest[lane] = Floats(load(&surface.colour));
    };
    set(0);
    set(1);
    set(2);
    set(3);
    transpose(normals[0], normals[1], normals[2], normals[3]);
    transpose(rest[0], rest[1], rest[2], rest[3]);
    const auto& [right, up, near, unused] = normals;
    Ints colour = Ints(rest[0]);
    const Ints isPlain = Ints(rest[2]);
    if (isAny(~isPlain))
        for (int lane = 0; lane < 4; ++lane)
            if (surfaceOf(triangles[lane]).isPlain == 0)
                colour[lane] = colourAt(triangles[lane], all(x[lane]), y);
    const Floats squared = right * right + up * up + near * near;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const Ints isKnown = (squared > all(0.0F)) & (squared < all(infinity));
    const Floats factor = select(near < all(0.0F), all(-1.0F), all(1.0F)) / squareRoot(squared);
    return {select(isKnown, right * factor, all(0.0F)), select(isKnown, up * factor, all(0.0F)),
            select(isKnown, near * factor, all(1.0F)), colour, Ints(rest[1])};
}

} // namespace view
