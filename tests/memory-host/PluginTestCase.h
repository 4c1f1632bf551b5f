// What the tests of plug-ins share: a folder of plug-ins for each test function, filled with copies
// of the test plug-ins, and commands to these.
#pragma once

#include "BaseWindow.h"
#include "PluginManager.h"
#include "TestSupport.h"
#include "services/PluginFolder.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <dlfcn.h>
#include <functional>
#include <memory>
#include <string>

namespace plugin_tools {

/// What the test plug-ins run on the command "Run".
using Action = std::function<void()>;

/// Whether a library is in memory; asking does not load it.
inline bool isInMemory(const QString& file) {
    void* const handle = dlopen(QFile::encodeName(file).constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

/// Sends a command with writable data to a plug-in of the type "Create".
inline void send(const std::string& name, const std::string& command, void* data,
                 const std::string& argument = {}) {
    PluginManager::Command("Create", name, "Tester", command, argument, data);
}

/// The open window of that title; null when there is none.
inline BaseWindow* windowTitled(const QString& title) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowTitle() == title)
            return qobject_cast<BaseWindow*>(widget);
    }
    return nullptr;
}

class PluginTestCase : public test_support::TestCase {
protected:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }
    void cleanup() override {
        memory_host::unloadPlugins();
        // A line for each clean-up is the test plug-in's own.
        QStringList left = takeHostLog();
        left.removeIf([](const QString& line) { return line.startsWith("Cleanup "); });
        QCOMPARE(left, QStringList());
        m_folder.reset();
        TestCase::cleanup();
    }

    /// Puts one of the test plug-ins, under its own or another name, into the plug-in folder.
    QString place(const QString& plugin, const QString& file = {}) {
        const QString built = QStringLiteral(TEST_PLUGINS "/lib%1.so").arg(plugin);
        if (!QFile::exists(built))
            qFatal("%s is not built", qPrintable(built));
        QString path = pathOf(file.isEmpty() ? "Create/lib" + plugin + ".so" : file);
        if (!QFile::copy(built, path))
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    /// The path of a file in the plug-in folder; its folder is made.
    QString pathOf(const QString& file) {
        QString path = m_folder->filePath(file);
        QDir().mkpath(QFileInfo(path).path());
        return path;
    }
    QString placeText(const QString& file, const QByteArray& text) {
        QString path = pathOf(file);
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size())
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    QStringList load() { return memory_host::loadPlugins(m_folder->path()); }
    /// Loads one test plug-in.
    QString loadOne(const QString& plugin) {
        QString path = place(plugin);
        if (load() != QStringList("Create/" + plugin))
            qFatal("%s is not loaded: %s", qPrintable(plugin),
                   qPrintable(takeHostLog().join(u'\n')));
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

} // namespace plugin_tools
