#include "HistoryMenu.h"

#include "Messages.h"

#include <QMenu>

#include <string>
#include <vector>

namespace workbench {

namespace {

// As many as a menu shows at once on a small screen.
constexpr std::size_t mostListed = 25;

QString labelOf(const HistoryStep& step) {
    return step.label.empty() ? HistoryMenu::tr("Change") : QString::fromLatin1(step.label.c_str());
}

// A menu shows "&" as it is then.
QString inMenu(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

void setStep(QAction* action, const QString& deed, const std::vector<HistoryStep>& next) {
    action->setText(next.empty() ? deed : deed + u' ' + inMenu(labelOf(next.front())));
    action->setEnabled(!next.empty());
}

/// Takes back or does again, and says so; returns whether it was done.
bool go(bool (*act)(std::size_t), std::size_t steps, const std::vector<HistoryStep>& next,
        const QString& deed) {
    if (next.empty() || steps == 0)
        return false;
    const QString what =
        steps == 1 ? labelOf(next.front()) : HistoryMenu::tr("%1 steps").arg(steps);
    const bool isDone = act(steps);
    Messages::Show(
        isDone ? deed + QStringLiteral(": ") + what
               : HistoryMenu::tr("%1: not possible while something else is going on").arg(what));
    return isDone;
}

} // namespace

HistoryMenu::HistoryMenu(QMenu* menu)
    : QObject(menu), m_undo(menu->addAction(QString(), QKeySequence::Undo, this, [] { undo(1); })),
      m_redo(menu->addAction(QString(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), this,
                             [] { redo(1); })),
      m_undoData(menu->addAction(tr("Undo &Last Change of Data"),
                                 QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Z), this,
                                 [] { undo(History::toLastOfData()); })),
      m_steps(menu->addMenu(tr("Undo &Several"))) {
    m_undo->setObjectName(QStringLiteral("Undo"));
    m_redo->setObjectName(QStringLiteral("Redo"));
    m_undoData->setObjectName(QStringLiteral("UndoData"));
    m_steps->setObjectName(QStringLiteral("UndoSteps"));
    connect(m_steps, &QMenu::aboutToShow, this, &HistoryMenu::fillSteps);
    historyChanged();
}

void HistoryMenu::historyChanged() {
    const std::vector<HistoryStep> next = History::undoable(1);
    setStep(m_undo, tr("&Undo"), next);
    setStep(m_redo, tr("&Redo"), History::redoable(1));
    m_undoData->setEnabled(History::toLastOfData() != 0);
    m_steps->menuAction()->setEnabled(!next.empty());
    if (m_steps->isVisible())
        fillSteps();
}

void HistoryMenu::fillSteps() {
    m_steps->clear();
    const std::vector<HistoryStep> steps = History::undoable();
    for (std::size_t i = 0; i != std::min(steps.size(), mostListed); ++i)
        m_steps->addAction(inMenu(labelOf(steps[i])), this, [i] { undo(i + 1); });
    if (steps.size() > mostListed) {
        m_steps->addSeparator();
        m_steps->addAction(tr("All %1 Steps").arg(steps.size()), this,
                           [count = steps.size()] { undo(count); });
    }
}

void HistoryMenu::undo(std::size_t steps) {
    // What came back may take more memory than there is for it.
    if (go(&History::undo, steps, History::undoable(1), tr("Undone")) &&
        History::redoable(1).empty())
        Messages::Show(tr("What was undone cannot be done again"));
}

void HistoryMenu::redo(std::size_t steps) {
    go(&History::redo, steps, History::redoable(1), tr("Done again"));
}

} // namespace workbench
