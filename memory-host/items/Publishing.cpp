// Change guards and subscribers: who may change the data now, and who hears of it.
#include "ChangeData.h"
#include "Destroying.h"
#include "FocusedItem.h"
#include "Logger.h"
#include "MessageObservers.h"
#include "SpaceLock.h"
#include "Subscriber.h"
#include "Subscribers.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The notifications of one change. A subscriber may answer with a change of its own, whose round is
// nested in this one.
struct Round {
    const Subscriber* originator;
    Publisher::ActionType kind;
    std::size_t count; ///< subscribers that register later have seen the new data
    Round* outer;
    std::size_t next = 0;
};

struct Publishing {
    std::vector<Subscriber*> subscribers; ///< null: unregistered during a notification
    Round* innermost = nullptr;
    int locks = 0;
    int tellings = 0; ///< nested notifications
    bool changing = false;
    std::string label;  ///< of the change in progress
    int exceptions = 0; ///< that were in flight when it began
};

// Bounds the recursion: subscribers that answer each change with another would never end, and two
// of them double the work at each level.
constexpr int deepestTelling = 8;

Publishing& publishing() {
    // Never destroyed: subscribers may live as long as static objects.
    static auto* const state = new Publishing;
    return *state;
}

// Made before memory runs out.
const std::string failedWithoutMemory =
    std::string(memory_host::changeFailed) + "not enough memory";

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

void logChange(const std::string& label) noexcept {
    try {
        if (!label.empty())
            Logger::Debug(label);
    } catch (...) { // A line that nobody may read is not worth an exception.
    }
}

void tellOne(Subscriber& subscriber, Publisher::ActionType kind) noexcept {
    memory_host::callHandler([&subscriber, kind] {
        switch (kind) {
        case Publisher::Update:
            subscriber.commUpdate();
            break;
        case Publisher::Add:
            subscriber.commAdd();
            break;
        case Publisher::Delete:
            subscriber.commDelete();
            break;
        }
    });
}

void tellRest(Round& round) noexcept {
    while (round.next != round.count)
        if (Subscriber* subscriber = publishing().subscribers[round.next++];
            subscriber && subscriber != round.originator)
            tellOne(*subscriber, round.kind);
}

void tellAll(const Subscriber* originator, Publisher::ActionType kind) noexcept {
    Publishing& state = publishing();
    ++state.tellings;
    Round round{originator, kind, state.subscribers.size(), state.innermost};
    // A subscriber that may still hold pointers to destroyed items hears of the deletion before it
    // hears of a change that answers the deletion.
    for (Round* outer = round.outer; outer; outer = outer->outer)
        if (outer->kind == Publisher::Delete)
            tellRest(*outer);
    state.innermost = &round;
    tellRest(round);
    state.innermost = round.outer;
    if (--state.tellings == 0)
        std::erase(state.subscribers, nullptr);
}

} // namespace

Subscriber::Subscriber() {
    publishing().subscribers.push_back(this);
}

Subscriber::~Subscriber() {
    Publishing& state = publishing();
    const auto found = std::find(state.subscribers.begin(), state.subscribers.end(), this);
    if (found == state.subscribers.end())
        return;
    if (state.tellings > 0)
        *found = nullptr;
    else
        state.subscribers.erase(found);
}

DataPointBase::DataPointBase(Subscriber* originator, Publisher::ActionType kind)
    : DataPointBase(originator, kind, {}) {}

DataPointBase::DataPointBase(Subscriber* originator, Publisher::ActionType kind,
                             std::string_view label)
    : m_good(false), m_holds(false), m_kind(kind), m_originator(originator) {
    Publishing& state = publishing();
    if (state.tellings >= deepestTelling) {
        Logger::Write("a change is refused: it answers a change that answers another, " +
                      std::to_string(deepestTelling) + " times over");
        return;
    }
    if (state.changing || state.locks > 0)
        return;
    state.changing = true;
    state.exceptions = std::uncaught_exceptions();
    m_good = true;
    m_holds = true;
    setLabel(label);
}

void DataPointBase::setLabel(std::string_view label) noexcept {
    if (!m_holds)
        return;
    std::string& kept = publishing().label;
    try {
        kept = label;
    } catch (const std::bad_alloc&) { // The one before says less of the same change.
    }
}

DataPointBase::~DataPointBase() {
    if (!m_holds)
        return;
    Publishing& state = publishing();
    state.changing = false;
    if (std::uncaught_exceptions() == state.exceptions)
        logChange(state.label);
    state.label.clear();
    tellAll(m_originator, m_kind);
}

namespace memory_host {

std::vector<const void*> listeners() {
    std::vector<const void*> all;
    for (const Subscriber* subscriber : publishing().subscribers)
        if (subscriber)
            all.push_back(subscriber);
    addDestroyObservers(all);
    addFocusObservers(all);
    addMessageObservers(all);
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

bool isSpaceLocked() {
    return publishing().locks > 0;
}

SpaceLock::SpaceLock() {
    ++publishing().locks;
}

SpaceLock::~SpaceLock() {
    --publishing().locks;
}

} // namespace memory_host

void changeData(DataPointBase&& guard, TAVIK::detail::FunctionRef<void(DataPointBase&)> change,
                Refusal refusal) {
    if (guard.m_good)
        change(guard);
    else if (refusal == Refusal::Report)
        qDebug("%s", "Cannot update CDB!");
}
