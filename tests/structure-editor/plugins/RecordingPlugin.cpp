// A plug-in that stands where the ones for surfaces and electrostatics do: it writes each command
// that it is sent to the host's log, and then does what a test wants of it.
#include "HostExport.h"
#include "Logger.h"
#include "PluginManager.h"
#include "PluginResult.h"

#include <array>
#include <cstdio>
#include <functional>
#include <string>

namespace {

// Run inside each command; null or empty for nothing.
const std::function<void()>* action = nullptr;

bool carriesLevel(const std::string& command) {
    return command == "SubSurface" || command == "AddContourHi" || command == "AddContourLo";
}

std::string valueText(const std::string& command, const void* data) {
    if (!data)
        return "nothing";
    if (!carriesLevel(command))
        return *static_cast<const bool*>(data) ? "true" : "false";
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.17g", *static_cast<const double*>(data));
    return text.data();
}

void record(const char* overload, const char* name, const void* data) {
    const PluginCall* const call = PluginManager::CurrentCall();
    Logger::Write(std::string(overload) + " " + call->type + "|" + call->name + "|" + call->sender +
                  "|" + name + "|" + call->argument + "|" + valueText(name, data));
    if (action && *action)
        (*action)();
}

} // namespace

extern "C" HOST_EXPORT void Command(const char* name, void* data, PluginResult*) {
    const std::string command = name;
    if (command == "RunInCommands") {
        action = static_cast<const std::function<void()>*>(data);
        return;
    }
    record("Command", name, data);
    // The sender does not mind what becomes of its value.
    if (carriesLevel(command))
        *static_cast<double*>(data) = -1;
    else
        *static_cast<bool*>(data) = true;
}

extern "C" HOST_EXPORT void CommandC(const char* name, const void* data, PluginResult*) {
    record("CommandC", name, data);
}

extern "C" HOST_EXPORT void Execute0(PluginResult*) {}

extern "C" HOST_EXPORT bool IsDone() {
    return true;
}

extern "C" HOST_EXPORT void Cleanup() {
    action = nullptr;
}
