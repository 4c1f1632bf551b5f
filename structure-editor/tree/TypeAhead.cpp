#include "TypeAhead.h"

#include <QApplication>
#include <QKeyEvent>

bool TypeAhead::isTyped(const QKeyEvent& event) {
    const QString text = event.text();
    return !text.isEmpty() && text.at(0).isPrint() &&
           !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

bool TypeAhead::isRunning() const {
    return !m_prefix.isEmpty() && m_lastKey.isValid() &&
           !m_lastKey.hasExpired(QApplication::keyboardInputInterval());
}
