#include "Subscriber.h"

#include "Publishing.h"

#include <algorithm>

using namespace memory_host;

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
