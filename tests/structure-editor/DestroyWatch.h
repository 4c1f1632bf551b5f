// What is destroyed, item by item, as the host is asked for it: it tells only afterwards, and not
// in what order.
#pragma once

#include "Compound.h"

#include <functional>

class DestroyWatch {
public:
    /// Calls `before` with each item that is about to be destroyed, while this lives.
    explicit DestroyWatch(std::function<void(TAVIK::Compound*)> before);
    ~DestroyWatch();
    DestroyWatch(const DestroyWatch&) = delete;
    DestroyWatch& operator=(const DestroyWatch&) = delete;
};
