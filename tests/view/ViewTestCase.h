// What the tests of the view's window share: the window, real events at the place of an atom, and
// waiting for pictures.
#pragma once

#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "SceneTools.h"
#include "TestSupport.h"
#include "window/Canvas.h"
#include "window/View3D.h"

#include <QSignalSpy>

#include <cmath>
#include <memory>
#include <string>

namespace view_tools {

using namespace scene_tools;

/// The names of the selected atoms, in the order of the data.
inline QString selectedNames() {
    Items atoms;
    TAVIK::GetAtoms(space(), atoms, false);
    QStringList names;
    for (const TAVIK::Compound* atom : atoms)
        names << QString::fromLatin1(atom->GetName());
    return names.join(u' ');
}

/// One entry of atoms far apart from each other, in the plane of the screen: "A" in the middle of
/// the picture, "B" on its right, "C" above; and "D" behind "B".
inline Structure fourAtoms() {
    Structure made;
    made.add("UNL 1", {{"A", "C", {0, 0, 0}},
                       {"B", "C", {10, 0, 0}},
                       {"C", "C", {0, 10, 0}},
                       {"D", "O", {10, 0, -10}},
                       {"E", "C", {-10, -10, 10}}});
    return made;
}

class ViewTestCase : public test_support::TestCase {
protected:
    void init() override {
        TestCase::init();
        m_view = std::make_unique<view::View3D>();
        m_view->setRepresentation(view::Representation::Spheres);
        m_view->resize(400, 300);
    }
    void cleanup() override {
        m_view.reset();
        TestCase::cleanup();
    }

    /// Shows the window, and waits for the picture.
    void show() {
        m_view->show();
        settle();
    }
    /// Waits until the picture shows the data as they are.
    void settle() {
        QCoreApplication::processEvents();
        QTRY_VERIFY_WITH_TIMEOUT(m_view->isUpToDate(), 20000);
    }
    view::Canvas& canvas() { return *m_view->canvas(); }

    /// Where on the canvas a position is seen.
    QPoint placeOf(const std::array<float, 3>& at) {
        const view::Camera& camera = canvas().camera();
        const double scale = canvas().height() / camera.height;
        double right = 0;
        double up = 0;
        for (std::size_t i = 0; i != 3; ++i) {
            right += (at[i] - camera.centre[i]) * double(camera.axes[0][i]);
            up += (at[i] - camera.centre[i]) * double(camera.axes[1][i]);
        }
        return {int(std::floor(canvas().width() / 2.0 + right * scale)),
                int(std::floor(canvas().height() / 2.0 - up * scale))};
    }
    QPoint placeOf(const TAVIK::Compound* atom) {
        const TAVIK::Vertex at = atom->GetPosition();
        return placeOf(std::array<float, 3>{at[0], at[1], at[2]});
    }
    void click(const TAVIK::Compound* atom, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(&canvas(), Qt::LeftButton, modifiers, placeOf(atom));
        settle();
    }
    void clickOnNothing(Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(&canvas(), Qt::LeftButton, modifiers, {2, 2});
        settle();
    }
    void drag(Qt::MouseButton button, QPoint from, QPoint to,
              Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(&canvas(), button, modifiers, from);
        // In steps, as a hand moves.
        for (int step = 1; step <= 10; ++step) {
            const QPoint at = from + (to - from) * step / 10;
            QMouseEvent move(QEvent::MouseMove, at, canvas().mapToGlobal(at), Qt::NoButton, button,
                             modifiers);
            QApplication::sendEvent(&canvas(), &move);
        }
        QTest::mouseRelease(&canvas(), button, modifiers, to);
        settle();
    }
    void hover(const QPoint& at) {
        QMouseEvent move(QEvent::MouseMove, at, canvas().mapToGlobal(at), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&canvas(), &move);
    }

    std::unique_ptr<view::View3D> m_view;
};

} // namespace view_tools
