#include "RibbonBody.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace view {

BodyMaker::BodyMaker(Ribbon& ribbon, std::span<const BodyDetail> details)
    : m_mesh(ribbon.mesh), m_cuts(ribbon.cuts), m_details(details.begin(), details.end()),
      m_round(roundShape()), m_flat(flatShape()) {
    m_mesh.coarser.resize(details.size() - 1);
}

BodyMaker::Shape BodyMaker::roundShape() const {
    Shape shape;
    const std::size_t count = m_details[0].corners.size();
    for (std::size_t i = 0; i < count; ++i) {
        const double angle =
            2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(count);
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        shape.corners.push_back({c, s, c, s, 0});
    }
    for (std::size_t detail = 0; detail < m_details.size(); ++detail) {
        const std::vector<unsigned>& kept = m_details[detail].corners;
        Sides& sides = shape.details.emplace_back();
        for (std::size_t i = 0; i < kept.size(); ++i) {
            sides.sides.push_back({kept[i], kept[(i + 1) % kept.size()]});
            sides.outline.push_back(kept[i]);
            shape.corners[kept[i]].detail = detail;
        }
    }
    return shape;
}

BodyMaker::Shape BodyMaker::flatShape() const {
    // Each place has two corners, one for each of its sides with its own normal.
    const std::size_t last = m_details.size() - 1;
    return {{{1, -1, 1, 0, last},
             {1, 1, 1, 0, last},
             {1, 1, 0, 1, last},
             {-1, 1, 0, 1, last},
             {-1, 1, -1, 0, last},
             {-1, -1, -1, 0, last},
             {-1, -1, 0, -1, last},
             {1, -1, 0, -1, last}},
            {m_details.size(), {{{0, 1}, {2, 3}, {4, 5}, {6, 7}}, {0, 2, 4, 6}}}};
}

BodyMaker::Surface BodyMaker::surface(std::size_t detail) {
    if (detail == 0)
        return {&m_mesh.triangles, &m_mesh.ids};
    CoarserSurface& coarser = m_mesh.coarser[detail - 1];
    return {&coarser.triangles, &coarser.ids};
}

void BodyMaker::reserve(std::size_t sections) {
    const std::size_t vertices = sections * std::max(m_round.corners.size(), m_flat.corners.size());
    m_mesh.vertices.reserve(vertices);
    m_mesh.normals.reserve(vertices);
    m_vertexDetails.reserve(vertices);
    for (std::size_t detail = 0; detail < m_details.size(); ++detail) {
        const std::size_t sides =
            std::max(m_round.details[detail].sides.size(), m_flat.details[detail].sides.size());
        const std::size_t triangles =
            sections * m_details[detail].subdivisions / m_details[0].subdivisions * 2 * sides;
        surface(detail).triangles->reserve(triangles);
        surface(detail).ids->reserve(triangles);
    }
}

void BodyMaker::addRound(const std::vector<BodySection>& sections) {
    add(m_round, sections);
}

void BodyMaker::addFlat(const std::vector<BodySection>& sections) {
    add(m_flat, sections);
}

std::uint32_t BodyMaker::addVertex(const Vector& place, const Vector& normal, std::size_t detail) {
    m_mesh.vertices.push_back(pointOf(place));
    m_mesh.normals.push_back(pointOf(normal));
    m_vertexDetails.push_back(static_cast<std::uint8_t>(detail));
    return static_cast<std::uint32_t>(m_mesh.vertices.size() - 1);
}

// Where a residue's part begins and ends is in all of them.
unsigned BodyMaker::detailsOf(const BodySection& section) const {
    unsigned details = 0;
    for (std::size_t i = 0; i < m_details.size(); ++i)
        if (section.step % (m_details[0].subdivisions / m_details[i].subdivisions) == 0)
            details |= 1U << i;
    return details;
}

std::uint32_t BodyMaker::addSection(const Shape& shape, const BodySection& section,
                                    std::size_t detail, bool isCut) {
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
        addVertex(place, unitOr(normal, at.across),
                  isCut ? detail : std::min(detail, corner.detail));
    }
    return first;
}

void BodyMaker::addCap(const Shape& shape, const BodySection& section, bool isEnd, Id id) {
    const PathPoint& at = section.point;
    const Vector normal = at.along * (isEnd ? 1 : -1);
    const auto first = static_cast<std::uint32_t>(m_mesh.vertices.size());
    for (const std::uint32_t index : shape.details[0].outline) {
        const Corner& corner = shape.corners[index];
        const Vector place = at.place + at.across * (corner.across * section.halfWidth) +
                             at.up * (corner.up * section.halfThickness);
        addVertex(place, normal, corner.detail);
    }
    for (std::size_t detail = 0; detail < m_details.size(); ++detail) {
        const Surface to = surface(detail);
        std::uint32_t before = 0;
        std::uint32_t count = 0;
        for (std::uint32_t vertex = first; const std::uint32_t index : shape.details[0].outline) {
            const std::uint32_t here = vertex++;
            if (shape.corners[index].detail < detail)
                continue;
            if (count > 1 && isEnd)
                to.add(first, before, here, id);
            else if (count > 1)
                to.add(first, here, before, id);
            before = here;
            ++count;
        }
    }
}

