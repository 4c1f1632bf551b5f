// Change guards and subscribers: who may change the data now, and who hears of it.
#pragma once

#include "Publisher.h"

#include <string>
#include <vector>

class Subscriber;

namespace memory_host {

/// The state of all guards and notifications.
struct Publishing {
    /// The notifications of one change.
    struct Round;

    std::vector<Subscriber*> subscribers; ///< null: unregistered during a notification
    Round* innermost = nullptr;
    int locks = 0;
    int tellings = 0; ///< nested notifications
    bool changing = false;
    std::string label;  ///< of the change in progress
    int exceptions = 0; ///< that were in flight when it began
};

Publishing& publishing();

/// Tells every subscriber but `originator` of a change that is done.
void tellAll(const Subscriber* originator, Publisher::ActionType kind) noexcept;

} // namespace memory_host
