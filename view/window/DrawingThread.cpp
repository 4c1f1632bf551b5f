#include "DrawingThread.h"

#include "Logger.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

namespace view {

namespace {

// However fast orders come, a whole picture is finished from time to time.
constexpr int stoppedAtMost = 3;

void report(const std::exception& failure) noexcept {
    try {
        Logger::Write(std::string("the picture cannot be drawn: ") + failure.what());
    } catch (const std::bad_alloc&) {
        // Not even that can be said.
    }
}

} // namespace

DrawingThread::DrawingThread(std::function<void(Drawn)> done)
    : m_done(std::move(done)), m_thread([this](const std::stop_token& stop) { run(stop); }) {}

DrawingThread::~DrawingThread() {
    m_thread.request_stop();
    {
        const std::lock_guard lock(m_mutex);
        m_current.request_stop();
    }
    m_changed.notify_all();
}

void DrawingThread::order(Order order) {
    {
        const std::lock_guard lock(m_mutex);
        m_next = std::move(order);
        if (m_isWhole && m_stopped < stoppedAtMost && !m_current.stop_requested()) {
            m_current.request_stop();
            ++m_stopped;
        }
    }
    m_changed.notify_all();
}

void DrawingThread::run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        try {
            drawNext(stop);
        } catch (const std::exception& failure) {
            report(failure);
        }
    }
}

void DrawingThread::drawNext(const std::stop_token& stop) {
    Order order;
    std::stop_token current;
    {
        std::unique_lock lock(m_mutex);
        m_isWhole = false;
        if (!m_changed.wait(lock, stop, [this] { return m_next.has_value(); }))
            return;
        order = std::move(*m_next);
        m_next.reset();
        m_current = {};
        m_isWhole = !order.isMoving;
        current = m_current.get_token();
        if (stop.stop_requested())
            return;
    }
    if (std::optional<Drawn> drawn = m_drawing.draw(order, current)) {
        {
            const std::lock_guard lock(m_mutex);
            m_stopped = 0;
        }
        m_done(std::move(*drawn));
    }
}

} // namespace view
