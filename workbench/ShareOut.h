// Work that several threads share.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <future>
#include <stop_token>
#include <thread>
#include <vector>

namespace workbench {

/// Calls what `makeWork` makes, once for each of several threads, with the numbers 0 to below
/// `count`, until there is a stop request. There are no more threads than one for each
/// `leastForOne` numbers. What work throws passes through, once all threads have ended.
template <class MakeWork>
void shareOut(std::size_t count, std::size_t leastForOne, const MakeWork& makeWork,
              const std::stop_token& stop = {}) {
    constexpr std::size_t most = 8; // threads
    std::atomic<std::size_t> next{0};
    const auto run = [&] {
        auto work = makeWork();
        for (std::size_t i; !stop.stop_requested() && (i = next.fetch_add(1)) < count;)
            work(i);
    };
    const std::size_t threads =
        std::min<std::size_t>({most, std::thread::hardware_concurrency(), 1 + count / leastForOne});
    std::vector<std::future<void>> helpers;
    while (helpers.size() + 1 < threads)
        helpers.push_back(std::async(std::launch::async, run));
    run();
    for (std::future<void>& helper : helpers)
        helper.get();
}

} // namespace workbench
