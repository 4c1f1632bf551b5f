// The frame of a plug-in that shows one main window: its entry points, its tables of named actions
// and the lifetime of the window. A plug-in includes this file in one source file and writes one
// line there:
//
//     GUI_PLUGIN(MyWindow)
//
// MyWindow is a QMainWindow (in practice a BaseWindow) that can be made without arguments.
#pragma once

#include "Checks.h"
#include "PluginResult.h"

#include <QtGlobal>

#include <map>
#include <string>

#define GUI_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

// Private to each library: two plug-ins in one process must never share a window or a table.
namespace {

template <class Window> class GUIPlugin {
public:
    using Action = void (*)(void* data, PluginResult* result);
    using CAction = void (*)(const void* data, PluginResult* result);

    /// Runs the action `name` on writable data; the first command creates tables and window.
    static void Command(const char* name, void* data, PluginResult* result) {
        run(name, data, result);
    }
    /// The same for read-only data.
    static void CommandC(const char* name, const void* data, PluginResult* result) {
        run(name, data, result);
    }
    /// Whether the plug-in shows nothing: no window, or a hidden one that is not minimised.
    static bool IsDone() {
        return !instance_ || (!instance_->isVisible() && !instance_->isMinimized());
    }
    /// Destroys window and tables if there is a window.
    static void Cleanup() {
        qDebug("%s", "GUIPlugin::Cleanup()");
        if (instance_)
            fKill(nullptr, nullptr);
    }

    static void Create() {
        checkThat(nullptr == options_, "0 == options_", source, __LINE__);
        // Tables that are already there are given up, not freed: an action of theirs may be
        // running.
        options_ = new Table<Action>;
        cOptions_ = new Table<CAction>;
        addAction("Show", &fShow);
        addAction("Kill", &fKill);
        instance_ = new Window();
    }

    static void addAction(const std::string& name, Action function) {
        add(options_, name, function, "GUIPlugin: redefining Action '%s'");
    }
    static void addAction(const std::string& name, CAction function) {
        add(cOptions_, name, function, "GUIPlugin: redefining CAction '%s'");
    }

    static void execAction(const std::string& name, void* data, PluginResult* result) {
        exec(options_, "Command", name, data, result);
    }
    static void execAction(const std::string& name, const void* data, PluginResult* result) {
        exec(cOptions_, "CommandC", name, data, result);
    }

    static void fShow(const void*, PluginResult*) {
        instance_->show();
        if (instance_->isMinimized())
            instance_->showNormal();
        instance_->raise();
    }
    static void fKill(const void*, PluginResult*) {
        checkPtr(instance_, source, __LINE__);
        qDebug("%s", "GUIPlugin: fKill");
        delete instance_;
        instance_ = nullptr;
        checkPtr(cOptions_, source, __LINE__);
        delete cOptions_;
        cOptions_ = nullptr;
        checkPtr(options_, source, __LINE__);
        delete options_;
        options_ = nullptr;
    }

private:
    template <class Function> using Table = std::map<std::string, Function>;

    static constexpr const char* source = "../../include/GUIPlugin";

    template <class Data> static void run(const char* name, Data* data, PluginResult* result) {
        if (!instance_)
            Create();
        checkPtr(name, source, __LINE__);
        execAction(std::string(name ? name : ""), data, result);
    }

    template <class Function>
    static void add(Table<Function>* table, const std::string& name, Function function,
                    const char* redefining) {
        checkPtr(function, source, __LINE__);
        checkThat(!name.empty(), "! Action.empty()", source, __LINE__);
        if (!table->insert_or_assign(name, function).second)
            qDebug(redefining, name.c_str());
    }

    template <class Function, class Data>
    static void exec(Table<Function>* table, const std::string& entryPoint, const std::string& name,
                     Data* data, PluginResult* result) {
        const auto found = table->find(name);
        if (found == table->end()) {
            const std::string text = entryPoint + " '" + name + "' not recognized";
            qDebug("%s", text.c_str());
            result->SetResultCode(PluginResult::NotRecognized);
            result->SetResultText(text);
            return;
        }
        // The action may destroy the table and the found entry with it: neither is touched again.
        found->second(data, result);
        qDebug("GUIPlugin::%s: Execution successful", entryPoint.c_str());
    }

    static inline Table<Action>* options_ = nullptr;
    static inline Table<CAction>* cOptions_ = nullptr;
    static inline Window* instance_ = nullptr;
};

} // namespace

/// Defines the five entry points of a plug-in whose one window is a `WindowClass`.
#define GUI_PLUGIN(WindowClass)                                                                    \
    GUI_PLUGIN_EXPORT void Command(const char* name, void* data, PluginResult* result) {           \
        GUIPlugin<WindowClass>::Command(name, data, result);                                       \
    }                                                                                              \
    GUI_PLUGIN_EXPORT void CommandC(const char* name, const void* data, PluginResult* result) {    \
        GUIPlugin<WindowClass>::CommandC(name, data, result);                                      \
    }                                                                                              \
    GUI_PLUGIN_EXPORT void Execute0(PluginResult* result) {                                        \
        GUIPlugin<WindowClass>::CommandC("Show", nullptr, result);                                 \
    }                                                                                              \
    GUI_PLUGIN_EXPORT bool IsDone() {                                                              \
        return GUIPlugin<WindowClass>::IsDone();                                                   \
    }                                                                                              \
    GUI_PLUGIN_EXPORT void Cleanup() {                                                             \
        GUIPlugin<WindowClass>::Cleanup();                                                         \
    }
