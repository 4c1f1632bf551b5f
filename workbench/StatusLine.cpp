#include "StatusLine.h"

#include "services/ElidedLine.h"

#include <QLabel>

#include <utility>

namespace workbench {

StatusLine::StatusLine(QWidget* parent)
    : QStatusBar(parent), m_said(new memory_host::ElidedLine(this)), m_state(new QLabel(this)),
      m_listener(*this) {
    setSizeGripEnabled(false);
    m_said->setObjectName(QStringLiteral("said"));
    m_state->setObjectName(QStringLiteral("state"));
    m_state->setTextFormat(Qt::PlainText);
    m_said->setContentsMargins(4, 0, 4, 0);
    m_state->setContentsMargins(4, 0, 4, 0);
    addWidget(m_said, 1);
    addPermanentWidget(m_state);
    connect(&m_timer, &QTimer::timeout, this, &StatusLine::goOn);
    begin();
}

StatusLine::~StatusLine() = default;

void StatusLine::say(const QString& text) {
    m_said->setLine(text);
}

QString StatusLine::said() const {
    return m_said->line();
}

QString StatusLine::state() const {
    return m_state->text();
}

void StatusLine::changed() {
    m_isToTell = true;
    begin();
}

// A counter in progress has pointers to what may be gone now.
void StatusLine::begin() {
    m_counter.reset();
    if (!m_timer.isActive())
        m_timer.start(0);
}

void StatusLine::goOn() {
    if (!m_counter)
        m_counter.emplace();
    if (!m_counter->step())
        return;
    m_timer.stop();
    const StateCount now = m_counter->count();
    m_counter.reset();
    const StateCount before = std::exchange(m_last, now);
    m_state->setText(stateText(now));
    if (std::exchange(m_isToTell, false))
        say(changeText(before, now));
    emit counted();
}

} // namespace workbench
