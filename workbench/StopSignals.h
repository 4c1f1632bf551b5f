// RAII: while one exists, SIGINT and SIGTERM end the event loop in order.
#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <optional>

namespace workbench {

class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    std::optional<QSocketNotifier> m_notifier;
    struct sigaction m_interrupt {};
    struct sigaction m_terminate {};
};

} // namespace workbench
