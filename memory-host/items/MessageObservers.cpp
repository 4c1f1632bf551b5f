#include "MessageObservers.h"

namespace memory_host {

ObserverList<MessageObserver>& messageObservers() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const all = new ObserverList<MessageObserver>;
    return *all;
}

} // namespace memory_host
