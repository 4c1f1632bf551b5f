// A destroy observer that calls a function.
#pragma once

#include "DestroyObserver.h"

#include <functional>
#include <utility>

/// Calls `handler` each time an item is about to be destroyed; see TAVIK::DestroyObserver.
class DestructionWatch : public TAVIK::DestroyObserver {
public:
    explicit DestructionWatch(std::function<void()> handler) : m_handler(std::move(handler)) {}

    void aboutToDestroy(TAVIK::Compound*) override { m_handler(); }

private:
    std::function<void()> m_handler;
};
