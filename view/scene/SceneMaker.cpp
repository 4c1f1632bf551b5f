#include "SceneMaker.h"

#include "LegibleColours.h"
#include "MeshLines.h"
#include "QuickScene.h"
#include "Shapes.h"
#include "VanDerWaals.h"

#include <algorithm>
#include <utility>

namespace view {

namespace {

constexpr float stickRadius = 0.22F;  // Å
constexpr float ballPart = 0.28F;     // of the van der Waals radius, for balls on sticks
constexpr float loneAtomPart = 0.25F; // likewise, for atoms without a bond among sticks

bool hasSticks(Style style) {
    return style == Style::Stick || style == Style::BallAndStick;
}

void addLines(const Shape& shape, Colour colour, Scene& scene) {
    const auto first = static_cast<std::uint32_t>(scene.pointCount());
    scene.points.insert(scene.points.end(), shape.points.begin(), shape.points.end());
    scene.colours.resize(scene.pointCount(), colour);
    scene.ids.resize(scene.pointCount(), idOf(shape.item));
    for (const Segment& segment : shape.segments)
        scene.lines.push_back({first + segment.from, first + segment.to});
}

class Making {
public:
    Making(const std::shared_ptr<const Contents>& contents, const Marks& marks,
           const Styles& styles, const Look& look, Scene& scene)
        : m_shared(contents), m_contents(*contents), m_marks(marks), m_styles(styles), m_look(look),
          m_legible(look.background), m_scene(scene) {}

    void run() {
        m_scene.stickRadius = stickRadius;
        takePoints();
        takeBonds();
        takeAtoms();
        takeLines();
    }
    /// The surfaces, behind the meshes that are there; those that are drawn as lines need run().
    /// Returns false after a stop request.
    bool takeSurfaces(const std::stop_token& stop) {
        m_scene.meshLooks.resize(m_scene.meshes.size());
        // Of mesh lines there are so many that they would hide what is behind them.
        m_scene.firstThinLine = m_scene.lines.size();
        for (std::size_t i = 0; i != m_contents.shapes.size(); ++i) {
            const Shape& shape = m_contents.shapes[i];
            if (!shape.mesh || shape.mesh->triangles.empty() || !m_marks.shown[shape.item])
                continue;
            const SurfaceStyle style = m_look.surfaceStyle(shape.identifier);
            if (style == SurfaceStyle::MeshLines) {
                takeMeshLines(shape, m_marks.hasOwnColours(i), stop);
            } else {
                m_scene.meshes.push_back(shape.mesh);
                m_scene.meshLooks.push_back(
                    {style == SurfaceStyle::SeeThrough, !m_marks.hasOwnColours(i)});
            }
            if (stop.stop_requested())
                return false;
        }
        return true;
    }

private:
    bool isDrawn(std::size_t atom) const { return m_styles.atoms[atom] != Style::None; }

    // Where most atoms are drawn the positions serve as the points. Else only those that are drawn
    // have points: of a ribbon few have.
    void takePoints() {
        const std::size_t count = m_contents.atomCount();
        std::size_t drawn = 0;
        for (std::size_t i = 0; i != count; ++i)
            drawn += isDrawn(i) ? 1 : 0;
        const bool isShared = drawn > count / 4 * 3;
        if (isShared)
            m_scene.sharedPoints = {m_shared, &m_contents.positions};
        else
            m_scene.points.reserve(drawn);
        m_scene.colours.reserve(isShared ? count : drawn);
        m_scene.ids.reserve(isShared ? count : drawn);
        m_points.resize(count, noAtom);
        for (std::size_t i = 0; i != count; ++i) {
            if (!isShared && !isDrawn(i))
                continue;
            m_points[i] = static_cast<std::uint32_t>(m_scene.ids.size());
            if (!isShared)
                m_scene.points.push_back(m_contents.positions[i]);
            const bool isThin = m_styles.atoms[i] == Style::Dot || m_styles.atoms[i] == Style::Line;
            m_scene.colours.push_back(isThin ? m_legible(m_marks.colours[i]) : m_marks.colours[i]);
            m_scene.ids.push_back(idOf(i));
            m_hasBonds |= m_styles.atoms[i] == Style::Line || hasSticks(m_styles.atoms[i]);
        }
    }

