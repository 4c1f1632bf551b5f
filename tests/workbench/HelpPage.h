// What the tests of help pages with worked examples share.
#pragma once

#include "BaseWindow.h"
#include "TestSupport.h"

#include <QAction>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>

namespace help_page {

/// The source of the page of this name.
inline QString text(const QString& name) {
    QFile file(QStringLiteral(SOURCE_DIR "/data/help/%1.md").arg(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// What stands between backquotes in each step of the example of a page.
inline QList<QStringList> steps(const QString& page) {
    const QString example = page.section("\n## Example", 1).section("\n## ", 0, 0);
    static const QRegularExpression heading("\n### \\d+\\. ");
    static const QRegularExpression quote("`([^`]+)`");
    QList<QStringList> all;
    for (const QString& step : example.split(heading).mid(1)) {
        QStringList texts;
        for (auto it = quote.globalMatch(step); it.hasNext();)
            texts << it.next().captured(1).simplified();
        all << texts;
    }
    return all;
}

/// Triggers an entry of a window's menu, which must be visible.
inline void choose(const BaseWindow* window, const QString& menu, const QString& label) {
    for (const QAction* title : window->menuBar()->actions())
        if (title->text().remove('&') == menu)
            for (QAction* action : title->menu()->actions())
                if (action->text().remove('&') == label) {
                    QVERIFY(action->isVisible());
                    action->trigger();
                    return;
                }
    QFAIL(qPrintable(menu + " > " + label));
}

/// That each link within a page leads to a heading of it, and that there are so many at least.
inline void checkLinks(const QString& page, int least) {
    static const QRegularExpression link("\\]\\(#([^)]+)\\)");
    static const QRegularExpression heading("\n#+ ([^\n]+)");
    QStringList headings;
    for (auto it = heading.globalMatch(page); it.hasNext();)
        headings << it.next().captured(1).toLower().remove(u':').replace(u' ', u'-');
    int count = 0;
    for (auto it = link.globalMatch(page); it.hasNext(); ++count)
        QVERIFY(headings.contains(it.next().captured(1)));
    QVERIFY(count >= least);
}

} // namespace help_page
