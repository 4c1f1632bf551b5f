#include "DataVersion.h"

#include "Holder.h"
#include "Recording.h"

#include <new>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

struct Versions {
    std::uint32_t now = 0;
    std::uint32_t saved = 0;
    std::uint32_t recordedIn = 0; ///< the step that holds the version before it
};

// Never used twice, also not after a change was taken back.
std::uint32_t lastVersion = 0;

/// By the identifiers of top-level items, of those that were changed; few are.
std::unordered_map<std::uint32_t, Versions>& changed() {
    // Never destroyed: items may outlive every static object.
    static auto* const all = new std::unordered_map<std::uint32_t, Versions>;
    return *all;
}

Versions versionsOf(const Compound* item) {
    if (!item)
        return {};
    const auto found = changed().find(HostItem::of(item).id);
    return found == changed().end() ? Versions() : found->second;
}

/// An empty composite is nothing to a file.
bool isForFiles(const HostItem& item) {
    if (item.isHolder())
        return static_cast<const Holder&>(item).childCount() > 0;
    return item.kind == Kind::Atom || item.kind == Kind::Bond;
}

} // namespace

std::uint64_t dataVersion(const Compound* topLevel) {
    return versionsOf(topLevel).now;
}

bool hasUnsavedData(const Compound* topLevel) {
    const Versions versions = versionsOf(topLevel);
    return versions.now != versions.saved;
}

void setDataSaved(const Compound* topLevel) {
    if (const auto found = changed().find(HostItem::of(topLevel).id); found != changed().end())
        found->second.saved = found->second.now;
}

void setDataUnsaved(const Compound* topLevel) {
    changed()[HostItem::of(topLevel).id].saved = ++lastVersion;
}

void noteDataChange(const HostItem& item) noexcept {
    if (!isForFiles(item))
        return;
    const HostItem* top = &item;
    while (top->parent && top->parent->kind != Kind::Space)
        top = top->parent;
    // What is built aside, and an entry as a whole, is no change of an entry. Who takes a step back
    // restores the version, too.
    if (top == &item || !top->parent || recording.isReplaying)
        return;
    try {
        Versions& versions = changed()[top->id];
        if (Step* const step = recording.step; step && versions.recordedIn != step->number()) {
            if (!step->record(Step::Write::Alter, static_cast<const Holder*>(top)->self,
                              versions.now))
                return;
            versions.recordedIn = step->number();
        }
        versions.now = ++lastVersion;
    } catch (const std::bad_alloc&) {
        if (recording.step)
            recording.step->fail();
    }
}

std::uint32_t swapDataVersion(const HostItem& top, std::uint32_t version) noexcept {
    return std::exchange(changed().at(top.id).now, version);
}

void forgetDataVersion(const HostItem& item) noexcept {
    changed().erase(item.id);
}

} // namespace memory_host
