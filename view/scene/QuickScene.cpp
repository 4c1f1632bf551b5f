#include "QuickScene.h"

#include "LegibleColours.h"
#include "Ribbons.h"
#include "Shapes.h"

#include <algorithm>
#include <utility>

namespace view {

namespace {

class QuickMaking {
public:
    QuickMaking(const Contents& contents, const Marks& marks, const Styles& styles,
                Colour background)
        : m_contents(contents), m_marks(marks), m_styles(styles), m_legible(background) {}

    Scene run() {
        plan();
        for (std::size_t residue = 0; residue != m_contents.residues.size(); ++residue) {
            takeAtoms(residue);
            takeGuide(residue);
        }
        for (std::size_t i = 0; i != m_contents.shapes.size(); ++i) {
            const Shape& shape = m_contents.shapes[i];
            if (!m_marks.shown[shape.item])
                continue;
            takeSegments(shape);
            if (shape.mesh)
                takeVertices(shape, m_marks.hasOwnColours(i));
        }
        return std::move(m_scene);
    }

private:
    // Which part is taken of what there is, and the room for that.
    void plan() {
        std::size_t dots = 0;
        std::size_t segments = 0;
        for (const Style style : m_styles.atoms)
            dots += style == Style::None ? 0 : 1;
        for (const Shape& shape : m_contents.shapes) {
            if (!m_marks.shown[shape.item])
                continue;
            dots += shape.mesh ? shape.mesh->vertices.size() : 0;
            segments += shape.segments.size();
        }
        const auto guides = static_cast<std::size_t>(
            std::count(m_styles.ribbon.begin(), m_styles.ribbon.end(), true));
        m_dotStep = dots / dotsWhileMoving + 1;
        m_lineStep = (guides + segments) / linesWhileMoving + 1;
        dots = dots / m_dotStep + 1;
        const std::size_t points = dots + (guides + 2 * segments) / m_lineStep + 2;
        m_scene.dots.reserve(dots);
        m_scene.lines.reserve((guides + segments) / m_lineStep + 2);
        m_scene.points.reserve(points);
        m_scene.colours.reserve(points);
        m_scene.ids.reserve(points);
    }

    std::uint32_t addPoint(const Point& point, Colour colour, std::size_t item) {
        m_scene.points.push_back(point);
        m_scene.colours.push_back(m_legible(colour));
        m_scene.ids.push_back(idOf(item));
        return static_cast<std::uint32_t>(m_scene.points.size() - 1);
    }
    std::uint32_t addAtom(std::uint32_t atom) {
        return addPoint(m_contents.positions[atom], m_marks.colours[atom], atom);
    }

    void takeAtoms(std::size_t residue) {
        const std::uint32_t end = m_contents.atomEnd(residue);
        for (std::uint32_t i = m_contents.residues[residue].firstAtom; i != end; ++i)
            if (m_styles.atoms[i] != Style::None && m_dots++ % m_dotStep == 0)
                m_scene.dots.push_back(addAtom(i));
    }

    void takeVertices(const Shape& shape, bool hasOwnColours) {
        const Mesh& mesh = *shape.mesh;
        const Colour ofItem = m_marks.colours[shape.item];
        // Colours that change from vertex to vertex are made so few that each need not be made
        // legible for itself.
        const bool isSmooth = hasOwnColours && mesh.colours.size() > 1;
        const Colour kept = isSmooth ? 0xfff8f8f8 : 0xffffffff;
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i)
            if (m_dots++ % m_dotStep == 0)
                m_scene.dots.push_back(addPoint(mesh.vertices[i],
                                                shownColour(mesh, i, hasOwnColours, ofItem) & kept,
                                                shape.item));
    }

    void takeSegments(const Shape& shape) {
        const Colour colour = m_marks.colours[shape.item];
        for (const Segment& segment : shape.segments)
            if (m_segments++ % m_lineStep == 0)
                m_scene.lines.push_back({addPoint(shape.points[segment.from], colour, shape.item),
                                         addPoint(shape.points[segment.to], colour, shape.item)});
    }

    void takeGuide(std::size_t residue) {
        if (!m_styles.ribbon[residue] || !m_contents.residues[residue].isLinkedToPrevious)
            m_hasGuide = false;
        if (!m_styles.ribbon[residue] || m_guides++ % m_lineStep != 0)
            return;
        const std::uint32_t guide = guideOf(m_contents, m_marks, residue);
        const bool isShown = guide != noAtom && m_marks.shown[guide];
        if (isShown) {
            const std::uint32_t point = addAtom(guide);
            if (m_hasGuide)
                m_scene.lines.push_back({m_guide, point});
            m_guide = point;
        }
        m_hasGuide = isShown;
    }

    const Contents& m_contents;
    const Marks& m_marks;
    const Styles& m_styles;
    LegibleColours m_legible;
    Scene m_scene;
    std::size_t m_dotStep = 1;
    std::size_t m_lineStep = 1;
    // How many were passed.
    std::size_t m_dots = 0;
    std::size_t m_segments = 0;
    std::size_t m_guides = 0;
    /// Whether the chain goes on from a guide point, and which one that is.
    bool m_hasGuide = false;
    std::uint32_t m_guide = 0;
};

} // namespace

Scene makeQuickScene(const Contents& contents, const Marks& marks, const Styles& styles,
                     Colour background) {
    return QuickMaking(contents, marks, styles, background).run();
}

} // namespace view
