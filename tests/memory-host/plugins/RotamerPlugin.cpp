// A rotamer plug-in for tests. It writes each call that it gets to the host's log, then does what
// it was told to with "Plan": nothing, or something that a caller has to live with.
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "HostExport.h"
#include "Logger.h"
#include "PluginManager.h"
#include "PluginResult.h"
#include "Space.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

using TAVIK::Compound;
using TAVIK::DataMaker;

namespace {

std::string plan;
Compound* target = nullptr;

std::string hex(const void* address) {
    char text[24];
    std::snprintf(text, sizeof text, "%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(address)));
    return text;
}

void record(const std::string& entryPoint, const void* data) {
    const PluginCall* const call = PluginManager::CurrentCall();
    std::string line = entryPoint + " " + hex(data);
    if (call)
        line += " " + call->type + "|" + call->name + "|" + call->sender + "|" + call->command +
                "|" + call->argument + "|" + hex(call->data) + "|" + hex(call->constData) + "|" +
                (call->more ? std::to_string(*static_cast<const unsigned char*>(call->more)) : "");
    Logger::Write(line);
}

void destroy(Compound* item) {
    const DataDelete<Compound> guard(nullptr, item);
    if (guard.m_good)
        DataMaker::Destroy(item);
}

void make(Compound* parent, const std::string& name, const std::string& kind) {
    const DataAdder<Compound> guard(nullptr, parent);
    if (guard.m_good)
        DataMaker::makeCore(parent, name, kind);
}

void followPlan(Compound* residue) {
    if (plan == "throw")
        throw std::runtime_error("no rotamers here");
    if (plan == "add to the residue")
        make(residue, "Rotamer", "Group");
    if (plan == "destroy the residue")
        destroy(residue);
    if (plan == "add to the target")
        make(target, "NEW 1", "Residue");
    if (plan == "destroy the target" && target)
        destroy(std::exchange(target, nullptr));
    if (plan == "destroy everything")
        while (TAVIK::Space::instance()->ChildBegin() != TAVIK::Space::instance()->ChildEnd())
            destroy(*TAVIK::Space::instance()->ChildBegin());
}

} // namespace

extern "C" HOST_EXPORT void Command(const char* name, void* data, PluginResult* result) {
    const std::string action = name;
    if (action == "Plan") {
        plan = *static_cast<const std::string*>(data);
        target = static_cast<Compound*>(PluginManager::CurrentCall()->more);
    } else if (action == "Rotamer") {
        record("Command", data);
        followPlan(static_cast<Compound*>(data));
    } else {
        result->SetResultCode(PluginResult::NotRecognized);
        result->SetResultText("'" + action + "' is not known");
    }
}

extern "C" HOST_EXPORT void CommandC(const char*, const void* data, PluginResult*) {
    record("CommandC", data);
}

extern "C" HOST_EXPORT void Execute0(PluginResult*) {
    record("Execute0", nullptr);
}

extern "C" HOST_EXPORT bool IsDone() {
    return true;
}

extern "C" HOST_EXPORT void Cleanup() {}