    // The largest arrays are counted before they are made: growing them would double the memory.
    void takeBonds() {
        m_isBonded.resize(m_contents.atomCount());
        if (!m_hasBonds)
            return;
        std::size_t sticks = 0;
        std::size_t lines = 0;
        forBonds([&](const Segment&, bool isStick) { ++(isStick ? sticks : lines); });
        m_scene.sticks.reserve(sticks);
        m_scene.lines.reserve(lines);
        forBonds([&](const Segment& bond, bool isStick) {
            (isStick ? m_scene.sticks : m_scene.lines)
                .push_back({m_points[bond.from], m_points[bond.to]});
            m_isBonded[bond.from] = m_isBonded[bond.to] = true;
        });
    }
    template <class Use> void forBonds(Use use) const {
        for (std::size_t i = 0; i != m_contents.bonds.size(); ++i) {
            const Segment& bond = m_contents.bonds[i];
            const Style from = m_styles.atoms[bond.from];
            const Style to = m_styles.atoms[bond.to];
            if (!m_marks.bonds[i])
                continue;
            if (hasSticks(from) && hasSticks(to))
                use(bond, true);
            else if (from == Style::Line && to == Style::Line)
                use(bond, false);
        }
    }

    void takeAtoms() {
        std::size_t balls = 0;
        std::size_t dots = 0;
        forSymbols([&](std::size_t, bool isDot) { ++(isDot ? dots : balls); });
        m_scene.balls.reserve(balls);
        m_scene.dots.reserve(dots);
        forSymbols([&](std::size_t atom, bool isDot) {
            if (isDot)
                m_scene.dots.push_back(m_points[atom]);
            else
                m_scene.balls.push_back({m_points[atom], radiusOf(atom, m_styles.atoms[atom])});
        });
    }
    // Uses the atoms that have a symbol of their own, beside their bonds.
    template <class Use> void forSymbols(Use use) const {
        for (std::size_t i = 0; i != m_contents.atomCount(); ++i) {
            const Style style = m_styles.atoms[i];
            const bool isInBonds = style == Style::Stick || style == Style::Line;
            if (isDrawn(i) && !(isInBonds && m_isBonded[i]))
                use(i, style == Style::Dot || style == Style::Line);
        }
    }

    void takeLines() {
        for (const Shape& shape : m_contents.shapes)
            if (m_marks.shown[shape.item])
                addLines(shape, m_legible(m_marks.colours[shape.item]), m_scene);
    }

    void takeMeshLines(const Shape& shape, bool hasOwnColours, const std::stop_token& stop) {
        const Mesh& mesh = *shape.mesh;
        const MeshLines lines = linesOf(mesh, stop);
        const auto first = static_cast<std::uint32_t>(m_scene.pointCount());
        m_scene.points.insert(m_scene.points.end(), lines.points.begin(), lines.points.end());
        m_scene.ids.resize(m_scene.pointCount(), idOf(shape.item));
        m_scene.colours.reserve(m_scene.pointCount());
        for (const std::uint32_t vertex : lines.vertices)
            m_scene.colours.push_back(
                m_legible(shownColour(mesh, vertex, hasOwnColours, m_marks.colours[shape.item])));
        m_scene.lines.reserve(m_scene.lines.size() + lines.lines.size());
        for (const Segment& line : lines.lines)
            m_scene.lines.push_back({first + line.from, first + line.to});
    }

    float radiusOf(std::size_t atom, Style style) const {
        const float radius = vanDerWaalsRadius(m_contents.atomicNumbers[atom]);
        return style == Style::Sphere         ? radius
               : style == Style::BallAndStick ? ballPart * radius
                                              : std::max(loneAtomPart * radius, stickRadius);
    }

