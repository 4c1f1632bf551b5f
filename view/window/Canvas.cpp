#include "Canvas.h"

#include "ColourKey.h"
#include "render/Picking.h"
#include "scene/ShownScales.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace view {

namespace {

constexpr int restAfter = 150; // ms without a movement, until the whole picture is drawn
constexpr double pi = 3.14159265358979323846;
constexpr double smallestHeight = 0.5; // Å
constexpr double greatestHeight = 1e7; // Å
constexpr double margin = 2;           // Å around what is fitted, for the radii of its atoms
constexpr double surroundings = 8;     // Å around what is looked at
constexpr double thinnestSlab = 0.5;   // Å
constexpr double zoomPerStep = 1.15;   // of the wheel
constexpr int reach = 3;               // pixels around the pointer where something is found

} // namespace

Canvas::Canvas(QWidget* parent)
    : QWidget(parent), m_thread([this](Drawn drawn) {
          QMetaObject::invokeMethod(
              this, [this, drawn = std::move(drawn)]() mutable { take(std::move(drawn)); },
              Qt::QueuedConnection);
      }) {
    setFocusPolicy(Qt::WheelFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(1, 1);
    setAccessibleName(tr("Structure view"));
    m_rest.setSingleShot(true);
    m_rest.setInterval(restAfter);
    connect(&m_rest, &QTimer::timeout, this, [this] { order(false); });
}

Canvas::~Canvas() = default;

void Canvas::setSnapshot(const Snapshot& snapshot) {
    m_order.snapshot = snapshot;
    m_scales = shownScales(*snapshot.contents, *snapshot.marks);
    order(false);
}

void Canvas::setLook(const Look& look) {
    m_order.look = look;
    order(false);
}

void Canvas::setDepthCue(bool on) {
    m_order.hasDepthCue = on;
    order(false);
}

void Canvas::setOutline(std::optional<Colour> outline) {
    if (outline == m_order.outline)
        return;
    m_order.outline = outline;
    order(false);
}

QSize Canvas::pixels() const {
    return {static_cast<int>(std::lround(width() * devicePixelRatioF())),
            static_cast<int>(std::lround(height() * devicePixelRatioF()))};
}

double Canvas::angstromsPerPixel() const {
    return m_order.camera.height / std::max(height(), 1);
}

double Canvas::heightFor(double radius, int width, int height) {
    return 2 * radius / std::min(1.0, double(std::max(width, 1)) / std::max(height, 1));
}

double Canvas::fittedHeight(int width, int height) const {
    return heightFor(m_radius, width, height);
}

Canvas::Fit Canvas::fitOf(std::span<const Point> points) {
    Camera camera;
    camera.height = 0;
    camera.fit(points, 1, margin);
    return {camera.centre, camera.height / 2};
}

void Canvas::fit(const Fit& to) {
    Camera& camera = m_order.camera;
    camera.front = Camera().front;
    camera.back = Camera().back;
    if (to.radius > 0) {
        camera.centre = to.centre;
        m_radius = to.radius;
    }
    camera.height = fittedHeight(width(), height());
    m_isMovedByUser = false;
    order(false);
}

Camera Canvas::cameraFor(int width, int height) const {
    Camera camera = m_order.camera;
    if (!m_isMovedByUser)
        camera.height = fittedHeight(width, height);
    return camera;
}

void Canvas::resetRotation() {
    m_order.camera.axes = Camera().axes;
    order(false);
}

void Canvas::centreOn(const Point& point) {
    if (!isPlace(point))
        return;
    m_order.camera.centre = point;
    m_isMovedByUser = true;
    order(false);
}

void Canvas::lookAt(const FocusMark& what) {
    const auto heightOf = [this, &what](double around) {
        return heightFor(what.radius + around, width(), height());
    };
    double& seen = m_order.camera.height;
    seen = std::min(seen, heightOf(surroundings));
    if (seen < heightOf(0))
        seen = heightOf(margin);
    const double reach = what.radius + margin;
    double& front = m_order.camera.front;
    front = m_clearsFront ? reach : std::max(front, reach);
    m_order.camera.back = std::min(m_order.camera.back, -reach);
    centreOn(what.centre);
}

void Canvas::setClearsFront(bool on) {
    m_clearsFront = on;
    Camera& camera = m_order.camera;
    if (!on)
        camera.front = Camera().front;
    else if (m_mark)
        camera.front = camera.depthOf(m_mark->centre) + m_mark->radius + margin;
    order(false);
}

void Canvas::setMark(const std::optional<FocusMark>& mark) {
    if (mark == m_mark)
        return;
    m_mark = mark;
    update();
}

void Canvas::turn(double right, double up) {
    m_order.camera.turn(right, up);
    order(true);
}

void Canvas::zoom(double factor) {
    double& height = m_order.camera.height;
    height = std::clamp(height / factor, smallestHeight, greatestHeight);
    m_isMovedByUser = true;
    order(true);
}

void Canvas::slab(double front, double back) {
    Camera& camera = m_order.camera;
    // A slab that reaches beyond everything is none, and begins at the ends of what was fitted.
    if (front != 0)
        camera.front = std::min(camera.front, m_radius) + front;
    if (back != 0)
        camera.back = std::max(camera.back, -m_radius) + back;
    if (front != 0)
        camera.front = std::max(camera.front, camera.back + thinnestSlab);
    else
        camera.back = std::min(camera.back, camera.front - thinnestSlab);
    if (camera.front >= m_radius)
        camera.front = Camera().front;
    if (camera.back <= -m_radius)
        camera.back = Camera().back;
    order(true);
}

void Canvas::order(bool isMoving) {
    m_order.isMoving = isMoving;
    ++m_order.number;
    if (!isVisible())
        return; // drawn when it is shown
    if (isMoving)
        m_rest.start();
    else
        m_rest.stop();
    if (m_isOrdered)
        return;
    QMetaObject::invokeMethod(this, &Canvas::sendOrder, Qt::QueuedConnection);
    m_isOrdered = true; // not where there was no memory for it
}

void Canvas::setWidths(Order& order, double scale) {
    constexpr int outlineWidth = 2;
    order.outlineWidth =
        std::max(outlineWidth, static_cast<int>(std::lround(outlineWidth * scale)));
    order.lineScale = static_cast<float>(scale);
}

Order Canvas::orderFor(const QSize& size) const {
    Order order = m_order;
    order.camera = cameraFor(size.width(), size.height());
    order.width = size.width();
    order.height = size.height();
    order.isMoving = false;
    // What is a line here is one in a large picture, too, and not a hair.
    setWidths(order, size == pixels()
                         ? devicePixelRatioF()
                         : std::max(1.0, double(size.height()) / std::max(1, height())));
    return order;
}

void Canvas::sendOrder() {
    m_isOrdered = false;
    const QSize size = pixels();
    m_order.width = size.width();
    m_order.height = size.height();
    setWidths(m_order, devicePixelRatioF());
    m_thread.order(m_order);
}

void Canvas::take(Drawn drawn) {
    m_drawn = std::move(drawn);
    update();
    if (m_drag == Drag::None)
        hover();
    emit shown();
}

Id Canvas::idAt(const QPoint& place) const {
    const Picture* const picture = m_drawn.picture.get();
    if (!picture || !rect().contains(place))
        return noId;
    const double scale = double(picture->image.width()) / width();
    return idNear(*picture, int((place.x() + 0.5) * scale),
                  int((place.y() + 0.5) * picture->image.height() / height()),
                  std::max(1, int(std::lround(reach * scale))));
}

Point Canvas::pointAt(const QPoint& place) const {
    constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
    Point point = {nowhere, nowhere, nowhere};
    const Picture* const picture = m_drawn.picture.get();
    if (!picture || !rect().contains(place))
        return point;
    const int columns = picture->image.width();
    const int rows = picture->image.height();
    const double x = (place.x() + 0.5) * columns / width();
    const double y = (place.y() + 0.5) * rows / height();
    const float depth = picture->depths[std::size_t(y) * std::size_t(columns) + std::size_t(x)];
    if (!std::isfinite(depth))
        return point;
    const Camera& camera = m_drawn.camera;
    const double scale = camera.height / rows;
    for (std::size_t i = 0; i != 3; ++i)
        point[i] = static_cast<float>(
            camera.centre[i] + camera.axes[0][i] * (x - columns / 2.0) * scale +
            camera.axes[1][i] * (rows / 2.0 - y) * scale + double(camera.axes[2][i]) * depth);
    return point;
}

void Canvas::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor::fromRgb(m_order.look.background));
    if (m_drawn.image.isNull())
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, m_drawn.image.size() != pixels());
    painter.drawImage(rect(), m_drawn.image);
    paintKeys(painter, m_scales, rect(), m_order.look.background);
    if (m_mark) {
        const double aspect = double(m_drawn.image.width()) / m_drawn.image.height();
        paintRing(painter, ringOf(*m_mark, m_drawn.camera, aspect, rect()),
                  m_order.look.background);
    }
}

