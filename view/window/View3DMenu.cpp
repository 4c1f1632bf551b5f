// The menu and the keys.
#include "View3D.h"

#include "Canvas.h"
#include "ElidedLabel.h"
#include "HelpViewer.h"
#include "Logger.h"
#include "PictureDialog.h"
#include "PluginManager.h"
#include "Progress.h"

#include <QAction>
#include <QActionGroup>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>

#include <array>
#include <stop_token>
#include <string>

namespace view {

namespace {

struct RepresentationEntry {
    const char* label;
    Representation representation;
    int key;
};
constexpr std::array<RepresentationEntry, 7> representations = {{
    {QT_TRANSLATE_NOOP("view::View3D", "&Automatic"), Representation::Automatic, Qt::Key_0},
    {QT_TRANSLATE_NOOP("view::View3D", "&Points"), Representation::Points, Qt::Key_1},
    {QT_TRANSLATE_NOOP("view::View3D", "&Lines"), Representation::Lines, Qt::Key_2},
    {QT_TRANSLATE_NOOP("view::View3D", "&Sticks"), Representation::Sticks, Qt::Key_3},
    {QT_TRANSLATE_NOOP("view::View3D", "&Ball and stick"), Representation::BallAndStick, Qt::Key_4},
    {QT_TRANSLATE_NOOP("view::View3D", "Sp&heres"), Representation::Spheres, Qt::Key_5},
    {QT_TRANSLATE_NOOP("view::View3D", "&Ribbon"), Representation::Ribbon, Qt::Key_6},
}};

struct SurfaceEntry {
    const char* label;
    SurfaceStyle style;
    int key;
};
constexpr std::array<SurfaceEntry, 3> surfaceStyles = {{
    {QT_TRANSLATE_NOOP("view::View3D", "&Opaque surfaces"), SurfaceStyle::Opaque, Qt::Key_O},
    {QT_TRANSLATE_NOOP("view::View3D", "See-thro&ugh surfaces"), SurfaceStyle::SeeThrough,
     Qt::Key_T},
    {QT_TRANSLATE_NOOP("view::View3D", "&Mesh lines"), SurfaceStyle::MeshLines, Qt::Key_M},
}};

constexpr double keyTurn = 0.17453292519943295; // radians: 10 degrees
constexpr double keyZoom = 1.15;

} // namespace

void View3D::createMenu() {
    m_menu = menuBar()->addMenu(tr("&View"));
    // The keys are the window's own also where it is a part of another one.
    const auto own = [this](QAction* action, const QKeySequence& key) {
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    };
    const auto toggle = [this, own](const QString& label, const QKeySequence& key, bool on,
                                    void (View3D::*slot)(bool)) {
        QAction* const action = m_menu->addAction(label);
        action->setCheckable(true);
        action->setChecked(on);
        connect(action, &QAction::toggled, this, slot);
        own(action, key);
    };
    const auto command = [this, own](const QString& label, const QKeySequence& key,
                                     void (View3D::*slot)()) {
        QAction* const action = m_menu->addAction(label);
        connect(action, &QAction::triggered, this, slot);
        own(action, key);
    };

    m_representations = new QActionGroup(this);
    for (const RepresentationEntry& entry : representations) {
        QAction* const action = m_menu->addAction(tr(entry.label));
        action->setCheckable(true);
        action->setChecked(entry.representation == m_look.representation);
        m_representations->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, entry] { setRepresentation(entry.representation); });
        own(action, QKeySequence(entry.key));
    }
    m_menu->addSeparator();
    for (const SurfaceEntry& entry : surfaceStyles) {
        QAction* const action = m_menu->addAction(tr(entry.label));
        connect(action, &QAction::triggered, this, [this, entry] { setSurfaceStyle(entry.style); });
        own(action, QKeySequence(entry.key));
    }
    addSurfaceColours();
    m_menu->addSeparator();
    toggle(tr("Show &waters"), QKeySequence(Qt::Key_W), m_look.showWaters, &View3D::setShowWaters);
    toggle(tr("Ligh&t background"), QKeySequence(Qt::Key_L), m_isLight,
           &View3D::setLightBackground);
    toggle(tr("&Depth cueing"), QKeySequence(Qt::Key_D), true, &View3D::setDepthCue);
    toggle(tr("Cut away what hides the &focus"), QKeySequence(Qt::Key_F), true,
           &View3D::setClearsFront);
    m_menu->addSeparator();
    command(tr("&Centre selection"), QKeySequence(Qt::Key_C), &View3D::centreSelection);
    command(tr("R&eset view"), QKeySequence(Qt::Key_Home), &View3D::resetView);
    QAction* const fullScreen = m_menu->addAction(tr("&Full screen"));
    fullScreen->setCheckable(true);
    connect(fullScreen, &QAction::triggered, this,
            [this] { setFullScreen(!window()->isFullScreen()); });
    // It may have been another window's command.
    connect(m_menu, &QMenu::aboutToShow, this,
            [this, fullScreen] { fullScreen->setChecked(window()->isFullScreen()); });
    own(fullScreen, QKeySequence(Qt::Key_F11));
    m_menu->addSeparator();
    command(tr("Save p&icture..."), QKeySequence(), &View3D::askForPicture);
    QAction* const help = m_menu->addAction(tr("Hel&p"));
    connect(help, &QAction::triggered, this, [this] { HelpViewer::Show(helpPage()); });
    connect(m_canvas, &Canvas::menuWanted, m_menu, [this](const QPoint& at) { m_menu->popup(at); });
}

