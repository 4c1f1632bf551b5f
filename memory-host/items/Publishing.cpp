#include "Publishing.h"

#include "Subscriber.h"
#include "Subscribers.h"

#include <cstddef>

namespace memory_host {

// A subscriber may answer with a change of its own, whose round is nested in this one.
struct Publishing::Round {
    const Subscriber* originator;
    Publisher::ActionType kind;
    std::size_t count; ///< subscribers that register later have seen the new data
    Round* outer;
    std::size_t next = 0;
};

namespace {

void tellOne(Subscriber& subscriber, Publisher::ActionType kind) noexcept {
    callHandler([&subscriber, kind] {
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

void tellRest(Publishing::Round& round) noexcept {
    while (round.next != round.count)
        if (Subscriber* subscriber = publishing().subscribers[round.next++];
            subscriber && subscriber != round.originator)
            tellOne(*subscriber, round.kind);
}

} // namespace

Publishing& publishing() {
    // Never destroyed: subscribers may live as long as static objects.
    static auto* const state = new Publishing;
    return *state;
}

void tellAll(const Subscriber* originator, Publisher::ActionType kind) noexcept {
    Publishing& state = publishing();
    ++state.tellings;
    Publishing::Round round{originator, kind, state.subscribers.size(), state.innermost};
    // A subscriber that may still hold pointers to destroyed items hears of the deletion before it
    // hears of a change that answers the deletion.
    for (Publishing::Round* outer = round.outer; outer; outer = outer->outer)
        if (outer->kind == Publisher::Delete)
            tellRest(*outer);
    state.innermost = &round;
    tellRest(round);
    state.innermost = round.outer;
    if (--state.tellings == 0)
        std::erase(state.subscribers, nullptr);
}

} // namespace memory_host
