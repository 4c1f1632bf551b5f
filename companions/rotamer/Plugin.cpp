// The plug-in's entry points, the only symbols that the library exports.
#include "CommandPlugin.h"

#include "Messages.h"
#include "PluginManager.h"
#include "Rotamers.h"

#include <memory>
#include <new>

namespace {

std::unique_ptr<rotamer::WaitingResidues> waiting;

// Sent as a command, during which the host keeps the library.
void askForWaiting() {
    PluginManager::Command("Create", "Rotamer", "Rotamer", "Waiting", "",
                           static_cast<void*>(nullptr));
}

void addRotamers(void* data, PluginResult* result) {
    auto* const residue = dynamic_cast<TAVIK::Residue*>(static_cast<TAVIK::Compound*>(data));
    if (!residue) {
        result->SetResultCode(PluginResult::Failure);
        result->SetResultText("rotamers are added to a residue, which was not given");
        return;
    }
    if (!waiting)
        waiting = std::make_unique<rotamer::WaitingResidues>(&askForWaiting);
    waiting->add(residue);
}

void addWaiting(void*, PluginResult*) {
    if (!waiting)
        return;
    const std::vector<TAVIK::Residue*> residues = waiting->take();
    rotamer::Report report;
    try {
        report = rotamer::addRotamers(residues);
    } catch (const std::bad_alloc&) {
        report.lines << QStringLiteral("No rotamers: there is not enough memory for them.");
    }
    // The last one stays in sight.
    for (const QString& line : report.details + report.lines)
        Messages::Show(line);
}

void forgetAll() {
    waiting.reset();
}

} // namespace

COMMAND_PLUGIN_WITH_CLEANUP(&forgetAll, {"Rotamer", &addRotamers}, {"Waiting", &addWaiting})
