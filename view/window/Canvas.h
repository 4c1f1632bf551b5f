// The widget that shows the picture, and turns what the mouse does into movements of the camera and
// ids under the pointer. It knows no items.
#pragma once

#include "DrawingThread.h"
#include "FocusMark.h"
#include "Geometry.h"
#include "scene/Contents.h"
#include "scene/Drawing.h"
#include "scene/Look.h"

#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace view {

/// The left button turns, the middle one (or Shift and the left) moves, the right one slabs, and
/// the wheel zooms. It never waits for a picture: the last one is shown until the next one is
/// there.
class Canvas : public QWidget {
    Q_OBJECT
public:
    explicit Canvas(QWidget* parent);
    ~Canvas() override;

    /// What is drawn from now on.
    void setSnapshot(const Snapshot& snapshot);
    void setLook(const Look& look);
    void setDepthCue(bool on);
    /// Marks what is selected with an outline in that colour; or does not.
    void setOutline(std::optional<Colour> outline);

    /// The ball in which points lie with a margin around them; the radius is 0 without points.
    struct Fit {
        Point centre{};
        double radius = 0; ///< Å
    };
    /// Of any points. For any thread.
    static Fit fitOf(std::span<const Point> points);
    /// Shows all of it, from where it is looked at now, and ends the slab. As long as the user
    /// moves nothing, a change of the widget's size keeps it in sight.
    void fit(const Fit& to);
    /// Turns the camera back to look along the z axis.
    void resetRotation();
    /// Puts a point into the middle; a point that is no place changes nothing.
    void centreOn(const Point& point);
    /// Puts something into the middle, and comes so close that it and what is around it fill the
    /// widget; who is close already stays so, but for what would not be seen as a whole. The planes
    /// never cut it, and the front one cuts away all that hides it, if that is asked for.
    void lookAt(const FocusMark& what);
    /// Whether the front plane cuts away what hides the thing that is looked at: now, if it is
    /// marked, and whenever there is another one. When it ends, nothing in front is cut away.
    void setClearsFront(bool on);
    bool clearsFront() const { return m_clearsFront; }
    /// Draws a ring around something, through all that is in front of it, until there is another
    /// mark or none. It follows the camera, and is in no picture but the one on the screen.
    void setMark(const std::optional<FocusMark>& mark);
    const std::optional<FocusMark>& mark() const { return m_mark; }
    /// Turns, as a drag does. Radians.
    void turn(double right, double up);
    /// 2 shows everything at twice the size.
    void zoom(double factor);

    const Camera& camera() const { return m_order.camera; }
    const Order& order() const { return m_order; }
    /// What draws the same as a picture of another size in pixels: from the same place, or fitted
    /// to its shape if the user has not moved anything.
    Order orderFor(const QSize& size) const;
    bool isMovedByUser() const { return m_isMovedByUser; }

    /// The scales of values that keys in the upper right corner explain.
    const std::vector<TAVIK::ValueScale>& scales() const { return m_scales; }
    /// The picture on the screen.
    const Drawn& drawn() const { return m_drawn; }
    /// Whether it is whole, and of the last order.
    bool isUpToDate() const { return m_drawn.isWhole && m_drawn.number == m_order.number; }
    /// What is at a place of the widget; noId for nothing.
    Id idAt(const QPoint& place) const;
    /// Where what is seen there is, in the space of the scene; NaN for nothing.
    Point pointAt(const QPoint& place) const;

    QSize sizeHint() const override { return {640, 480}; }

signals:
    /// A click, which is no drag, on what has that id in pictures of that generation.
    void clicked(view::Id id, std::uint64_t generation, Qt::KeyboardModifiers modifiers);
    void doubleClicked(view::Id id, std::uint64_t generation, const view::Point& point);
    /// The pointer is over something else, or over nothing.
    void hovered(view::Id id, std::uint64_t generation);
    void menuWanted(const QPoint& globalPosition);
    /// A new picture is on the screen.
    void shown();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    enum class Drag { None, Turn, Move, Slab };

    void take(Drawn drawn);
    /// Orders a picture; a quick one, with a whole one to follow once nothing moves, if asked for.
    /// Several orders of one event become one.
    void order(bool isMoving);
    void sendOrder();
    Camera cameraFor(int width, int height) const;
    /// Makes lines and outlines that many times as wide as on a screen of usual pixels.
    static void setWidths(Order& order, double scale);
    /// The height of a picture of that shape that shows what was fitted, in Å.
    double fittedHeight(int width, int height) const;
    /// The height of a picture of that shape that shows what is that far from its middle, in Å.
    static double heightFor(double radius, int width, int height);
    /// A drag by that many pixels, to the right and down.
    void drag(const QPoint& by);
    QSize pixels() const;
    void slab(double front, double back);
    void hover();
    double angstromsPerPixel() const;

    Order m_order;
    Drawn m_drawn;
    double m_radius = 50; ///< Å from the middle of what was fitted to its farthest point
    bool m_isMovedByUser = false;
    std::optional<FocusMark> m_mark;
    std::vector<TAVIK::ValueScale> m_scales; ///< that the picture has a key to
    bool m_clearsFront = true;
    QTimer m_rest;            ///< until nothing has moved for a while
    bool m_isOrdered = false; ///< and the order is not sent yet

    Drag m_drag = Drag::None;
    bool m_isClick = false; ///< the pointer has not moved since the press
    Qt::MouseButton m_button = Qt::NoButton;
    QPoint m_pressed;
    QPoint m_last;           ///< where the pointer is
    bool m_isInside = false; ///< whether it is over the widget
    Id m_hovered = noId;
    std::uint64_t m_hoveredIn = 0; ///< the generation of that id
    DrawingThread m_thread;        ///< last, and so the first to be destroyed
};

} // namespace view
