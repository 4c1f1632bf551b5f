#include "ElidedLabel.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace view {

namespace {
constexpr int edge = 4; // pixels around the text
}

ElidedLabel::ElidedLabel(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    parent->installEventFilter(this);
    hide();
}

void ElidedLabel::setText(const QString& text) {
    if (text == m_text)
        return;
    m_text = text;
    setAccessibleName(text);
    place();
    setVisible(!text.isEmpty());
    update();
}

QString ElidedLabel::shownText() const {
    return fontMetrics().elidedText(m_text, Qt::ElideMiddle, width() - 2 * edge);
}

void ElidedLabel::place() {
    const QRect room = parentWidget()->rect();
    const QSize wanted(fontMetrics().horizontalAdvance(m_text) + 2 * edge + 1,
                       fontMetrics().height() + edge);
    const int height = std::min(wanted.height(), room.height());
    setGeometry(0, room.height() - height, std::min(wanted.width(), room.width()), height);
}

bool ElidedLabel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

void ElidedLabel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        place();
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // In the palette's own colours, so that it is legible over any picture.
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect().adjusted(edge, 0, -edge, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     shownText());
}

} // namespace view
