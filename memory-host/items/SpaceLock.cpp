#include "SpaceLock.h"

#include "Publishing.h"

namespace memory_host {

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