void Canvas::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!m_isMovedByUser)
        m_order.camera.height = fittedHeight(width(), height());
    order(true);
}

void Canvas::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    order(false);
}

void Canvas::mousePressEvent(QMouseEvent* event) {
    m_last = event->position().toPoint();
    if (m_drag != Drag::None || m_isClick)
        return; // another button holds
    m_pressed = m_last;
    m_button = event->button();
    m_isClick = m_button == Qt::LeftButton || m_button == Qt::RightButton;
    if (m_button == Qt::MiddleButton)
        m_drag = Drag::Move;
    hover();
}

void Canvas::drag(const QPoint& by) {
    const double scale = angstromsPerPixel();
    switch (m_drag) {
    case Drag::Turn: {
        // Half a turn from edge to edge.
        const double angle = pi / std::max(1, std::min(width(), height()));
        turn(by.x() * angle, -by.y() * angle);
        break;
    }
    case Drag::Move:
        m_order.camera.move(by.x() * scale, -by.y() * scale);
        m_isMovedByUser = true;
        order(true);
        break;
    case Drag::Slab:
        if (by.y() != 0)
            slab(-by.y() * scale, 0);
        if (by.x() != 0)
            slab(0, by.x() * scale);
        break;
    case Drag::None:
        break;
    }
}