void View3D::addSurfaceColours() {
    static constexpr const char* type = "Create";
    static constexpr const char* name = "SolidVolume";
    QAction* const action = m_menu->addAction(tr("Colour surfaces b&y atoms"), this, [] {
        bool flag = false;
        PluginManager::Command(type, name, "View3D", "ColorByAtoms", "Surfaces", &flag);
    });
    // Plug-ins may come after the window.
    const auto showIfThere = [action] {
        action->setVisible(PluginManager::FindPlugin(type, name) != nullptr);
    };
    showIfThere();
    connect(m_menu, &QMenu::aboutToShow, action, showIfThere);
}

void View3D::setFullScreen(bool on) {
    // Docked in another window, that one is what fills the screen.
    QWidget* const window = this->window();
    const Qt::WindowStates states = window->windowState();
    window->setWindowState(on ? states | Qt::WindowFullScreen : states & ~Qt::WindowFullScreen);
}

void View3D::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left:
        m_canvas->turn(-keyTurn, 0);
        break;
    case Qt::Key_Right:
        m_canvas->turn(keyTurn, 0);
        break;
    case Qt::Key_Up:
        m_canvas->turn(0, keyTurn);
        break;
    case Qt::Key_Down:
        m_canvas->turn(0, -keyTurn);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        m_canvas->zoom(keyZoom);
        break;
    case Qt::Key_Minus:
        m_canvas->zoom(1 / keyZoom);
        break;
    case Qt::Key_Escape:
        if (window()->isFullScreen()) {
            setFullScreen(false);
            break;
        }
        [[fallthrough]];
    default:
        BaseWindow::keyPressEvent(event);
    }
}

void View3D::askForPicture() {
    const QSize size = m_canvas->size() * m_canvas->devicePixelRatioF();
    auto* const dialog = new PictureDialog(this, size);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Later, when the dialog is closed: what it takes may have a window of its own.
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        QMetaObject::invokeMethod(
            this, [this, request = dialog->request()] { drawPicture(request); },
            Qt::QueuedConnection);
    });
    dialog->open();
}

void View3D::drawPicture(const PictureRequest& request) {
    m_toDraw.push_back(request);
    // One after another, where they are asked for in a row.
    if (m_toDraw.size() > 1)
        return;
    const QPointer<View3D> window(this);
    while (window && !m_toDraw.empty()) {
        drawPictureNow(m_toDraw.front());
        if (window)
            m_toDraw.pop_front();
    }
}

void View3D::drawPictureNow(const PictureRequest& asked) {
    const PictureRequest request = asked;
    const Order order = pictureOrder(request.size);
    std::string problem;
    const QPointer<View3D> window(this);
    // A large picture takes a while.
    const auto work = [&, end = m_end.get_token()](ProgressReporter& reporter,
                                                   const std::stop_token& stop) {
        reporter.report(
            tr("drawing %1 x %2 pixels").arg(request.size.width()).arg(request.size.height()), -1);
        std::stop_source either;
        const auto ask = [&either] { either.request_stop(); };
        const std::stop_callback cancelled(stop, ask);
        const std::stop_callback ended(end, ask);
        problem = writePicture(order, request.path, either.get_token());
    };
    const bool isDone = Progress::Run(tr("Save picture"), work);
    if (!window)
        return;
    if (!isDone) {
        say(tr("%1 is not written").arg(request.path));
    } else if (problem.empty()) {
        say(tr("%1 is written").arg(request.path));
    } else {
        m_line->setText(QString::fromStdString(problem));
        Logger::Write(problem);
    }
}

} // namespace view
