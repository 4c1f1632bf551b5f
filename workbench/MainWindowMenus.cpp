// The menus of the main window.
#include "MainWindow.h"

#include "FindBox.h"
#include "HelpPages.h"
#include "HistoryMenu.h"
#include "Inspector.h"
#include "MenuLetters.h"
#include "PluginDocks.h"
#include "Showing.h"
#include "StatusLine.h"

#include "HelpViewer.h"
#include "PluginManager.h"
#include "files/Formats.h"

#include <QApplication>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QToolBar>

namespace workbench {

namespace {

constexpr const char* viewType = "Display";
constexpr const char* viewName = "View3D";

void commandPlugin(const std::string& type, const std::string& name, const std::string& command) {
    const void* const none = nullptr;
    PluginManager::Command(type, name, "workbench", command, "", none);
}

/// Shows a menu's "&" as it is.
QString plainLabel(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

void MainWindow::makeMenus() {
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makePluginMenu();
    makeHelpMenu();
    new MenuLetters(menuBar());
}

void MainWindow::makeFileMenu() {
    QMenu* const menu = menuBar()->addMenu(tr("&File"));
    menu->addAction(tr("&Open..."), QKeySequence::Open, this, &MainWindow::askForFiles);
    m_recent = menu->addMenu(tr("Open &Recent"));
    connect(m_recent, &QMenu::aboutToShow, this, &MainWindow::fillRecentFiles);
    // Also that the entry is there, and not empty, before it has been opened once.
    fillRecentFiles();
    menu->addSeparator();
    makeSaveActions(menu);
    if (PluginManager::FindPlugin(viewType, viewName))
        menu->addAction(tr("Save &Picture..."), this, &MainWindow::savePicture);
    menu->addSeparator();
    m_close =
        menu->addAction(tr("&Close Entry"), QKeySequence::Close, this, &MainWindow::closeEntry);
    connect(menu, &QMenu::aboutToShow, this, &MainWindow::nameEntryToClose);
    menu->addAction(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this, &QWidget::close);
}

void MainWindow::nameEntryToClose() {
    const TAVIK::Compound* const entry = entryToClose();
    const QString name = entry ? QString::fromLatin1(entry->GetName().c_str()) : tr("Entry");
    constexpr int widest = 300; // pixels
    m_close->setText(
        tr("&Close %1").arg(plainLabel(fontMetrics().elidedText(name, Qt::ElideMiddle, widest))));
}

void MainWindow::makeEditMenu() {
    QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
    new HistoryMenu(menu);
    menu->addSeparator();
    menu->addAction(tr("&Copy"), QKeySequence::Copy, this, &MainWindow::copy);
    menu->addAction(tr("&Find"), QKeySequence::Find, m_find, &FindBox::begin);
}

void MainWindow::makeViewMenu() {
    m_view = menuBar()->addMenu(tr("&View"));
    const auto make = [this](const QString& label, const QKeySequence& key,
                             void (MainWindow::*slot)()) {
        auto* const action = new QAction(label, this);
        action->setShortcut(key);
        connect(action, &QAction::triggered, this, slot);
        // Also where the menu bar is not seen, as on a full screen.
        addAction(action);
        return action;
    };
    m_showing = {make(tr("Show &Only Selected"), QKeySequence(Qt::CTRL | Qt::Key_I),
                      &MainWindow::showOnlySelected),
                 make(tr("Show &Everything"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I),
                      &MainWindow::showEverything)};
    connect(m_docks.get(), &PluginDocks::changed, this, &MainWindow::fillViewMenu);
    fillViewMenu();
}

void MainWindow::fillViewMenu() {
    // Submenus and actions of docks are not the menu's: only what it made itself is deleted.
    m_view->clear();
    m_view->addActions(m_showing);
    m_view->addSeparator();
    for (QDockWidget* const dock : m_docks->docks())
        m_view->addAction(dock->toggleViewAction());
    m_view->addAction(m_inspectorDock->toggleViewAction());
    m_view->addSeparator();
    m_view->addAction(tr("&Usual Places"), this, &MainWindow::showUsually);
    // The key is taken where nobody else does: a plug-in may have one of its own for it.
    m_view->addAction(tr("Full &Screen\tF11"), this, &MainWindow::toggleFullScreen);
}

void MainWindow::showOnlySelected() {
    switch (workbench::showOnlySelected()) {
    case Showing::Done:
        // Which may have been a small part of it, anywhere.
        if (PluginManager::FindPlugin(viewType, viewName))
            commandPlugin(viewType, viewName, "ShowAll");
        break;
    case Showing::NothingSelected:
        m_status->say(tr("Nothing is selected that could be shown alone."));
        break;
    case Showing::Refused:
        m_status->say(tr("Nothing is hidden: another change is under way"));
        break;
    }
}

void MainWindow::showEverything() {
    if (workbench::showEverything() == Showing::Refused)
        m_status->say(tr("Nothing is shown: another change is under way"));
}

void MainWindow::makePluginMenu() {
    QMenu* const menu = menuBar()->addMenu(tr("&Plug-ins"));
    for (const QString& plugin : m_plugins) {
        const std::string type = plugin.section(u'/', 0, 0).toLatin1().toStdString();
        const std::string name = plugin.section(u'/', 1).toLatin1().toStdString();
        QAction* const action =
            menu->addAction(QString(), this, [type, name] { commandPlugin(type, name, "Show"); });
        action->setObjectName(plugin);
    }
    const auto nameAll = [this, menu] { namePlugins(menu->actions()); };
    connect(m_docks.get(), &PluginDocks::changed, menu, nameAll);
    connect(menu, &QMenu::aboutToShow, this, nameAll);
    nameAll();
}

void MainWindow::namePlugins(const QList<QAction*>& actions) {
    QStringList titles;
    for (const QAction* action : actions)
        titles << m_docks->title(action->objectName());
    for (qsizetype i = 0; i != actions.size(); ++i) {
        const QString plugin = actions[i]->objectName();
        const QString& title = titles[i];
        actions[i]->setEnabled(!title.isEmpty());
        actions[i]->setText(
            plainLabel(title.isEmpty() ? tr("%1 (no window)").arg(plugin.section(u'/', 1))
                       : titles.count(title) == 1 ? title
                                                  : tr("%1 (%2)").arg(title, plugin)));
    }
}

void MainWindow::makeHelpMenu() {
    QMenu* const menu = menuBar()->addMenu(tr("&Help"));
    for (const HelpPage& page : helpPages(m_dataFolder))
        menu->addAction(plainLabel(page.title), this,
                        [name = page.name] { HelpViewer::Show(name); });
    menu->addSeparator();
    menu->addAction(tr("&About"), this, &MainWindow::showAbout);
}

void MainWindow::fillRecentFiles() {
    m_recent->clear();
    const QStringList files = m_remembered.files();
    for (const QString& file : files) {
        QAction* const action = m_recent->addAction(plainLabel(QFileInfo(file).fileName()), this,
                                                    [this, file] { openFiles({file}); });
        action->setStatusTip(file);
        action->setToolTip(file);
    }
    m_recent->setToolTipsVisible(true);
    if (files.isEmpty()) {
        m_recent->addAction(tr("(none yet)"))->setEnabled(false);
        return;
    }
    m_recent->addSeparator();
    m_recent->addAction(tr("Forget These"), this, [this] { m_remembered.forgetFiles(); });
}

void MainWindow::askForFiles() {
    auto* const dialog = new QFileDialog(this, tr("Open"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    QStringList patterns;
    for (const memory_host::FileFormat* const format : memory_host::fileFormats())
        for (const std::string_view ending : format->endings) {
            const QString pattern =
                u'*' + QString::fromLatin1(ending.data(), static_cast<qsizetype>(ending.size()));
            patterns << pattern << pattern + QStringLiteral(".gz");
        }
    dialog->setNameFilters(
        {tr("Structures and maps (%1)").arg(patterns.join(u' ')), tr("All files (*)")});
    if (const QStringList recent = m_remembered.files(); !recent.isEmpty())
        dialog->setDirectory(QFileInfo(recent.constFirst()).path());
    connect(dialog, &QFileDialog::filesSelected, this, &MainWindow::openFiles,
            Qt::QueuedConnection);
    dialog->open();
}

void MainWindow::savePicture() {
    commandPlugin(viewType, viewName, "AskForPicture");
}

void MainWindow::showAbout() {
    auto* const box = new QMessageBox(
        QMessageBox::Information, tr("About"),
        tr("Structure Editor %1\n\nMolecular structures and density maps: looking at them, "
           "selecting in them, deleting what is not needed.\n\nMIT licence.")
            .arg(QApplication::applicationVersion()),
        QMessageBox::Close, this);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace workbench
