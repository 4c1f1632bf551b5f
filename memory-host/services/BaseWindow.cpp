#include "BaseWindow.h"
#include "HelpViewer.h"
#include "LoadedPlugins.h"
#include "WidgetFactory.h"
#include "WindowPlaces.h"

#include <QCloseEvent>
#include <QScreen>
#include <QShortcut>

struct BaseWindow::Private {
    WidgetFactory factory;
    QString helpPage;
};

BaseWindow::BaseWindow(const QString& title, const QSize& size, const QString& helpPage, bool flag,
                       QWidget* parent, const char* name)
    : QMainWindow(parent), m_Factory(nullptr), m_private(new Private{{}, helpPage}) {
    m_Factory = &m_private->factory;
    if (flag && parent)
        setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                       Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
    if (name)
        setObjectName(QString::fromLatin1(name));
    setWindowTitle(title);
    resize(size);
    const auto* const help = new QShortcut(QKeySequence(Qt::Key_F1), this);
    connect(help, &QShortcut::activated, this, [this] { HelpViewer::Show(m_private->helpPage); });
}

BaseWindow::~BaseWindow() = default;

QString BaseWindow::helpPage() const {
    return m_private->helpPage;
}

void BaseWindow::Kill(BaseWindow* window) {
    if (window)
        window->close();
}

void BaseWindow::setVisible(bool visible) {
    memory_host::WindowPlaces* const places = memory_host::windowPlaces();
    if (places && visible)
        places->aboutToShow(*this, memory_host::pluginOf(*this));
    QMainWindow::setVisible(visible);
    if (places && !visible)
        places->wasHidden(*this);
}

void BaseWindow::closeEvent(QCloseEvent* event) {
    // The plug-in owns the window and will use its pointer again, whatever attribute was set.
    setAttribute(Qt::WA_DeleteOnClose, false);
    hide();
    // A window that was closed while minimised is hidden, and must not report that it is minimised.
    setWindowState(windowState() & ~Qt::WindowMinimized);
    event->accept();
}

void BaseWindow::showEvent(QShowEvent* event) {
    // The size that was asked for may be larger than the screen, and the screen that the window
    // was last shown on may be gone.
    const QRect area = screen()->availableVirtualGeometry();
    if (isWindow() && !event->spontaneous() && !isMaximized() && !isFullScreen()) {
        resize(size().boundedTo(area.size()));
        if (!area.intersects(frameGeometry()))
            move(area.topLeft());
    }
    QMainWindow::showEvent(event);
}
