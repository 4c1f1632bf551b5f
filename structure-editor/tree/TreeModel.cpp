#include "TreeModel.h"

#include "TreeView.h"

#include <QColor>

#include <algorithm>

namespace {

// More separate places than this among siblings that are there already are filled in one step and
// sorted afterwards: each step moves all siblings behind it.
constexpr std::size_t fewRuns = 16;

} // namespace

TreeModel::TreeModel(TreeView* view) : QAbstractItemModel(view), m_view(view), m_root(*this) {}

TreeModel::~TreeModel() = default;

void TreeModel::insert(TreeItem* parent, std::vector<TreeItem*> rows, std::size_t count) {
    struct Run {
        std::uint32_t position;
        std::size_t first;
        std::size_t end;
    };
    const auto byId = [](const TreeItem* a, const TreeItem* b) { return a->m_id < b->m_id; };
    if (!std::is_sorted(rows.begin(), rows.end(), byId))
        std::stable_sort(rows.begin(), rows.end(), byId);
    parent->makeRoom(rows.size());
    m_root.inStep = false;

    std::vector<Run> runs;
    TreeItem* const* const begin = parent->m_children;
    TreeItem* const* const end = begin + parent->m_count;
    TreeItem* const* place = begin;
    for (std::size_t i = 0; i != rows.size(); ++i) {
        const bool last = begin == end || end[-1]->m_id <= rows[i]->m_id;
        place = last ? end : std::upper_bound(place, end, rows[i], byId);
        const auto position = static_cast<std::uint32_t>(place - begin);
        if (runs.empty() || runs.back().position != position)
            runs.push_back({position, i, i});
        runs.back().end = i + 1;
    }
    if (runs.size() <= fewRuns) {
        // From the end, so that the places found stay true.
        for (; !runs.empty(); runs.pop_back()) {
            const Run& run = runs.back();
            insertRun(parent, run.position, rows.data() + run.first,
                      static_cast<std::uint32_t>(run.end - run.first));
        }
    } else {
        insertRun(parent, parent->m_count, rows.data(), static_cast<std::uint32_t>(rows.size()));
        rearrange({indexOf(parent)}, [&] { parent->sortChildren(); });
    }
    m_root.rows += count;
}

void TreeModel::insertRun(TreeItem* parent, std::uint32_t position, TreeItem* const* rows,
                          std::uint32_t count) {
    const std::uint32_t shown = m_root.descending ? parent->m_count - position : position;
    beginInsertRows(indexOf(parent), static_cast<int>(shown), static_cast<int>(shown + count - 1));
    parent->insertChildren(position, rows, count);
    try {
        endInsertRows();
    } catch (...) {
        // Who was to hear of the rows may not have heard of all: the view starts anew without them.
        beginResetModel();
        parent->takeChildren(position, count);
        endResetModel();
        throw;
    }
}

template <class Change>
void TreeModel::rearrange(const QList<QPersistentModelIndex>& parents, Change change) {
    emit layoutAboutToBeChanged(parents, VerticalSortHint);
    const QModelIndexList from = persistentIndexList();
    change();
    QModelIndexList to;
    to.reserve(from.size());
    for (const QModelIndex& index : from)
        to << indexOf(itemOf(index), index.column());
    changePersistentIndexList(from, to);
    emit layoutChanged(parents, VerticalSortHint);
}

void TreeModel::clear(bool keepAside) {
    if (m_root.m_count == 0)
        return;
    // Rows are cleared when items are gone too: whoever is told of it must not ask them.
    m_leaving = true;
    beginRemoveRows({}, 0, m_root.childCount() - 1);
    if (keepAside)
        m_root.setRowsAside();
    m_root.deleteRows();
    m_root.inStep = false;
    m_leaving = false;
    endRemoveRows();
}

QModelIndex TreeModel::indexOf(const TreeItem* row, int column) const {
    if (!row || row == &m_root)
        return {};
    return createIndex(static_cast<int>(row->shownAt(m_root.descending)), column,
                       const_cast<TreeItem*>(row)); // NOLINT: the index names it, no more
}

const TreeItem* TreeModel::rowOf(const QModelIndex& parent) const {
    return parent.isValid() ? itemOf(parent) : &m_root;
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column < 0 || column >= Columns || parent.column() > 0)
        return {};
    const TreeItem* above = rowOf(parent);
    if (row >= above->childCount())
        return {};
    return createIndex(row, column,
                       above->childAt(static_cast<std::uint32_t>(row), m_root.descending));
}

QModelIndex TreeModel::parent(const QModelIndex& index) const {
    return index.isValid() ? indexOf(itemOf(index)->parent()) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const {
    return parent.column() > 0 ? 0 : rowOf(parent)->childCount();
}

int TreeModel::columnCount(const QModelIndex& parent) const {
    return parent.column() > 0 ? 0 : Columns;
}

bool TreeModel::hasChildren(const QModelIndex& parent) const {
    return rowCount(parent) > 0;
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || m_leaving)
        return {};
    const TreeItem* row = itemOf(index);
    const auto colorOrNothing = [](const QColor& color) {
        return color.isValid() ? QVariant(color) : QVariant();
    };
    switch (role) {
    case Qt::DisplayRole:
        return row->text(index.column());
    case Qt::AccessibleTextRole:
        return index.column() == Object ? QVariant(row->spoken()) : QVariant();
    case Qt::ForegroundRole:
        return colorOrNothing(row->textColor(index.column()));
    case Qt::BackgroundRole:
        return colorOrNothing(row->cellColor(index.column()));
    default:
        return {};
    }
}

QVariant TreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const QString titles[Columns] = {QStringLiteral("Object"), QStringLiteral("Show"),
                                            QStringLiteral("Select"), QStringLiteral("Partial")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= Columns)
        return {};
    return titles[section];
}

void TreeModel::sort(int, Qt::SortOrder order) {
    const bool descending = order == Qt::DescendingOrder;
    if (descending != m_root.descending)
        rearrange({}, [&] { m_root.descending = descending; });
}
