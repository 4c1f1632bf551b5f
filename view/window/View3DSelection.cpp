// What a click does: selecting, centring, and naming what is under the pointer.
#include "View3D.h"

#include "Ancestry.h"
#include "Canvas.h"
#include "ChangeData.h"
#include "Changed.h"
#include "DataPoint.h"
#include "ElidedLabel.h"
#include "Kinds.h"
#include "Messages.h"
#include "Space.h"
#include "Traversal.h"
#include "scene/DataWalk.h"
#include "scene/Shapes.h"

#include <QPointer>

#include <limits>
#include <optional>
#include <vector>

namespace view {

using TAVIK::Compound;
using TAVIK::Space;

namespace {

/// More is no place that one would have to look for.
constexpr std::size_t mostMarked = 10'000; // atoms

// The ball around the points, its centre in the middle of their box; no place without any.
FocusMark ballAround(const std::vector<Point>& points) {
    constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
    Camera camera;
    camera.centre = {nowhere, nowhere, nowhere};
    camera.fit(points, 1, 0);
    return {camera.centre, camera.height / 2};
}

std::vector<Point> selectedPoints(const Snapshot& snapshot) {
    std::vector<Point> points;
    for (std::size_t i = 0; i != snapshot.contents->atomCount(); ++i)
        if ((*snapshot.selection)[i])
            points.push_back(snapshot.contents->positions[i]);
    for (const Shape& shape : snapshot.contents->shapes)
        if ((*snapshot.selection)[shape.item])
            addPoints(shape, points);
    return points;
}

// Where an item is: its position, or those of what it holds.
void addPoints(Compound* item, std::vector<Point>& points) {
    if (const TAVIK::Vertex at = item->GetPosition(); at.isValid()) {
        points.push_back({at[0], at[1], at[2]});
        return;
    }
    const Contents contents = collect(item).contents;
    points.insert(points.end(), contents.positions.begin(), contents.positions.end());
    for (const Shape& shape : contents.shapes)
        addPoints(shape, points);
}

FocusMark ballAround(Compound* item) {
    std::vector<Point> points;
    addPoints(item, points);
    // Of a bond its atoms, of a set its members.
    for (Compound** part = item->PartBegin(); part != item->PartEnd(); ++part)
        addPoints(*part, points);
    return ballAround(points);
}

// The residue that the item is, or that it is a part of; else null.
Compound* residueOf(Compound* item) {
    while (item && !dynamic_cast<TAVIK::Residue*>(item))
        item = TAVIK::GetParent(item);
    return item;
}

// Whether it is one place among others: no entry, and not too large.
bool isMarked(Compound* item) {
    if (TAVIK::GetParent(item) == Space::instance())
        return false;
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(item, atoms, true);
    const std::size_t count =
        atoms.size() + static_cast<std::size_t>(item->PartEnd() - item->PartBegin());
    return count > 0 && count <= mostMarked;
}

} // namespace

template <class Change> void View3D::changeSelection(const char* command, Change change) {
    // Whoever is told of it may end the window.
    const QPointer<View3D> window(this);
    bool isChanged = false;
    changeData(DataPoint<Space>(this, Space::instance(), command), [&](DataPointBase& guard) {
        change(guard);
        isChanged = true;
    });
    if (!window)
        return;
    // It is not told of its own changes.
    schedule(DataReader::What::Looks);
    if (!isChanged)
        say(tr("Nothing was selected: the data are being changed"));
}

void View3D::click(Id id, std::uint64_t generation, Qt::KeyboardModifiers modifiers) {
    m_canvas->setMark({});
    Compound* const item = m_reader.item(id, generation);
    m_showsFocus = m_showsFocus && item && residueOf(item) == residueOf(TAVIK::Focus::item());
    renewFocusAtoms();
    const bool adds = modifiers.testFlag(Qt::ShiftModifier);
    const bool toggles = modifiers.testFlag(Qt::ControlModifier);
    if (!item) {
        // What the picture shows may be gone; that is no click on nothing.
        if (id == noId && !adds && !toggles && Space::instance()->HasSelected())
            changeSelection("Clear selection",
                            [](auto&) { Space::instance()->SetSelected(false); });
        return;
    }
    const bool selects = !toggles || !item->IsSelected();
    const QPointer<View3D> window(this);
    changeSelection("Select", [&](DataPointBase& guard) {
        if (!adds && !toggles)
            Space::instance()->SetSelected(false);
        item->SetSelected(selects);
        TAVIK::setLabel(guard, selects ? "Select" : "Unselect", TAVIK::Changed(*item));
    });
    // Whoever was told of the selection may have destroyed the item, too.
    if (window)
        TAVIK::Focus::set(m_reader.item(id, generation), this);
}

void View3D::focusMoved(Compound* item, bool center) {
    std::optional<FocusMark> ball;
    const bool isShown = item && isMarked(item);
    if (item && (center || isShown))
        ball = ballAround(item);
    if (ball && !isPlace(ball->centre))
        ball.reset();
    m_canvas->setMark(isShown ? ball : std::nullopt);
    if (ball && center)
        m_canvas->lookAt(*ball);
    m_showsFocus = isShown;
    renewFocusAtoms();
}

void View3D::renewMark() {
    if (m_canvas->mark())
        focusMoved(TAVIK::Focus::item(), false);
    else
        renewFocusAtoms();
}

void View3D::renewFocusAtoms() {
    Look look = m_look;
    look.focusBegin = look.focusEnd = 0;
    std::vector<Compound*> atoms;
    if (m_showsFocus)
        TAVIK::GetAtoms(residueOf(TAVIK::Focus::item()), atoms, true);
    const Id first = atoms.empty() ? noId : m_reader.id(atoms.front());
    // Items that were not read yet have no ids.
    if (first != noId && m_reader.id(atoms.back()) == first + atoms.size() - 1) {
        look.focusBegin = static_cast<std::uint32_t>(itemOf(first));
        look.focusEnd = look.focusBegin + static_cast<std::uint32_t>(atoms.size());
    }
    if (look == m_look)
        return;
    m_look = look;
    m_canvas->setLook(m_look);
}

void View3D::say(const QString& text) {
    m_line->setText(text);
    Messages::Show(text);
}

void View3D::doubleClick(Id id, std::uint64_t generation, const Point& point) {
    const Compound* const item = m_reader.item(id, generation);
    if (!item)
        return;
    // An atom is centred itself; of a surface what was clicked.
    const TAVIK::Vertex at = item->GetPosition();
    m_canvas->centreOn(at.isValid() ? Point{at[0], at[1], at[2]} : point);
}

void View3D::hover(Id id, std::uint64_t generation) {
    const Compound* const item = m_reader.item(id, generation);
    m_line->setText(item ? QString::fromLatin1(item->GetFQName()) : QString());
}

void View3D::centreSelection() {
    bringUpToDate();
    locate(
        [snapshot = m_reader.snapshot(), look = m_look] {
            std::vector<Point> points = selectedPoints(snapshot);
            if (points.empty())
                points = drawnPoints(*snapshot.contents, *snapshot.marks, look);
            const FocusMark ball = ballAround(points);
            return Canvas::Fit{ball.centre, ball.radius};
        },
        [this](const Canvas::Fit& fit) { m_canvas->centreOn(fit.centre); });
}

} // namespace view
