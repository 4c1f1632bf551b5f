#include "RibbonBody.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace view {

BodyMaker::Shape BodyMaker::roundShape(unsigned corners) {
    Shape shape;
    for (unsigned i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        shape.corners.push_back({c, s, c, s});
        shape.sides.push_back({i, (i + 1) % corners});
        shape.outline.push_back(i);
    }
    return shape;
}

BodyMaker::Shape BodyMaker::flatShape() {
    // Each place has two corners, one for each of its sides with its own normal.
    return {{{1, -1, 1, 0},
             {1, 1, 1, 0},
             {1, 1, 0, 1},
             {-1, 1, 0, 1},
             {-1, 1, -1, 0},
             {-1, -1, -1, 0},
             {-1, -1, 0, -1},
             {1, -1, 0, -1}},
            {{0, 1}, {2, 3}, {4, 5}, {6, 7}},
            {0, 2, 4, 6}};
}

BodyMaker::BodyMaker(Ribbon& ribbon, unsigned corners)
    : m_mesh(ribbon.mesh), m_cuts(ribbon.cuts), m_corners(corners), m_round(roundShape(corners)),
      m_flat(flatShape()) {}

void BodyMaker::reserve(std::size_t sections) {
    const std::size_t vertices = sections * std::max(m_round.corners.size(), m_flat.corners.size());
    const std::size_t triangles =
        sections * 2 * std::max(m_round.sides.size(), m_flat.sides.size());
    m_mesh.vertices.reserve(vertices);
    m_mesh.normals.reserve(vertices);
    m_mesh.triangles.reserve(triangles);
    m_mesh.ids.reserve(triangles);
}

void BodyMaker::addRound(const std::vector<BodySection>& sections) {
    add(m_round, sections);
}

void BodyMaker::addFlat(const std::vector<BodySection>& sections) {
    add(m_flat, sections);
}

std::uint32_t BodyMaker::addVertex(const Vector& place, const Vector& normal) {
    m_mesh.vertices.push_back(pointOf(place));
    m_mesh.normals.push_back(pointOf(normal));
    return static_cast<std::uint32_t>(m_mesh.vertices.size() - 1);
}

void BodyMaker::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Id id) {
    m_mesh.triangles.push_back({a, b, c});
    m_mesh.ids.push_back(id);
}

std::uint32_t BodyMaker::addSection(const Shape& shape, const BodySection& section) {
    const auto first = static_cast<std::uint32_t>(m_mesh.vertices.size());
    const PathPoint& at = section.point;
    for (const Corner& corner : shape.corners) {
        const Vector place = at.place + at.across * (corner.across * section.halfWidth) +
                             at.up * (corner.up * section.halfThickness);
        // The normal of an ellipse; a rectangle's are along one axis, so that the factor is lost.
        const double across = corner.normalAcross * section.halfThickness;
        const double up = corner.normalUp * section.halfWidth;
        const Vector normal =
            at.across * across + at.up * up + at.along * (std::abs(across) * section.narrowing);
        addVertex(place, unitOr(normal, at.across));
    }
    return first;
}

void BodyMaker::addCap(const Shape& shape, const BodySection& section, bool isEnd, Id id) {
    const PathPoint& at = section.point;
    const Vector normal = at.along * (isEnd ? 1 : -1);
    std::size_t count = 0;
    std::uint32_t first = 0;
    std::uint32_t before = 0;
    for (const std::uint32_t index : shape.outline) {
        const Corner& corner = shape.corners[index];
        const Vector place = at.place + at.across * (corner.across * section.halfWidth) +
                             at.up * (corner.up * section.halfThickness);
        const std::uint32_t vertex = addVertex(place, normal);
        if (count == 0)
            first = vertex;
        else if (count > 1 && isEnd)
            addTriangle(first, before, vertex, id);
        else if (count > 1)
            addTriangle(first, vertex, before, id);
        before = vertex;
        ++count;
    }
}

void BodyMaker::add(const Shape& shape, const std::vector<BodySection>& sections) {
    addCap(shape, sections.front(), false, sections.front().id);
    std::uint32_t from = addSection(shape, sections.front());
    const std::size_t last = sections.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        const BodySection& begin = sections[i];
        const std::uint32_t to = addSection(shape, sections[i + 1]);
        for (const auto& [a, b] : shape.sides) {
            addTriangle(from + a, from + b, to + b, begin.id);
            addTriangle(from + a, to + b, to + a, begin.id);
        }
        if (i + 1 < last && sections[i + 1].id != begin.id)
            m_cuts.push_back({to, begin.id, sections[i + 1].id,
                              static_cast<std::uint16_t>(shape.outline.size()),
                              static_cast<std::uint16_t>(shape.outline[1])});
        from = to;
    }
    addCap(shape, sections.back(), true, sections[last - 1].id);
}

void BodyMaker::addBall(const Vector& centre, double radius, Id id) {
    const unsigned rings = std::max(2U, m_corners / 2);
    const auto vertexAt = [&](double angle, const Corner& corner) {
        const Vector normal = {std::sin(angle) * corner.across, std::sin(angle) * corner.up,
                               -std::cos(angle)};
        return addVertex(centre + normal * radius, normal);
    };
    const std::uint32_t bottom = vertexAt(0, {0, 0, 0, 0});
    std::uint32_t from = 0;
    for (unsigned ring = 1; ring < rings; ++ring) {
        const auto to = static_cast<std::uint32_t>(m_mesh.vertices.size());
        for (const Corner& corner : m_round.corners)
            vertexAt(std::numbers::pi * ring / rings, corner);
        for (const auto& [a, b] : m_round.sides) {
            if (ring == 1) {
                addTriangle(bottom, to + b, to + a, id);
            } else {
                addTriangle(from + a, from + b, to + b, id);
                addTriangle(from + a, to + b, to + a, id);
            }
        }
        from = to;
    }
    const std::uint32_t top = vertexAt(std::numbers::pi, {0, 0, 0, 0});
    for (const auto& [a, b] : m_round.sides)
        addTriangle(from + a, from + b, top, id);
}

} // namespace view
