#include "Ribbon.h"

#include "RibbonBody.h"
#include "RibbonPath.h"
#include "render/Camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>

namespace view {

namespace {

using Kind = RibbonResidue::Kind;

// As many as a section may have.
constexpr unsigned mostCorners = 1000;
// Å between guide points. Nearer than that there is no path from one to the next.
constexpr double nearest = 0.5;

bool goesOn(const RibbonResidue& from, const RibbonResidue& to) {
    return to.isLinkedToPrevious && from.kind == to.kind && isPlace(to.guide) &&
           distance(vectorOf(from.guide), vectorOf(to.guide)) >= nearest;
}

bool isHelix(SecondaryStructure structure) {
    return structure == SecondaryStructure::AlphaHelix || structure == SecondaryStructure::Helix3 ||
           structure == SecondaryStructure::HelixPi;
}

enum class Form : std::uint8_t { Tube, Helix, Strand, Band };

Form formOf(const RibbonResidue& residue) {
    if (residue.kind == Kind::Nucleotide)
        return Form::Band;
    if (isHelix(residue.structure))
        return Form::Helix;
    return residue.structure == SecondaryStructure::Strand ? Form::Strand : Form::Tube;
}

double smoothStep(double t) {
    return t * t * (3 - 2 * t);
}

// The ribbon of residues that are linked.
class Chain {
public:
    Chain(std::span<const RibbonResidue> residues, const RibbonStyle& style, BodyMaker& bodies)
        : m_residues(residues), m_style(style), m_bodies(bodies), m_steps(style.subdivisions) {
        for (const RibbonResidue& residue : residues) {
            m_forms.push_back(formOf(residue));
            m_guides.push_back(vectorOf(residue.guide));
            m_directions.push_back(
                isPlace(residue.direction) ? unitOr(vectorOf(residue.direction), {}) : Vector{});
        }
        for (std::size_t i = 0; i < residues.size(); ++i) {
            // The width of a band is across the path and across the direction to the base.
            if (m_forms[i] == Form::Band)
                m_directions[i] =
                    cross(m_directions[i], m_guides[std::min(i + 1, residues.size() - 1)] -
                                               m_guides[std::max<std::size_t>(i, 1) - 1]);
        }
        forEachRun([&](std::size_t from, std::size_t to) {
            if (to - from == 1 && m_forms[from] != Form::Band)
                m_forms[from] = Form::Tube;
        });
    }

    void draw() {
        if (m_residues.size() == 1) {
            m_bodies.addBall(m_guides[0], m_style.loneRadius, m_residues[0].id);
            return;
        }
        smoothStrands();
        m_path = ribbonPath(m_guides, m_directions, m_steps);
        std::size_t drawn = 0; // the first residue that is not in a body yet
        forEachRun([&](std::size_t from, std::size_t to) {
            if (m_forms[from] != Form::Strand)
                return;
            drawRound(drawn, from);
            drawStrand(from, to);
            drawn = to;
        });
        drawRound(drawn, m_residues.size());
    }

private:
    // Calls `visit` for the residues from `from` up to `to`, which is not included, that have one
    // form.
    template <class Visit> void forEachRun(const Visit& visit) {
        for (std::size_t from = 0; from < m_forms.size();) {
            std::size_t to = from + 1;
            while (to < m_forms.size() && m_forms[to] == m_forms[from])
                ++to;
            visit(from, to);
            from = to;
        }
    }

    // CA zigzag about the middle of a strand from residue to residue, and so do the directions of
    // C=O. The mean with half of each neighbour has none of a zigzag.
    void smoothStrands() {
        const std::vector<Vector> guides = m_guides;
        std::vector<Vector> directions = m_directions;
        for (std::size_t i = 1; i < directions.size(); ++i)
            if (dot(directions[i], directions[i - 1]) < 0)
                directions[i] = directions[i] * -1;
        for (std::size_t i = 0; i < guides.size(); ++i) {
            if (m_forms[i] != Form::Strand)
                continue;
            if (i > 0 && i + 1 < guides.size())
                m_guides[i] = (guides[i - 1] + guides[i] * 2 + guides[i + 1]) * 0.25;
            m_directions[i] = directions[i] * 2;
            for (const std::size_t j : {i - 1, i + 1})
                if (j < guides.size() && m_forms[j] == Form::Strand)
                    m_directions[i] = m_directions[i] + directions[j];
        }
    }

    // The residue that has the part of the path after a point.
    std::size_t residueAfter(std::size_t point) const { return (point + m_steps / 2) / m_steps; }

    // The points half-way to the residues before and after.
    std::size_t begin(std::size_t residue) const {
        return residue == 0 ? 0 : residue * m_steps - m_steps / 2;
    }
    std::size_t end(std::size_t residue) const {
        return std::min(residue * m_steps + m_steps / 2, m_path.size() - 1);
    }

