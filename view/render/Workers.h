// Threads that share out the parts of one work at a time, kept between works.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace view {

class Workers {
public:
    /// `count` threads, the calling one among them; 0 for one a processor.
    explicit Workers(unsigned count);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// How many threads there are; a part's `worker` is below it.
    std::size_t count() const { return m_threads.size() + 1; }

    /// Calls part(index, worker) for every index below `parts`, in any order and on all threads,
    /// and returns when all have ended. After a stop request no further part is begun. The first
    /// exception of a part ends the work likewise, and is thrown here. Returns whether all parts
    /// were done. Not for use by several threads at a time.
    bool run(std::size_t parts, const std::function<void(std::size_t, std::size_t)>& part,
             const std::stop_token& stop);

private:
    void serve(std::size_t worker, const std::stop_token& ending);
    void takeParts(std::size_t worker);

    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    const std::function<void(std::size_t, std::size_t)>* m_part = nullptr;
    std::stop_token m_stop;
    std::size_t m_parts = 0;
    std::size_t m_next = 0;
    std::size_t m_busy = 0; ///< threads inside of takeParts()
    std::exception_ptr m_error;
    bool m_wasStopped = false;
    std::vector<std::jthread> m_threads;
};

} // namespace view
