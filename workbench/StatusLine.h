// The main window's status bar: what the last change did, what plug-ins say, and what is selected.
#pragma once

#include "DestroyObserver.h"
#include "Messages.h"
#include "StateCount.h"
#include "Subscriber.h"

#include <QStatusBar>
#include <QTimer>

#include <optional>

class QLabel;

namespace memory_host {
class ElidedLine;
}

namespace workbench {

/// Counts anew after every change, when there is nothing else to do.
class StatusLine : public QStatusBar {
    Q_OBJECT
public:
    explicit StatusLine(QWidget* parent);
    ~StatusLine() override;

    /// Shows one line on the left, until something else is to be said there.
    void say(const QString& text);
    /// What is said, and how much is selected, as they are shown.
    QString said() const;
    QString state() const;
    /// What was counted last.
    const StateCount& count() const { return m_last; }
    /// Whether a count has not ended yet.
    bool isCounting() const { return m_timer.isActive(); }

signals:
    /// A count has ended.
    void counted();

private:
    class Listener : public Subscriber, public TAVIK::DestroyObserver, public MessageObserver {
    public:
        explicit Listener(StatusLine& line) : m_line(line) {}
        void commUpdate() override { m_line.changed(); }
        void commAdd() override { m_line.changed(); }
        void commDelete() override { m_line.changed(); }
        void aboutToDestroy(TAVIK::Compound*) override { m_line.begin(); }
        void messageShown(const QString& text) override {
            m_line.say(text);
            m_line.m_isToTell = false;
        }

    private:
        StatusLine& m_line;
    };

    void changed();
    void begin();
    void goOn();

    memory_host::ElidedLine* m_said;
    QLabel* m_state;
    QTimer m_timer;
    std::optional<StateCounter> m_counter;
    StateCount m_last;
    /// There was a change, and no plug-in has said anything since.
    bool m_isToTell = false;
    Listener m_listener;
};

} // namespace workbench