    std::array<double, 2> roundSize(Form form) const {
        switch (form) {
        case Form::Helix:
            return {m_style.helixHalfWidth, m_style.helixHalfThickness};
        case Form::Band:
            return {m_style.nucleicHalfWidth, m_style.nucleicHalfThickness};
        default:
            return {m_style.coilRadius, m_style.coilRadius};
        }
    }

    BodySection section(std::size_t point, double halfWidth, double halfThickness,
                        double narrowing = 0) const {
        const std::size_t residue = std::min(residueAfter(point), m_residues.size() - 1);
        return {m_path[point],
                halfWidth,
                halfThickness,
                narrowing,
                static_cast<unsigned>((point + m_steps / 2) % m_steps),
                m_residues[residue].id};
    }

    BodySection roundSection(std::size_t point) const {
        const std::size_t residue = point / m_steps;
        const std::size_t next = std::min(residue + 1, m_residues.size() - 1);
        const double way = smoothStep(static_cast<double>(point % m_steps) / m_steps);
        const auto [fromWidth, fromThickness] = roundSize(m_forms[residue]);
        const auto [toWidth, toThickness] = roundSize(m_forms[next]);
        return section(point, fromWidth + (toWidth - fromWidth) * way,
                       fromThickness + (toThickness - fromThickness) * way);
    }

    void drawRound(std::size_t from, std::size_t to) {
        if (from == to)
            return;
        m_sections.clear();
        for (std::size_t point = begin(from); point <= end(to - 1); ++point)
            m_sections.push_back(roundSection(point));
        m_bodies.addRound(m_sections);
    }

    void drawStrand(std::size_t from, std::size_t to) {
        const std::size_t strandBegin = begin(from);
        const std::size_t strandEnd = end(to - 1);
        // The head of the arrow is one and a half residues long.
        const std::size_t headSteps = std::min(m_steps + m_steps / 2, strandEnd - strandBegin);
        const std::size_t headBegin = strandEnd - headSteps;
        const double thickness = m_style.strandHalfThickness;
        m_sections.clear();
        for (std::size_t point = strandBegin; point <= headBegin; ++point)
            m_sections.push_back(section(point, m_style.strandHalfWidth, thickness));
        if (m_sections.size() > 1)
            m_bodies.addFlat(m_sections);
        double headLength = 0;
        for (std::size_t point = headBegin; point < strandEnd; ++point)
            headLength += distance(m_path[point].place, m_path[point + 1].place);
        // The tip is as wide as the tube that goes on there.
        const double narrowing = m_style.arrowHalfWidth - m_style.coilRadius;
        const double slope = headLength > 0 ? narrowing / headLength : 0;
        m_sections.clear();
        for (std::size_t point = headBegin; point <= strandEnd; ++point) {
            const double way =
                static_cast<double>(point - headBegin) / static_cast<double>(headSteps);
            m_sections.push_back(
                section(point, m_style.arrowHalfWidth - narrowing * way, thickness, slope));
        }
        if (m_sections.size() > 1)
            m_bodies.addFlat(m_sections);
    }

