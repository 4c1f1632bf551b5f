#include "Workers.h"

#include <algorithm>
#include <utility>

namespace view {

Workers::Workers(unsigned count) {
    if (count == 0)
        count = std::max(1U, std::thread::hardware_concurrency());
    for (std::size_t worker = 1; worker < count; ++worker)
        m_threads.emplace_back(
            [this, worker](const std::stop_token& ending) { serve(worker, ending); });
}

// All are asked to end before the first is waited for.
Workers::~Workers() {
    for (std::jthread& thread : m_threads)
        thread.request_stop();
}

bool Workers::run(std::size_t parts, const std::function<void(std::size_t, std::size_t)>& part,
                  const std::stop_token& stop) {
    {
        const std::lock_guard lock(m_mutex);
        m_part = &part;
        m_stop = stop;
        m_parts = parts;
        m_next = 0;
        m_error = nullptr;
        m_wasStopped = false;
    }
    if (parts > 1)
        m_changed.notify_all();
    takeParts(0);
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_busy == 0; });
    m_part = nullptr;
    m_stop = {};
    if (m_error)
        std::rethrow_exception(std::exchange(m_error, nullptr));
    return !m_wasStopped;
}

void Workers::serve(std::size_t worker, const std::stop_token& ending) {
    while (true) {
        {
            std::unique_lock lock(m_mutex);
            if (!m_changed.wait(lock, ending, [this] { return m_part && m_next < m_parts; }))
                return;
        }
        takeParts(worker);
    }
}

void Workers::takeParts(std::size_t worker) {
    std::unique_lock lock(m_mutex);
    ++m_busy;
    while (m_part && m_next < m_parts) {
        if (m_stop.stop_requested()) {
            m_wasStopped = true;
            m_next = m_parts;
            break;
        }
        const std::size_t index = m_next++;
        const auto& part = *m_part;
        lock.unlock();
        std::exception_ptr error;
        try {
            part(index, worker);
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        if (error) {
            if (!m_error)
                m_error = error;
            m_next = m_parts;
        }
    }
    if (--m_busy == 0)
        m_changed.notify_all();
}

} // namespace view
