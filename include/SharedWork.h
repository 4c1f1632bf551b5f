// Work on several threads that ends early when the user cancels it.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <future>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

/// Calls its second argument with each number below the first, on one or more threads, and throws
/// what a call throws, or what ends the work early, when none is running any more.
using WorkSharing = std::function<void(std::size_t, const std::function<void(std::size_t)>&)>;

/// What ends a cancelled work.
struct WorkCancelled {};

/// Shares numbers out among as many threads as the machine runs at a time. Calls throw
/// WorkCancelled once `stop` is requested.
inline WorkSharing onAllThreads(std::stop_token stop) {
    return
        [stop = std::move(stop)](std::size_t count, const std::function<void(std::size_t)>& work) {
            std::atomic<std::size_t> next{0};
            const auto run = [&] {
                try {
                    for (std::size_t i; (i = next.fetch_add(1)) < count;) {
                        if (stop.stop_requested())
                            throw WorkCancelled();
                        work(i);
                    }
                } catch (...) {
                    next = count; // The others need not go on.
                    throw;
                }
            };
            const std::size_t threads =
                std::min<std::size_t>(std::max(1U, std::thread::hardware_concurrency()), count);
            std::vector<std::future<void>> others;
            others.reserve(threads);
            try {
                for (std::size_t i = 1; i < threads; ++i)
                    others.push_back(std::async(std::launch::async, run));
            } catch (const std::system_error&) { // Where there are no more threads, these do it.
            }
            std::exception_ptr failure;
            const auto keep = [&failure](const auto& call) {
                try {
                    call();
                } catch (...) {
                    if (!failure)
                        failure = std::current_exception();
                }
            };
            keep(run);
            for (std::future<void>& other : others)
                keep([&other] { other.get(); });
            if (failure)
                std::rethrow_exception(failure);
        };
}
