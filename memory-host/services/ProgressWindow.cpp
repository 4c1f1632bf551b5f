#include "ProgressWindow.h"

#include "ElidedLine.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace memory_host {

namespace {
constexpr int barSteps = 1000;
} // namespace

ProgressWindow::ProgressWindow(const QString& windowTitle)
    : m_title(new ElidedLine(this)), m_bar(new QProgressBar(this)), m_stage(new ElidedLine(this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Cancel, this)) {
    setWindowTitle(windowTitle);
    setModal(true);
    setMinimumWidth(360);
    m_bar->setTextVisible(false);
    m_bar->setRange(0, 0);
    // It comes up by itself: keys that were meant for another window do not cancel. Escape does.
    QPushButton* const cancel = m_buttons->button(QDialogButtonBox::Cancel);
    cancel->setFocusPolicy(Qt::NoFocus);
    cancel->setAutoDefault(false);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &ProgressWindow::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_title);
    layout->addWidget(m_bar);
    layout->addWidget(m_stage);
    layout->addWidget(m_buttons);
    QTimer::singleShot(showAfter, this, &QWidget::show);
    m_sinceRepaint.start();
}

ProgressWindow::~ProgressWindow() = default;

void ProgressWindow::setTitleLine(const QString& text) {
    m_title->setLine(text);
}

void ProgressWindow::setStage(const QString& text, double fraction) {
    m_stage->setLine(text);
    m_bar->setRange(0, fraction < 0 ? 0 : barSteps);
    if (fraction >= 0)
        m_bar->setValue(static_cast<int>(std::min(fraction, 1.0) * barSteps));
}

void ProgressWindow::handleEvents() {
    if (m_sinceRepaint.elapsed() < repaintEvery)
        return;
    // The window is modal: no other one gets input meanwhile.
    QCoreApplication::processEvents();
    m_sinceRepaint.restart();
}

void ProgressWindow::reject() {
    const bool isNews = !m_cancelled;
    m_cancelled = true;
    if (m_staysUntilDone) {
        m_stage->setLine(tr("cancelling"));
        m_bar->setRange(0, 0);
        m_buttons->setEnabled(false);
    } else {
        QDialog::reject();
    }
    if (isNews)
        emit cancelled();
}

} // namespace memory_host
