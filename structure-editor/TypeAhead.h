// Finding a row by typing the start of its name.
#pragma once

#include <QElapsedTimer>
#include <QString>

class TreeItem;
class TreeView;

/// Collects what is typed in quick succession. Only rows of open branches are looked through.
class TypeAhead {
public:
    /// The row that `typed` leads to from `current`: one whose name starts with all that was typed
    /// lately, or else with `typed` alone, whatever the case; null when there is none. After a
    /// pause it starts anew, below `current`; it goes on at the top after the last row.
    TreeItem* find(const TreeView& view, TreeItem* current, const QString& typed);
    /// Forgets what was typed.
    void forget() { m_prefix.clear(); }

private:
    QString m_prefix;
    QElapsedTimer m_lastKey;
};