    const std::shared_ptr<const Contents>& m_shared;
    const Contents& m_contents;
    const Marks& m_marks;
    const Styles& m_styles;
    const Look& m_look;
    LegibleColours m_legible;
    Scene& m_scene;
    std::vector<std::uint32_t> m_points; ///< of the scene, by atom
    bool m_hasBonds = false;             ///< whether bonds of any atom are drawn
    std::vector<bool> m_isBonded;        ///< atoms that a stick or a line is drawn of
};

// Uses the atoms that are drawn, and those that a ribbon passes.
template <class Use>
void forDrawnAtoms(const Contents& contents, const Marks& marks, const Styles& styles, Use use) {
    for (std::size_t residue = 0; residue != contents.residues.size(); ++residue) {
        const bool isRibbon = styles.ribbon[residue];
        const std::uint32_t end = contents.atomEnd(residue);
        for (std::uint32_t i = contents.residues[residue].firstAtom; i != end; ++i)
            if (styles.atoms[i] != Style::None ||
                (isRibbon && marks.shown[i] && contents.roles[i] != Role::None))
                use(i);
    }
}

} // namespace

SceneMaker::SceneMaker() = default;
SceneMaker::~SceneMaker() = default;

void SceneMaker::prepare(const Snapshot& snapshot, const Look& look) {
    if (m_version != 0 && m_snapshot.contents == snapshot.contents &&
        m_snapshot.marks == snapshot.marks && m_look == look)
        return;
    // What is not used by a picture any more goes before the next scene comes.
    m_scene = nullptr;
    m_quick = nullptr;
    m_styles = chooseStyles(*snapshot.contents, *snapshot.marks, look);
    m_snapshot = snapshot;
    m_look = look;
    ++m_version;
}

std::size_t SceneMaker::size() const {
    constexpr std::size_t trianglesAResidue = 16; // at least
    std::size_t things = 0;
    for (const Style style : m_styles.atoms)
        things += style == Style::None ? 0 : 1;
    for (const bool isRibbon : m_styles.ribbon)
        things += isRibbon ? trianglesAResidue : 0;
    for (const Shape& shape : m_snapshot.contents->shapes)
        if (m_snapshot.marks->shown[shape.item])
            things += shape.segments.size() + (shape.mesh ? shape.mesh->triangles.size() : 0);
    return things;
}

std::shared_ptr<const Scene> SceneMaker::scene(const Snapshot& snapshot, const Look& look,
                                               const std::stop_token& stop) {
    prepare(snapshot, look);
    if (m_scene)
        return m_scene;
    auto scene = std::make_shared<Scene>();
    const Marks& marks = *snapshot.marks;
    Making making(snapshot.contents, marks, m_styles, look, *scene);
    making.run();
    scene->idColours = {snapshot.marks, &marks.colours};
    scene->idShown = {snapshot.marks, &marks.shown};
    const auto* const ribbons = m_ribbons.meshes(snapshot.contents, marks, m_styles, stop);
    if (!ribbons || stop.stop_requested())
        return nullptr;
    scene->meshes = *ribbons;
    if (!making.takeSurfaces(stop))
        return nullptr;
    m_scene = std::move(scene);
    return m_scene;
}

std::shared_ptr<const Scene> SceneMaker::quickScene(const Snapshot& snapshot, const Look& look) {
    prepare(snapshot, look);
    if (!m_quick)
        m_quick = std::make_shared<const Scene>(
            makeQuickScene(*snapshot.contents, *snapshot.marks, m_styles, look.background));
    return m_quick;
}

std::vector<Point> drawnPoints(const Contents& contents, const Marks& marks, const Look& look) {
    const Styles styles = chooseStyles(contents, marks, look);
    std::vector<Point> points;
    forDrawnAtoms(contents, marks, styles,
                  [&](std::uint32_t i) { points.push_back(contents.positions[i]); });
    for (const Shape& shape : contents.shapes)
        if (marks.shown[shape.item])
            addPoints(shape, points);
    return points;
}

} // namespace view
