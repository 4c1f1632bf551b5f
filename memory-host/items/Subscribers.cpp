#include "Subscribers.h"

#include "Destroying.h"
#include "FocusedItem.h"
#include "Logger.h"
#include "MessageObservers.h"
#include "Publishing.h"

#include <exception>
#include <new>
#include <string>

namespace memory_host {

namespace {

// Made before memory runs out.
const std::string failedWithoutMemory = std::string(changeFailed) + "not enough memory";

void logFailure(const char* failed, const char* what) noexcept {
    try {
        std::string line;
        try {
            line = std::string(failed) + what;
        } catch (const std::bad_alloc&) {
            Logger::Write(failedWithoutMemory);
            return;
        }
        Logger::Write(line);
    } catch (...) { // The log itself failed.
    }
}

} // namespace

std::vector<const void*> listeners() {
    std::vector<const void*> all;
    for (const Subscriber* subscriber : publishing().subscribers)
        if (subscriber)
            all.push_back(subscriber);
    addDestroyObservers(all);
    focusState().observers.appendTo(all);
    messageObservers().appendTo(all);
    return all;
}

std::size_t subscriberCount() {
    return listeners().size();
}

void logHandlerFailure(const char* failed) noexcept {
    try {
        throw;
    } catch (const std::exception& error) {
        logFailure(failed, error.what());
    } catch (...) {
        logFailure(failed, "unknown exception");
    }
}

} // namespace memory_host
