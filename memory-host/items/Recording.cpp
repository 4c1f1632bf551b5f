#include "Recording.h"

#include "GridItem.h"
#include "Parking.h"

namespace memory_host {

namespace {

void loseSteps() noexcept {
    if (recording.keeper && !recording.isReplaying)
        recording.keeper->lose();
}

} // namespace

StepKeeper::~StepKeeper() = default;

Step* stepForComing(const HostItem& parent) noexcept {
    if (recording.isReplaying || !isInSpace(parent))
        return nullptr;
    if (!recording.step)
        loseSteps();
    return recording.step;
}

Step* stepForGoing(const Compound& item) noexcept {
    Step* const step = stepForComing(HostItem::of(&item));
    // The step is lost if there is no room.
    if (step && !step->hasFailed())
        static_cast<void>(recording.keeper->hasRoomFor(memoryOf(item)));
    return recording.step && step ? step : nullptr;
}

bool beginRecording() noexcept {
    if (!recording.keeper)
        return true;
    const StepKeeper::Begun begun = recording.keeper->begin();
    recording.step = begun.step;
    if (begun.step)
        for (GridItem* grid : GridItem::all())
            grid->m_keptBounds = grid->bounds();
    return !begun.isRefused;
}

bool endRecording(bool isBroken, std::string_view label) noexcept {
    Step* const step = recording.step;
    if (!step)
        return false;
    step->recordBounds();
    recording.step = nullptr;
    const bool isTakenBack = isBroken || step->hasFailed();
    if (isTakenBack) {
        step->takeBack();
        recording.keeper->drop();
    } else {
        recording.keeper->end(label);
    }
    return isTakenBack;
}

} // namespace memory_host
