// The observers of messages.
#pragma once

#include "Messages.h"
#include "ObserverList.h"

namespace memory_host {

ObserverList<MessageObserver>& messageObservers();

} // namespace memory_host
