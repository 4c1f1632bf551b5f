#include "TypeAhead.h"

#include "TreeView.h"

#include <QApplication>

#include <string>

namespace {

bool startsWith(const TreeItem* row, const QString& prefix) {
    if (!row->compound())
        return false;
    const std::string name = row->compound()->GetName();
    return QLatin1String(name.data(), static_cast<qsizetype>(name.size()))
        .startsWith(prefix, Qt::CaseInsensitive);
}

// Looks at every row of the open branches once, from `start` on, and round to the row before it.
TreeItem* findFrom(const TreeView& view, TreeItem* start, const QString& prefix) {
    TreeItem* row = start;
    do {
        if (startsWith(row, prefix))
            return row;
        row = row->itemBelow();
        if (!row)
            row = view.firstChild();
    } while (row != start);
    return nullptr;
}

} // namespace

TreeItem* TypeAhead::find(const TreeView& view, TreeItem* current, const QString& typed) {
    const bool paused =
        !m_lastKey.isValid() || m_lastKey.hasExpired(QApplication::keyboardInputInterval());
    m_lastKey.start();
    if (!paused && !m_prefix.isEmpty())
        if (TreeItem* row = findFrom(view, current, m_prefix + typed)) {
            m_prefix += typed;
            return row;
        }
    TreeItem* const below = current->itemBelow();
    TreeItem* const row = findFrom(view, below ? below : view.firstChild(), typed);
    if (row)
        m_prefix = typed;
    return row;
}