    std::span<const RibbonResidue> m_residues;
    const RibbonStyle& m_style;
    BodyMaker& m_bodies;
    std::size_t m_steps;
    std::vector<Form> m_forms;
    std::vector<Vector> m_guides;
    std::vector<Vector> m_directions;
    std::vector<PathPoint> m_path;
    std::vector<BodySection> m_sections;
};

// Room was made for the form that needs most.
void compact(Ribbon& ribbon) {
    ribbon.mesh.vertices.shrink_to_fit();
    ribbon.mesh.normals.shrink_to_fit();
    ribbon.mesh.triangles.shrink_to_fit();
    ribbon.mesh.ids.shrink_to_fit();
    for (CoarserSurface& surface : ribbon.mesh.coarser) {
        surface.triangles.shrink_to_fit();
        surface.ids.shrink_to_fit();
    }
    ribbon.cuts.shrink_to_fit();
}

// Closes what ends at a cut, or else what begins there. The corners go counter-clockwise, seen from
// where the ribbon goes.
void addCap(const Mesh& mesh, const RibbonCut& cut, bool isEnd, Mesh& caps) {
    const auto first = static_cast<std::uint32_t>(caps.vertices.size());
    for (std::uint32_t i = 0; i < cut.corners; ++i)
        caps.vertices.push_back(mesh.vertices[cut.firstVertex + i * cut.step]);
    Vector area;
    for (std::uint32_t i = 2; i < cut.corners; ++i) {
        const std::uint32_t before = first + i - (isEnd ? 1 : 0);
        const std::uint32_t after = first + i - (isEnd ? 0 : 1);
        caps.triangles.push_back({first, before, after});
        caps.ids.push_back(isEnd ? cut.before : cut.after);
        const Vector corner = vectorOf(caps.vertices[first]);
        area = area + cross(vectorOf(caps.vertices[before]) - corner,
                            vectorOf(caps.vertices[after]) - corner);
    }
    caps.normals.resize(caps.vertices.size(), pointOf(unitOr(area, {0, 0, 1})));
}

// From fine to coarse.
std::vector<BodyDetail> detailsOf(const RibbonStyle& style) {
    const unsigned count = style.corners;
    BodyDetail whole = {style.subdivisions, std::vector<unsigned>(count)};
    std::iota(whole.corners.begin(), whole.corners.end(), 0U);
    // The broad sides of a band need fewer corners than its edges.
    BodyDetail small = {style.subdivisions / 2, {}};
    for (const unsigned corner : whole.corners)
        if (count != 12 || (corner % 6 != 2 && corner % 6 != 4))
            small.corners.push_back(corner);
    const unsigned few = std::min(4U, count);
    BodyDetail tiny = {2, {}};
    for (unsigned i = 0; i < few; ++i)
        tiny.corners.push_back(i * count / few);

    std::vector<BodyDetail> details = {whole};
    if (style.subdivisions > 4)
        details.push_back(small);
    if (style.subdivisions > 2)
        details.push_back(tiny);
    tiny.subdivisions = 1;
    details.push_back(tiny);
    return details;
}

// How far the middle between two corners of a section is from the ellipse.
double outlineError(const BodyDetail& detail, unsigned corners, double halfWidth,
                    double halfThickness) {
    double greatest = 0;
    for (std::size_t i = 0; i < detail.corners.size(); ++i) {
        const double turn = std::numbers::pi / corners;
        const unsigned from = detail.corners[i];
        const unsigned to =
            i + 1 < detail.corners.size() ? detail.corners[i + 1] : corners + detail.corners[0];
        const double middle = turn * (from + to);
        greatest =
            std::max(greatest, halfWidth * halfThickness * (1 - std::cos(turn * (to - from))) /
                                   std::hypot(halfThickness * std::cos(middle),
                                              halfWidth * std::sin(middle)));
    }
    return greatest;
}

// The path bends most in an alpha helix, whose CA are 100 degrees apart on a radius of 2.3 Å.
double errorOf(const BodyDetail& detail, const RibbonStyle& style) {
    const double halfTurn = 50 * std::numbers::pi / 180 / detail.subdivisions;
    return (2.3 + style.helixHalfThickness) * (1 - std::cos(halfTurn)) +
           std::max(
               outlineError(detail, style.corners, style.helixHalfWidth, style.helixHalfThickness),
               outlineError(detail, style.corners, style.coilRadius, style.coilRadius));
}

} // namespace

RibbonStyle RibbonStyle::forResidues(std::size_t count) {
    RibbonStyle style;
    if (count > 2'000) {
        style.subdivisions = 4;
        style.corners = 6;
    }
    if (count > 20'000) {
        style.subdivisions = 2;
        style.corners = 4;
    }
    return style;
}

Ribbon makeRibbon(std::span<const RibbonResidue> residues, const RibbonStyle& style) {
    Ribbon ribbon;
    RibbonStyle valid = style;
    valid.subdivisions = std::max(2U, style.subdivisions + style.subdivisions % 2);
    valid.corners = std::clamp(style.corners, 3U, mostCorners);
    ribbon.mesh.isClosed = true;
    const std::vector<BodyDetail> details = detailsOf(valid);
    BodyMaker bodies(ribbon, details);
    for (std::size_t i = 1; i < details.size(); ++i)
        ribbon.mesh.coarser[i - 1].error =
            static_cast<float>(errorOf(details[i], valid) - errorOf(details[0], valid));
    bodies.reserve(residues.size() * valid.subdivisions);
    for (std::size_t from = 0; from < residues.size();) {
        std::size_t to = from + 1;
        if (isPlace(residues[from].guide)) {
            while (to < residues.size() && goesOn(residues[to - 1], residues[to]))
                ++to;
            Chain(residues.subspan(from, to - from), valid, bodies).draw();
        }
        from = to;
    }
    bodies.sortVertices();
    compact(ribbon);
    return ribbon;
}

void addCaps(const Ribbon& ribbon, std::span<const std::uint8_t> idShown, Mesh& caps) {
    const auto isShown = [&](Id id) { return id == noId || idShown[id - 1] != 0; };
    for (const RibbonCut& cut : ribbon.cuts)
        if (isShown(cut.before) != isShown(cut.after))
            addCap(ribbon.mesh, cut, isShown(cut.before), caps);
}

} // namespace view
