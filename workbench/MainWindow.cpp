#include "MainWindow.h"

#include "DockWidths.h"
#include "ErrorBar.h"
#include "FindBox.h"
#include "Inspector.h"
#include "LegibleHints.h"
#include "Opening.h"
#include "PluginDocks.h"
#include "Saving.h"
#include "StatusLine.h"

#include "Ancestry.h"
#include "ChangeData.h"
#include "Changed.h"
#include "DataMaker.h"
#include "HelpViewer.h"
#include "Logger.h"
#include "PluginManager.h"
#include "Space.h"
#include "Traversal.h"
#include "items/SpaceLock.h"
#include "services/Log.h"
#include "services/PluginFolder.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFile>
#include <QLineEdit>
#include <QMimeData>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace workbench {

namespace {

/// The top-level item that `item` is or stands in; null for null.
TAVIK::Compound* entryOf(TAVIK::Compound* item) {
    while (item) {
        TAVIK::Compound* const parent = TAVIK::GetParent(item);
        if (parent == TAVIK::Space::instance())
            break;
        item = parent;
    }
    return item;
}

QStringList filesOf(const QMimeData* data) {
    QStringList files;
    if (data)
        for (const QUrl& url : data->urls())
            if (url.isLocalFile())
                files << url.toLocalFile();
    return files;
}

/// Puts widgets below each other into a bar below the menus.
QToolBar* addBar(QMainWindow* window, std::initializer_list<QWidget*> widgets) {
    auto* const all = new QWidget(window);
    auto* const column = new QVBoxLayout(all);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    for (QWidget* const widget : widgets)
        column->addWidget(widget);
    QToolBar* const bar = window->addToolBar(MainWindow::tr("Find"));
    bar->setObjectName(QStringLiteral("bar"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->addWidget(all);
    return bar;
}

/// The first widget within `widget` that takes the keyboard; null for none.
QWidget* firstForKeys(QWidget* widget) {
    for (QWidget* next = widget->nextInFocusChain(); next && next != widget;
         next = next->nextInFocusChain())
        if (widget->isAncestorOf(next) && next->isVisible() && (next->focusPolicy() & Qt::TabFocus))
            return next;
    return nullptr;
}

} // namespace

MainWindow::MainWindow(const Setup& setup)
    : m_plugins(setup.plugins), m_dataFolder(setup.dataFolder), m_remembered(setup.memoryFile),
      m_docks(std::make_unique<PluginDocks>(*this)), m_status(new StatusLine(this)),
      m_find(new FindBox(this)), m_inspector(new Inspector(this)),
      m_inspectorDock(new QDockWidget(tr("Inspector"), this)), m_errors(new ErrorBar(this)) {
    setObjectName(QStringLiteral("workbench"));
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setStatusBar(m_status);
    new DockWidths(*this);
    m_bar = addBar(this, {m_find, m_errors});

    m_inspectorDock->setObjectName(QStringLiteral("inspector"));
    m_inspectorDock->setWidget(m_inspector);
    addDockWidget(Qt::RightDockWidgetArea, m_inspectorDock);

    makeMenus();
    connect(m_find, &FindBox::left, this, &MainWindow::giveViewTheKeyboard);
    connect(m_find, &FindBox::said, m_status, &StatusLine::say);
    connect(m_inspector, &Inspector::done, m_status, &StatusLine::say);
    connect(m_inspector, &Inspector::failed, this,
            [](const QString& line) { Logger::Write(line.toStdString()); });
    connect(m_status, &StatusLine::counted, this, &MainWindow::updateTitle);
    m_opening = std::make_unique<Opening>(Logger::Write);
    m_saving = std::make_unique<Saving>(this, [this](const QString& file) {
        rememberFiles({file});
        emit saved();
    });
    hearLog();
    updateSaving();
}

MainWindow::~MainWindow() {
    memory_host::setLogListener({});
    // What plug-ins own is let go before the docks around it are deleted.
    m_docks.reset();
}

bool MainWindow::startPlugins() {
    if (!restoreGeometry(m_remembered.geometry()))
        resize(usualSize());
    m_isArranged = restoreState(m_remembered.docks());
    m_bar->show();
    m_docks->setStarting(true);
    for (const QString& plugin : m_plugins)
        memory_host::startPlugin(plugin);
    m_docks->setStarting(false);
    // All are asked: one that cannot say is in the log then.
    const bool areDone = memory_host::allPluginsDone();
    return !areDone || !m_docks->docks().isEmpty();
}

QSize MainWindow::usualSize() const {
    const QSize room = screen()->availableGeometry().size();
    return QSize(1280, 800).boundedTo(room * 9 / 10);
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (event->spontaneous())
        return;
    if (!std::exchange(m_isArranged, true))
        showUsually();
    // The last one gets the keyboard: the Structure Editor, which comes after the view.
    for (const QDockWidget* const dock : m_docks->docks())
        if (QWidget* const first = dock->isVisible() ? firstForKeys(dock->widget()) : nullptr)
            first->setFocus();
}

void MainWindow::showUsually() {
    m_inspectorDock->setFloating(false);
    addDockWidget(Qt::RightDockWidgetArea, m_inspectorDock);
    m_inspectorDock->show();
    m_docks->arrange();
    QList<QDockWidget*> docks = m_docks->docks();
    docks << m_inspectorDock;
    // What is at the sides gets what it asks for, but not at the cost of the middle.
    const auto isMiddle = [](const QDockWidget* dock) { return PluginDocks::isMiddle(*dock); };
    const auto wanted = [this](const QDockWidget* dock) {
        return std::max(100, std::min(dock->sizeHint().width(), width() * 35 / 100));
    };
    // Those on the left stand side by side, those on the right one below the other.
    int left = 0;
    int right = 0;
    for (QDockWidget* const dock : docks) {
        if (isMiddle(dock))
            continue;
        if (dockWidgetArea(dock) == Qt::RightDockWidgetArea)
            right = std::max(right, wanted(dock));
        else
            left += wanted(dock);
    }
    QList<int> widths;
    for (QDockWidget* const dock : docks)
        widths << (isMiddle(dock) ? std::max(DockWidths::leastMiddle, width() - left - right)
                   : dockWidgetArea(dock) == Qt::RightDockWidgetArea ? right
                                                                     : wanted(dock));
    resizeDocks(docks, widths, Qt::Horizontal);
}

void MainWindow::giveViewTheKeyboard() {
    for (const QDockWidget* const dock : m_docks->docks())
        if (PluginDocks::isMiddle(*dock) && dock->isVisible())
            if (QWidget* const first = firstForKeys(dock->widget())) {
                dock->widget()->window()->activateWindow();
                first->setFocus();
                return;
            }
}

void MainWindow::showError(const std::string& line) {
    m_errors->add(QString::fromStdString(line));
}

// Lines come from any thread, and in the middle of anything.
void MainWindow::hearLog() {
    const QPointer<MainWindow> window(this);
    memory_host::setLogListener([window](const std::string& line) {
        const auto show = [window, text = QString::fromStdString(line)] {
            if (window)
                window->showLogLine(text);
        };
        QMetaObject::invokeMethod(qApp, show, Qt::QueuedConnection);
    });
}

void MainWindow::showLogLine(const QString& line) {
    if (!m_messages.messages.removeOne(line))
        m_errors->add(line);
}

void MainWindow::rememberFiles(const QStringList& files) {
    for (const QString& file : files)
        m_remembered.addFile(file);
}

void MainWindow::rememberWindow() {
    if (size().expandedTo(minimumSizeHint()) == size())
        m_remembered.setWindow(saveGeometry(), saveState());
}

void MainWindow::openFiles(const QStringList& files) {
    m_toOpen.insert(m_toOpen.end(), files.begin(), files.end());
    if (m_isOpening)
        return;
    // Another start may bring files in the middle of other work.
    if (memory_host::isSpaceLocked()) {
        constexpr int again = 100; // ms
        QTimer::singleShot(again, this, [this] { openFiles({}); });
        return;
    }
    const QScopedValueRollback opening(m_isOpening, true);
    while (!m_toOpen.empty()) {
        std::vector<std::string> paths;
        QStringList names;
        for (const QString& file : std::exchange(m_toOpen, {})) {
            paths.push_back(QFile::encodeName(file).toStdString());
            names << file;
        }
        m_opening->open(paths, [this, &names](std::size_t file) {
            rememberFiles({names[static_cast<qsizetype>(file)]});
        });
    }
}

void MainWindow::present() {
    show();
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    // What has to be answered first stays in front.
    if (QWidget* const modal = QApplication::activeModalWidget()) {
        modal->raise();
        modal->activateWindow();
    }
}

TAVIK::Compound* MainWindow::entryToClose() const {
    if (TAVIK::Compound* const entry = entryOf(TAVIK::Focus::item()))
        return entry;
    TAVIK::Space* const space = TAVIK::Space::instance();
    return space->ChildEnd() - space->ChildBegin() == 1 ? *space->ChildBegin() : nullptr;
}

void MainWindow::closeEntry() {
    TAVIK::Compound* entry = entryToClose();
    if (!entry) {
        m_status->say(TAVIK::Space::instance()->HasChildren()
                          ? tr("Which entry is to be closed? Click on something in it first.")
                          : tr("There is nothing to close."));
        return;
    }
    const unsigned int id = entry->GetId();
    if (!m_saving->mayForget({entry}))
        return;
    // A question may have been open, and the data have changed.
    entry = entryWith(id);
    bool isDone = entry == nullptr;
    const auto close = [entry, &isDone](DataPointBase& guard) {
        TAVIK::setLabel(guard, "Close", TAVIK::Changed(*entry));
        TAVIK::DataMaker::Destroy(entry);
        isDone = true;
    };
    if (entry)
        changeData(DataPointBase(nullptr, Publisher::Delete), close, Refusal::Silent);
    if (!isDone)
        m_status->say(tr("The entry is not closed: another change is under way"));
}

void MainWindow::copy() {
    if (m_inspector->isAncestorOf(QApplication::focusWidget()) &&
        !m_inspector->textToCopy().isEmpty()) {
        m_inspector->copy();
        return;
    }
    std::vector<TAVIK::Compound*> items;
    TAVIK::GetSelected(TAVIK::Space::instance(), items);
    std::string names;
    for (const TAVIK::Compound* item : items)
        names.append(item->GetFQName()).append(1, '\n');
    if (names.empty()) {
        m_status->say(tr("Nothing is selected that could be copied."));
        return;
    }
    QApplication::clipboard()->setText(
        QString::fromLatin1(names.data(), static_cast<qsizetype>(names.size())));
    m_status->say(items.size() == 1 ? tr("1 name copied")
                                    : tr("%1 names copied").arg(items.size()));
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        makeHintsLegible();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!m_saving->mayForget(unsavedEntries())) {
        event->ignore();
        return;
    }
    rememberWindow();
    QMainWindow::closeEvent(event);
    if (!event->isAccepted())
        return;
    // Floating docks are windows of their own.
    for (QDockWidget* const dock : findChildren<QDockWidget*>())
        if (dock->isFloating())
            dock->hide();
}

void MainWindow::toggleFullScreen() {
    setWindowState(windowState() ^ Qt::WindowFullScreen);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!filesOf(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QStringList files = filesOf(event->mimeData());
    if (files.isEmpty())
        return;
    event->acceptProposedAction();
    // Later, so that who drops them need not wait until they are open.
    QMetaObject::invokeMethod(
        this, [this, files] { openFiles(files); }, Qt::QueuedConnection);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    // What has the keyboard comes first: the windows of plug-ins have a help page of their own.
    if (event->key() == Qt::Key_F11 && event->modifiers() == Qt::NoModifier)
        toggleFullScreen();
    else if (event->key() == Qt::Key_F1 && event->modifiers() == Qt::NoModifier)
        HelpViewer::Show(m_find->field()->hasFocus() ? QStringLiteral("find")
                         : m_inspector->isAncestorOf(QApplication::focusWidget())
                             ? QStringLiteral("inspector")
                             : QStringLiteral("first-ten-minutes"));
    else
        QMainWindow::keyPressEvent(event);
}

} // namespace workbench
