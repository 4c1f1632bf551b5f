// A test class of the main window with the plug-ins of the build.
#pragma once

#include "BaseWindow.h"
#include "MainWindow.h"
#include "PluginManager.h"
#include "Space.h"
#include "TestSupport.h"
#include "services/PluginFolder.h"

#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>

#include <memory>

namespace test_support {

class MainWindowCase : public TestCase {
    Q_OBJECT

protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<workbench::MainWindow> m_window;
    const QString m_editor = "plug-in Edit/Vuxo";
    const QString m_view = "plug-in Display/View3D";

    void open() {
        const QStringList plugins = memory_host::loadPlugins(STAGE_PLUGINS);
        // Others are there, too, which have no window.
        QVERIFY(plugins.contains("Display/View3D") && plugins.contains("Edit/Vuxo"));
        start(plugins);
    }
    /// The same with the plug-ins of another folder, which holds these.
    void open(const QString& folder, const QStringList& expected) {
        const QStringList plugins = memory_host::loadPlugins(folder);
        QCOMPARE(plugins, expected);
        start(plugins);
    }
    void start(const QStringList& plugins) {
        m_window = std::make_unique<workbench::MainWindow>(workbench::MainWindow::Setup{
            plugins, SOURCE_DIR "/data", m_folder->filePath("window.ini")});
        QVERIFY(m_window->startPlugins());
        m_window->resize(1200, 800);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        takeMessages(); // plug-ins say what they do on the debug stream
    }
    void end() {
        memory_host::unloadPlugins();
        m_window.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        takeMessages();
    }
    QDockWidget* dock(const QString& name) const { return m_window->findChild<QDockWidget*>(name); }
    BaseWindow* windowIn(const QString& name) const {
        return dock(name) ? qobject_cast<BaseWindow*>(dock(name)->widget()) : nullptr;
    }
    /// An entry of a menu by their labels, without the marks of keys.
    QAction* entry(const QString& menu, const QString& label) const {
        for (const QAction* action : m_window->menuBar()->actions())
            if (action->text().remove('&') == menu)
                for (QAction* each : action->menu()->actions())
                    if (each->text().remove('&').section('\t', 0, 0) == label)
                        return each;
        return nullptr;
    }
    static void send(const std::string& command) {
        const void* const none = nullptr;
        PluginManager::Command("Edit", "Vuxo", "test", command, "", none);
    }
    static QStringList entries() {
        QStringList names;
        TAVIK::Space* const space = TAVIK::Space::instance();
        for (TAVIK::Compound** item = space->ChildBegin(); item != space->ChildEnd(); ++item)
            names << QString::fromStdString((*item)->GetName());
        return names;
    }
    static QString sample() { return SOURCE_DIR "/data/sample.pdb"; }

protected slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup() override {
        end();
        TestCase::cleanup();
    }
};

} // namespace test_support
