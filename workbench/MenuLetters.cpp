#include "MenuLetters.h"

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QMenuBar>
#include <QSet>

namespace workbench {

namespace {

/// `title` with the first of its letters that is not taken, or with none.
QString withFreeLetter(const QString& title, const QSet<QKeySequence>& taken) {
    const QString plain = QString(title).remove(u'&');
    for (qsizetype at = 0; at != plain.size(); ++at) {
        const QString other = QString(plain).insert(at, u'&');
        if (plain[at].isLetter() && !taken.contains(QKeySequence::mnemonic(other)))
            return other;
    }
    return plain;
}

} // namespace

MenuLetters::MenuLetters(QMenuBar* bar) : QObject(bar), m_bar(bar) {
    for (const QAction* const action : bar->actions())
        m_titles << action->text();
    connect(qApp, &QApplication::focusChanged, this,
            [this](const QWidget*, QWidget* now) { follow(now); });
}

// The menu bar of the innermost window around the keyboard; null for the own one.
const QMenuBar* MenuLetters::barAround(const QWidget* focus) const {
    for (const QWidget* around = focus; around && around != m_bar->window();
         around = around->parentWidget())
        if (const auto* const bar =
                around->findChild<QMenuBar*>(QString(), Qt::FindDirectChildrenOnly))
            return bar;
    return nullptr;
}

void MenuLetters::follow(QWidget* focus) {
    // Another program has the keyboard.
    if (!focus)
        return;
    QSet<QKeySequence> theirs;
    if (const QMenuBar* const other = barAround(focus))
        for (const QAction* const action : other->actions())
            theirs.insert(QKeySequence::mnemonic(action->text()));
    // What keeps its letter comes first: the others choose among those that are left.
    QSet<QKeySequence> taken = theirs;
    for (const QString& title : m_titles)
        taken.insert(QKeySequence::mnemonic(title));
    const QList<QAction*> actions = m_bar->actions();
    for (qsizetype i = 0; i != m_titles.size(); ++i) {
        const bool isFree = !theirs.contains(QKeySequence::mnemonic(m_titles[i]));
        const QString title = isFree ? m_titles[i] : withFreeLetter(m_titles[i], taken);
        taken.insert(QKeySequence::mnemonic(title));
        if (actions[i]->text() != title)
            actions[i]->setText(title);
    }
}

} // namespace workbench
