// One plug-in: its library, and the calls of its entry points.
#pragma once

#include "Logger.h"
#include "PluginManager.h"
#include "PluginResult.h"

#include <QLibrary>
#include <QString>
#include <QWidget>

#include <functional>
#include <string>

namespace memory_host {

/// The functions of a plug-in that the host calls.
struct EntryPoints {
    void (*command)(const char* name, void* data, PluginResult* result) = nullptr;
    void (*commandC)(const char* name, const void* data, PluginResult* result) = nullptr;
    void (*execute0)(PluginResult* result) = nullptr;
    bool (*isDone)() = nullptr;
    void (*cleanup)() = nullptr;
};

/// How many entry points of any plug-in have not returned.
int runningEntryPoints();

} // namespace memory_host

class Plugin {
public:
    Plugin(const QString& type, const QString& name, const QString& file);

    QString file() const { return m_library.fileName(); }
    const memory_host::EntryPoints& entryPoints() const { return m_entryPoints; }

    /// Returns whether it is loaded and has all entry points; what it lacks is in the log.
    bool load();

    /// Runs `call(&result)`; returns whether it ended without an exception and with success. What
    /// went wrong is in the log, as a failure of `what`.
    bool run(const std::string& what, const std::function<void(PluginResult*)>& call) const;

    /// Whether the class of `widget` stands in its library.
    bool defines(const QWidget& widget) const;

    /// The plug-in's answer; true when it throws.
    bool isDone();

    /// Calls Cleanup.
    void cleanUp();
    /// A plug-in that threw in Cleanup or left a widget or a subscriber behind stays in memory: its
    /// code is still needed.
    void unload();

    /// Logs one line about the plug-in.
    void report(const std::string& text) const { Logger::Write(nameInLog() + ' ' + text); }

private:
    template <class Function>
    void resolve(Function& function, const char* symbol, std::string& missing);
    /// An address in the library; null when it has no entry point at all.
    const void* code() const;
    /// What of the library is still in use, in words; empty when nothing is.
    std::string leftBehind() const;
    /// Type, name and file.
    std::string nameInLog() const { return m_label + " (" + file().toStdString() + ')'; }

    std::string m_label;
    QLibrary m_library;
    memory_host::EntryPoints m_entryPoints;
    std::string m_isDoneFailure;
    bool m_needed = false;
};
