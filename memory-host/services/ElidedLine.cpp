#include "ElidedLine.h"

#include <QEvent>
#include <QTextDocument>

#include <algorithm>

namespace memory_host {

ElidedLine::ElidedLine(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLine::setLine(const QString& line) {
    if (line == m_line)
        return;
    m_line = line;
    setAccessibleName(m_line);
    elide();
}

void ElidedLine::elide() {
    QString shown = m_line;
    // File names may contain line breaks.
    std::replace_if(
        shown.begin(), shown.end(), [](QChar c) { return c.isSpace() || !c.isPrint(); }, u' ');
    const QString elided = fontMetrics().elidedText(shown, Qt::ElideMiddle, width());
    setText(elided);
    setToolTip(elided == shown ? QString() : Qt::convertFromPlainText(m_line));
}

void ElidedLine::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLine::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        elide();
}

} // namespace memory_host
