// Pictures drawn on a thread of their own, so that nobody waits for them.
#pragma once

#include "scene/Drawing.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace view {

/// Draws the order that was given last; those that came between are left out.
class DrawingThread {
public:
    /// `done` is called on that thread with each picture. What goes wrong there is logged.
    explicit DrawingThread(std::function<void(Drawn)> done);
    /// Waits until the thread has ended, which stops what it draws.
    ~DrawingThread();
    DrawingThread(const DrawingThread&) = delete;
    DrawingThread& operator=(const DrawingThread&) = delete;

    /// A whole picture that is being drawn is stopped for a newer order, a quick one is finished.
    void order(Order order);

private:
    void run(const std::stop_token& stop);
    /// Waits for an order, and carries it out.
    void drawNext(const std::stop_token& stop);

    std::function<void(Drawn)> m_done;
    Drawing m_drawing;
    std::mutex m_mutex; ///< for what follows
    std::condition_variable_any m_changed;
    std::optional<Order> m_next;
    std::stop_source m_current; ///< of what is being drawn
    bool m_isWhole = false;     ///< likewise
    int m_stopped = 0;          ///< whole pictures in a row that were stopped
    std::jthread m_thread;      ///< last, and so the first to be destroyed
};

} // namespace view
