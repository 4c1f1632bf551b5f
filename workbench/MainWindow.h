// The workbench's window: the windows of plug-ins as docks, the find box, the inspector, the status
// line, and the menus.
#pragma once

#include "DestroyObserver.h"
#include "Focus.h"
#include "Messages.h"
#include "Remembered.h"
#include "Subscriber.h"

#include <QMainWindow>
#include <QStringList>

#include <deque>
#include <memory>
#include <string>

class QAction;
class QDockWidget;
class QMenu;
class QToolBar;

namespace workbench {

class ErrorBar;
class FindBox;
class Inspector;
class Opening;
class PluginDocks;
class Saving;
class StatusLine;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    struct Setup {
        QStringList plugins; ///< loaded ones, as "type/name"
        QString dataFolder;  ///< with the help pages
        QString memoryFile;  ///< see Remembered
    };

    explicit MainWindow(const Setup& setup);
    /// The windows of plug-ins are let go, hidden.
    ~MainWindow() override;

    /// Starts every plug-in, with its windows in this one. Returns whether any shows something.
    bool startPlugins();

    StatusLine& status() { return *m_status; }
    FindBox& find() { return *m_find; }
    Inspector& inspector() { return *m_inspector; }
    ErrorBar& errors() { return *m_errors; }
    PluginDocks& docks() { return *m_docks; }
    Remembered& remembered() { return m_remembered; }

    /// A line on what went wrong, or was read other than as written. What is written to the log
    /// while the window exists is shown by itself.
    void showError(const std::string& line);
    /// Remembers that these files were opened.
    void rememberFiles(const QStringList& files);
    /// Keeps where window and docks are for the next start; not of a window that is smaller than
    /// its docks can be, which says nothing of what the user wants.
    void rememberWindow();

public slots:
    /// Opens files one after another, those that come meanwhile behind them; later, where the data
    /// space is locked. What cannot be opened is said in the window and in the log.
    void openFiles(const QStringList& files);
    /// Shows the window in front of others.
    void present();
    /// Saves the file of the entry of the focus or, without one, of the only one that there is.
    void save();
    void saveAs();
    /// Saves the selected atoms as one file.
    void saveSelectionAs();
    /// Saves every file with unsaved changes.
    void saveAll();
    /// Destroys the entry of the focus or, without one, the only one that there is; after a
    /// question, where it has unsaved changes.
    void closeEntry();
    /// Copies the inspector's text where that has the keyboard, else the names of what is selected.
    void copy();
    /// Lets the view ask for a size and a file, and draw a picture.
    void savePicture();
    void toggleFullScreen();
    /// Shows what is selected alone, or all that is open, as one change. Of what is left
    /// alone the view shows all.
    void showOnlySelected();
    void showEverything();

signals:
    /// A file was saved.
    void saved();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeMenus();
    void makeFileMenu();
    void makeSaveActions(QMenu* menu);
    void makeEditMenu();
    void makePluginMenu();
    void namePlugins(const QList<QAction*>& actions);
    void makeHelpMenu();
    void makeViewMenu();
    void fillRecentFiles();
    void fillViewMenu();
    void askForFiles();
    void nameEntryToClose();
    void showUsually();
    void giveViewTheKeyboard();
    void showAbout();
    void updateTitle();
    void updateSaving();
    void hearLog();
    void showLogLine(const QString& line);
    TAVIK::Compound* entryToClose() const;
    TAVIK::Compound* entryToSave() const;
    QSize usualSize() const;

    QStringList m_plugins;
    QString m_dataFolder;
    Remembered m_remembered;
    std::unique_ptr<PluginDocks> m_docks;
    StatusLine* m_status;
    FindBox* m_find;
    Inspector* m_inspector;
    QDockWidget* m_inspectorDock;
    ErrorBar* m_errors;
    QToolBar* m_bar; ///< with the find box and the errors
    QMenu* m_recent = nullptr;
    QMenu* m_view = nullptr;
    QList<QAction*> m_showing;  ///< of the menu "View", which change what is shown
    QAction* m_close = nullptr; ///< closes the entry of the focus
    QAction* m_save = nullptr;
    QAction* m_saveAs = nullptr;
    QAction* m_saveSelection = nullptr;
    QAction* m_saveAll = nullptr;
    std::unique_ptr<Opening> m_opening;
    std::unique_ptr<Saving> m_saving;
    std::deque<QString> m_toOpen;
    /// Messages of plug-ins are in the log as well, and no errors.
    class MessageWatch : public MessageObserver {
    public:
        void messageShown(const QString& text) override { messages << text; }
        QStringList messages; ///< whose lines have not come yet
    } m_messages;
    bool m_isOpening = false;
    bool m_isArranged = false;
    /// What can be saved depends on the data and the focus.
    class SavingWatch : public Subscriber, public TAVIK::FocusObserver {
    public:
        explicit SavingWatch(MainWindow& window) : m_window(window) {}
        void commUpdate() override { m_window.updateSaving(); }
        void commAdd() override { m_window.updateSaving(); }
        void commDelete() override { m_window.updateSaving(); }
        void focusMoved(TAVIK::Compound*, bool) override { m_window.updateSaving(); }

    private:
        MainWindow& m_window;
    } m_watch{*this};
};

} // namespace workbench