void BodyMaker::add(const Shape& shape, const std::vector<BodySection>& sections) {
    addCap(shape, sections.front(), false, sections.front().id);
    const std::size_t last = sections.size() - 1;
    const std::vector<std::uint32_t>& outline = shape.details[0].outline;
    m_placed.clear();
    for (std::size_t i = 0; i <= last; ++i) {
        const bool isEnd = i == 0 || i == last;
        const bool isCut = !isEnd && sections[i].id != sections[i - 1].id;
        const unsigned details =
            isEnd || isCut ? (1U << m_details.size()) - 1 : detailsOf(sections[i]);
        const auto coarsest = static_cast<std::size_t>(std::bit_width(details) - 1);
        // The corners of a cut follow each other in any case.
        m_placed.push_back({addSection(shape, sections[i], coarsest, isCut), details});
        if (isCut)
            m_cuts.push_back({m_placed.back().firstVertex, sections[i - 1].id, sections[i].id,
                              static_cast<std::uint16_t>(outline.size()),
                              static_cast<std::uint16_t>(outline[1])});
    }
    for (std::size_t detail = 0; detail < m_details.size(); ++detail)
        addSides(shape, sections, detail);
    addCap(shape, sections.back(), true, sections[last - 1].id);
}

void BodyMaker::addSides(const Shape& shape, const std::vector<BodySection>& sections,
                         std::size_t detail) {
    const Surface to = surface(detail);
    std::size_t before = 0;
    for (std::size_t i = 1; i < m_placed.size(); ++i) {
        if ((m_placed[i].details >> detail & 1U) == 0)
            continue;
        const std::uint32_t from = m_placed[before].firstVertex;
        const std::uint32_t end = m_placed[i].firstVertex;
        for (const auto& [a, b] : shape.details[detail].sides) {
            to.add(from + a, from + b, end + b, sections[before].id);
            to.add(from + a, end + b, end + a, sections[before].id);
        }
        before = i;
    }
}

// It is the same in all details, as there are few.
void BodyMaker::addBall(const Vector& centre, double radius, Id id) {
    const std::size_t coarsest = m_details.size() - 1;
    const Surface to = surface(0);
    const std::size_t firstTriangle = to.triangles->size();
    const unsigned rings = std::max(2U, static_cast<unsigned>(m_round.corners.size() / 2));
    const auto vertexAt = [&](double angle, const Corner& corner) {
        const Vector normal = {std::sin(angle) * corner.across, std::sin(angle) * corner.up,
                               -std::cos(angle)};
        return addVertex(centre + normal * radius, normal, coarsest);
    };
    const std::uint32_t bottom = vertexAt(0, {});
    std::uint32_t from = 0;
    for (unsigned ring = 1; ring < rings; ++ring) {
        const auto here = static_cast<std::uint32_t>(m_mesh.vertices.size());
        for (const Corner& corner : m_round.corners)
            vertexAt(std::numbers::pi * ring / rings, corner);
        for (const auto& [a, b] : m_round.details[0].sides) {
            if (ring == 1) {
                to.add(bottom, here + b, here + a, id);
            } else {
                to.add(from + a, from + b, here + b, id);
                to.add(from + a, here + b, here + a, id);
            }
        }
        from = here;
    }
    const std::uint32_t top = vertexAt(std::numbers::pi, {});
    for (const auto& [a, b] : m_round.details[0].sides)
        to.add(from + a, from + b, top, id);
    for (std::size_t detail = 1; detail <= coarsest; ++detail)
        for (std::size_t i = firstTriangle; i < to.triangles->size(); ++i) {
            const auto& [a, b, c] = (*to.triangles)[i];
            surface(detail).add(a, b, c, id);
        }
}

void BodyMaker::sortVertices() {
    if (m_mesh.coarser.empty())
        return;
    // How many vertices come before those of a detail, the coarsest ones first.
    std::vector<std::uint32_t> next(m_details.size() + 1, 0);
    for (const std::uint8_t detail : m_vertexDetails)
        ++next[detail];
    std::uint32_t before = 0;
    for (std::size_t detail = m_details.size(); detail-- > 0;) {
        before += std::exchange(next[detail], before);
        if (detail > 0)
            m_mesh.coarser[detail - 1].vertexCount = before;
    }
    std::vector<std::uint32_t> places(m_vertexDetails.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        places[i] = next[m_vertexDetails[i]]++;
    const auto sort = [&places](auto& values) {
        auto sorted = values;
        for (std::size_t i = 0; i < places.size(); ++i)
            sorted[places[i]] = values[i];
        values = std::move(sorted);
    };
    for (RibbonCut& cut : m_cuts)
        cut.firstVertex = places[cut.firstVertex];
    sort(m_mesh.vertices);
    sort(m_mesh.normals);
    for (std::size_t detail = 0; detail < m_details.size(); ++detail)
        for (auto& triangle : *surface(detail).triangles)
            for (std::uint32_t& vertex : triangle)
                vertex = places[vertex];
}

} // namespace view
