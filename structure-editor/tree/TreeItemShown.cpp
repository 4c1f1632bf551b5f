// What the cells of a row say and look like, and the rows around it in the order shown.
#include "TreeItem.h"

#include "CellText.h"
#include "Kinds.h"
#include "TreeModel.h"
#include "TreeView.h"

#include <array>

namespace {

QString yesNo(bool yes) {
    return yes ? QStringLiteral("Yes") : QStringLiteral("No");
}

} // namespace

QString TreeItem::text(int column) const {
    if (!m_Compound)
        return {};
    switch (column) {
    case TreeModel::Object:
        return QString::fromLatin1(m_Compound->GetName());
    case TreeModel::Show:
        return yesNo(m_Compound->IsVisible());
    case TreeModel::Select:
        return yesNo(m_Compound->IsSelected());
    case TreeModel::Partial:
        if (const auto* atom = dynamic_cast<const TAVIK::Atom*>(m_Compound))
            return QString::fromLatin1(atom->GetModelNumber());
        return yesNo(m_Compound->HasSelected());
    default:
        return {};
    }
}

QString TreeItem::spoken() const {
    if (!m_Compound)
        return {};
    return text(TreeModel::Object) + QStringLiteral(", ") +
           spokenState(m_Compound->IsVisible(), m_Compound->IsSelected(),
                       m_Compound->HasSelected());
}

QColor TreeItem::textColor(int column) const {
    static constexpr std::array<Qt::GlobalColor, 5> byDepth = {
        Qt::darkMagenta, Qt::magenta, Qt::darkGreen, Qt::darkBlue, Qt::red};
    const auto level = static_cast<std::size_t>(depth());
    return column == TreeModel::Object && level < byDepth.size() ? byDepth[level] : QColor();
}

QColor TreeItem::cellColor(int column) const {
    if (column != TreeModel::Show || !m_Compound)
        return {};
    // A transparent item has a colour too, and the cell is where it can be seen.
    QColor color = m_Compound->GetColor().toQColor();
    color.setAlpha(255);
    return color;
}

QString TreeItem::key(int, bool) const {
    return QStringLiteral("%1").arg(m_id, 10);
}

int TreeItem::compare(const TreeItem* other, int column, bool ascending) const {
    if (!other) {
        qDebug("%s", "TreeItem::compare( QListViewItem )");
        return key(column, ascending).compare(QString()) > 0 ? 1 : 0;
    }
    return m_id == other->m_id ? 0 : m_id < other->m_id ? -1 : 1;
}

TreeItem* TreeItem::parent() const {
    return m_parent && !m_parent->m_isRoot ? m_parent : nullptr;
}

TreeItem* TreeItem::nextSibling() const {
    const bool descending = root()->descending;
    const std::uint32_t next = shownAt(descending) + 1;
    return next < m_parent->m_count ? m_parent->childAt(next, descending) : nullptr;
}

TreeItem* TreeItem::child(int index) const {
    if (index < 0 || index >= childCount())
        return nullptr;
    return childAt(static_cast<std::uint32_t>(index), root()->descending);
}

int TreeItem::depth() const {
    int depth = 0;
    for (const TreeItem* above = parent(); above; above = above->parent())
        ++depth;
    return depth;
}

int TreeItem::position() const {
    return static_cast<int>(shownAt(root()->descending));
}

TreeItem* TreeItem::itemBelow() const {
    if (m_open && m_count)
        return firstChild();
    for (const TreeItem* row = this; row; row = row->parent())
        if (TreeItem* next = row->nextSibling())
            return next;
    return nullptr;
}

TreeItem* TreeItem::itemAbove() const {
    const int at = position();
    if (at == 0)
        return parent();
    TreeItem* row = m_parent->child(at - 1);
    while (row->m_open && row->m_count)
        row = row->child(row->childCount() - 1);
    return row;
}

TreeItem* TreeItem::shownRow() {
    TreeItem* shown = this;
    for (TreeItem* above = parent(); above; above = above->parent())
        if (!above->m_open)
            shown = above;
    return shown;
}

TreeItemIterator::TreeItemIterator(const TreeView* view) : TreeItemIterator(view->firstChild()) {}

TreeItemIterator::TreeItemIterator(TreeItem* start)
    : m_current(start), m_descending(start && start->root()->descending) {}

TreeItem* TreeItemIterator::after(const TreeItem* row) const {
    for (; !row->m_isRoot; row = row->m_parent) {
        const std::uint32_t next = row->shownAt(m_descending) + 1;
        if (constexpr std::uint32_t ahead = 12; next + ahead < row->m_parent->m_count)
            __builtin_prefetch(row->m_parent->childAt(next + ahead, m_descending)->m_Compound);
        if (next < row->m_parent->m_count)
            return row->m_parent->childAt(next, m_descending);
    }
    return nullptr;
}
