// Counting what a command changes while it does: for the label of the change.
#pragma once

#include "Changed.h"

#include <type_traits>
#include <utility>

/// Calls a function for each item that it is called with, and counts those that were changed: all,
/// or where the function returns whether it did anything, these. For TAVIK::ForAtoms() and the
/// like, which return it as it stands after the last call.
template <class F> class Counting {
public:
    Counting(const char* kind, F f) : m_f(std::move(f)), m_changed(kind) {}

    void operator()(TAVIK::Compound* item) {
        if constexpr (std::is_void_v<decltype(m_f(item))>) {
            m_f(item);
            m_changed.add(item);
        } else if (m_f(item)) {
            m_changed.add(item);
        }
    }
    const TAVIK::Changed& changed() const { return m_changed; }

private:
    F m_f;
    TAVIK::Changed m_changed;
};
