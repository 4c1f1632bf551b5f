// Long work in pieces, between which other events have their turn.
#pragma once

#include <chrono>

/// Calls `step` for about so long, and at least once, or until it returns false: there is no more
/// to do. Returns what it returned last.
template <class Step> bool forAbout(std::chrono::microseconds time, const Step& step) {
    const auto end = std::chrono::steady_clock::now() + time;
    bool isMore = step();
    while (isMore && std::chrono::steady_clock::now() < end)
        isMore = step();
    return isMore;
}
