// Recording what the change in progress writes.
#pragma once

#include "Step.h"

#include <cstddef>
#include <string_view>

namespace memory_host {

/// Keeps the steps of changes that are done.
class StepKeeper {
public:
    StepKeeper() = default;
    StepKeeper(const StepKeeper&) = delete;
    StepKeeper& operator=(const StepKeeper&) = delete;
    virtual ~StepKeeper();

    struct Begun {
        Step* step;     ///< null: nothing is recorded
        bool isRefused; ///< there is no memory for a step, so that the change must not begin
    };
    virtual Begun begin() noexcept = 0;
    /// The change is done; its step is the last one that was begun.
    virtual void end(std::string_view label) noexcept = 0;
    /// The change was taken back, and never was.
    virtual void drop() noexcept = 0;
    /// Whether the step in progress may grow by this; if not, it is lost.
    virtual bool hasRoomFor(std::size_t bytes) noexcept = 0;
    /// The data change in a way that is not recorded: no step can be taken back any more.
    virtual void lose() noexcept = 0;
    /// All subscribers have been told of the change.
    virtual void tell() noexcept = 0;
};

/// What is recorded now.
struct Recording {
    StepKeeper* keeper = nullptr;
    Step* step = nullptr;     ///< of the guard that is open
    bool isReplaying = false; ///< a step is being taken back or done again
    /// Items that were made outside of the space, are no part of others, and are still there.
    std::size_t detachedCount = 0;
};
inline constinit Recording recording;

/// Whether an item is in the data space.
inline bool isInSpace(const HostItem& item) noexcept {
    const HostItem* root = &item;
    while (root->parent)
        root = root->parent;
    return root->kind == Kind::Space;
}

/// The step in which a write to an item must be recorded; null when the item is not in the space,
/// or nothing is recorded.
inline Step* stepFor(const HostItem& item) noexcept {
    if (!recording.step || recording.isReplaying)
        return nullptr;
    // Looking up to the space is a cache miss for each composite.
    const bool isSurelyIn = item.parent && recording.detachedCount == 0;
    return isSurelyIn || isInSpace(item) ? recording.step : nullptr;
}
/// The same for an item that comes or goes, and for a mesh. Where that is not recorded, nothing
/// that was can be taken back any more: it may be about what is not there.
Step* stepForComing(const HostItem& parent) noexcept;
Step* stepForGoing(const Compound& item) noexcept;

/// Begins to record, when a guard opens; false if that is refused.
[[nodiscard]] bool beginRecording() noexcept;
/// Ends that. If `isBroken`, or if memory ran out meanwhile, the change is taken back; returns
/// whether it was.
bool endRecording(bool isBroken, std::string_view label) noexcept;

} // namespace memory_host