void Canvas::mouseMoveEvent(QMouseEvent* event) {
    const QPoint place = event->position().toPoint();
    const QPoint by = place - m_last;
    if (m_isClick) {
        if ((place - m_pressed).manhattanLength() < QApplication::startDragDistance())
            return;
        m_isClick = false;
        m_drag = m_button == Qt::RightButton                      ? Drag::Slab
                 : event->modifiers().testFlag(Qt::ShiftModifier) ? Drag::Move
                                                                  : Drag::Turn;
        hover();
    }
    m_last = place;
    m_isInside = rect().contains(place);
    if (m_drag == Drag::None)
        hover();
    else
        drag(by);
}

void Canvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != m_button)
        return;
    const bool isClick = std::exchange(m_isClick, false);
    const Drag drag = std::exchange(m_drag, Drag::None);
    m_button = Qt::NoButton;
    if (drag != Drag::None) {
        if (m_rest.isActive())
            order(false);
        hover();
        return;
    }
    if (!isClick)
        return;
    const QPoint place = event->position().toPoint();
    if (event->button() == Qt::RightButton)
        emit menuWanted(event->globalPosition().toPoint());
    else
        emit clicked(idAt(place), m_drawn.generation, event->modifiers());
}

void Canvas::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        mousePressEvent(event);
        return;
    }
    // The release that follows is no click.
    const QPoint place = event->position().toPoint();
    if (const Id id = idAt(place); id != noId)
        emit doubleClicked(id, m_drawn.generation, pointAt(place));
}

void Canvas::wheelEvent(QWheelEvent* event) {
    if (event->angleDelta().y() == 0) {
        event->ignore(); // a wheel to the side
        return;
    }
    constexpr double step = 120; // eighths of a degree
    zoom(std::pow(zoomPerStep, event->angleDelta().y() / step));
    event->accept();
}

void Canvas::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    m_isInside = false;
    hover();
}

void Canvas::hover() {
    const Id id = m_isInside && m_drag == Drag::None ? idAt(m_last) : noId;
    const std::uint64_t generation = m_drawn.generation;
    const bool isSame = id == m_hovered && (id == noId || generation == m_hoveredIn);
    m_hovered = id;
    m_hoveredIn = generation;
    if (isSame)
        return;
    emit hovered(id, generation);
}

} // namespace view
