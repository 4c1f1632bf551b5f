// A plug-in for the plug-in manager's tests, built several times: THROWS_IN names an entry point
// that throws, THROWS_STATIC makes a static object throw, LACKS_ISDONE and LACKS_SYMBOL leave
// something out. What it sees it writes to the
// host's log.
#include "HostExport.h"
#include "Logger.h"
#include "PluginManager.h"
#include "PluginResult.h"

#include <functional>
#include <stdexcept>
#include <string>

#ifndef THROWS_IN
#define THROWS_IN ""
#endif

namespace {

using Action = std::function<void()>;

/// Known to this library only.
class OwnError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the tests want to be run when the library is unloaded.
struct AtUnload {
    const Action* action = nullptr;
    ~AtUnload() {
        if (action)
            (*action)();
    }
} atUnload;

const Action* atCleanup = nullptr;
int cleanups = 0;

void throwIn(const std::string& entryPoint) {
    if (entryPoint == THROWS_IN)
        throw OwnError("no " + entryPoint + "\nhere");
}

#ifdef THROWS_STATIC
const struct Static {
    Static() { throw OwnError("no room\nhere"); }
} throwing;
#endif

void record(const std::string& entryPoint, const std::string& value) {
    const PluginCall* const call = PluginManager::CurrentCall();
    Logger::Write(entryPoint + " " + value +
                  (call ? " " + call->type + "|" + call->name + "|" + call->sender + "|" +
                              call->command + "|" + call->argument + "|" + (call->data ? "d" : "") +
                              (call->constData ? "c" : "") + (call->more ? "m" : "")
                        : ""));
}

void answer(PluginResult* result, PluginResult::ResultCode code, const std::string& text) {
    result->SetResultCode(code);
    result->SetResultText(text);
}

} // namespace

#ifdef LACKS_SYMBOL
void standsNowhere();
#endif

extern "C" HOST_EXPORT void Command(const char* name, void* data, PluginResult* result) {
    throwIn("Command");
    const std::string action = name;
    if (action == "Record")
        record("Command", std::to_string(*static_cast<double*>(data)));
    else if (action == "Run")
        (*static_cast<const Action*>(data))();
    else if (action == "AtCleanup")
        atCleanup = static_cast<const Action*>(data);
    else if (action == "AtUnload")
        atUnload.action = static_cast<const Action*>(data);
    else if (action == "Fail")
        answer(result, PluginResult::Failure, "");
    else if (action == "ThrowNumber")
        throw 42;
    else
        answer(result, PluginResult::NotRecognized, "'" + action + "' is not known");
#ifdef LACKS_SYMBOL
    standsNowhere();
#endif
}

extern "C" HOST_EXPORT void CommandC(const char* name, const void* data, PluginResult* result) {
    throwIn("CommandC");
    if (std::string(name) == "Record")
        record("CommandC", std::to_string(*static_cast<const double*>(data)));
    else
        answer(result, PluginResult::NotRecognized, "");
}

extern "C" HOST_EXPORT void Execute0(PluginResult*) {
    throwIn("Execute0");
    record("Execute0", "");
}

#ifndef LACKS_ISDONE
extern "C" HOST_EXPORT bool IsDone() {
    throwIn("IsDone");
    return true;
}
#endif

extern "C" HOST_EXPORT void Cleanup() {
    throwIn("Cleanup");
    Logger::Write("Cleanup " + std::to_string(++cleanups));
    if (atCleanup)
        (*atCleanup)();
}
