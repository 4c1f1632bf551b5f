#include "ErrorBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStyle>
#include <QToolButton>

#include <algorithm>

namespace workbench {

ErrorBar::ErrorBar(QWidget* parent)
    : QFrame(parent), m_text(new QPlainTextEdit(this)), m_close(new QToolButton(this)) {
    setObjectName(QStringLiteral("errors"));
    setFrameShape(QFrame::StyledPanel);
    auto* const sign = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    m_text->setReadOnly(true);
    m_text->setMaximumBlockCount(mostLines);
    m_text->setAccessibleName(tr("Errors"));
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_text->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m_text->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_close->setText(tr("Close"));
    connect(m_close, &QToolButton::clicked, this, &ErrorBar::dismiss);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(6, 2, 6, 2);
    row->addWidget(sign, 0, Qt::AlignTop);
    row->addWidget(m_text, 1);
    row->addWidget(m_close, 0, Qt::AlignTop);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    hide();
}

void ErrorBar::add(const QString& line) {
    m_text->appendPlainText(line.simplified());
    fit();
    show();
    showNewest();
}

QStringList ErrorBar::lines() const {
    const QString text = m_text->toPlainText();
    return text.isEmpty() ? QStringList() : text.split(u'\n');
}

void ErrorBar::dismiss() {
    m_text->clear();
    hide();
}

void ErrorBar::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    // Lines break elsewhere now, and the position of the scroll bar means another line.
    QMetaObject::invokeMethod(this, &ErrorBar::showNewest, Qt::QueuedConnection);
}

void ErrorBar::showNewest() {
    m_text->verticalScrollBar()->setValue(m_text->verticalScrollBar()->maximum());
}

void ErrorBar::fit() {
    constexpr int mostRows = 4;
    const int rows = std::clamp(m_text->blockCount(), 2, mostRows);
    m_text->setFixedHeight(rows * m_text->fontMetrics().lineSpacing() + 10);
}

} // namespace workbench
