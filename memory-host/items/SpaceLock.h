// Keeping others from changing the data.
#pragma once

#include "HostExport.h"

namespace memory_host {

/// Whether any lock exists.
HOST_EXPORT bool isSpaceLocked();

/// RAII: while one exists, the space is locked: every change guard is refused.
class HOST_EXPORT SpaceLock {
public:
    SpaceLock();
    ~SpaceLock();
    SpaceLock(const SpaceLock&) = delete;
    SpaceLock& operator=(const SpaceLock&) = delete;
};

} // namespace memory_host
