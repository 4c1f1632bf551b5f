#include "TreeModel.h"

#include <QColor>

#include <algorithm>
#include <new>
#include <utility>

namespace {

// Rows for more separate positions than this are inserted at the end in one step and then sorted,
// because each separate insertion moves all siblings after it.
constexpr std::size_t fewRuns = 16;

// Of more insertions than this in one go, views are told at once: telling them of each takes longer
// than all else.
constexpr int fewInsertions = 16;

} // namespace

TreeModel::TreeModel(QObject* parent) : QAbstractItemModel(parent), m_root(*this) {}

TreeModel::~TreeModel() = default;

void TreeModel::insert(TreeItem* parent, std::vector<TreeItem*> rows, std::size_t count) {
    struct Run {
        std::uint32_t position;
        std::size_t first;
        std::size_t end;
    };
    const auto byId = [](const TreeItem* a, const TreeItem* b) { return a->id() < b->id(); };
    if (!std::is_sorted(rows.begin(), rows.end(), byId))
        std::stable_sort(rows.begin(), rows.end(), byId);
    TreeRoot::makeRoom(parent, rows.size());
    m_root.inStep = false;
    if (m_isAdding && ++m_insertions == fewInsertions)
        beginMoving({}, NoLayoutChangeHint);
    if (m_moving) {
        TreeRoot::insert(parent, static_cast<std::uint32_t>(parent->childCount()), rows);
        TreeRoot::sort(parent);
        m_root.rows += count;
        return;
    }

    std::vector<Run> runs;
    const std::span<TreeItem* const> siblings = parent->children();
    auto place = siblings.begin();
    for (std::size_t i = 0; i != rows.size(); ++i) {
        const bool last = siblings.empty() || siblings.back()->id() <= rows[i]->id();
        place = last ? siblings.end() : std::upper_bound(place, siblings.end(), rows[i], byId);
        const auto position = static_cast<std::uint32_t>(place - siblings.begin());
        if (runs.empty() || runs.back().position != position)
            runs.push_back({position, i, i});
        runs.back().end = i + 1;
    }
    if (runs.size() <= fewRuns) {
        // From the end, so that the positions before stay valid.
        for (; !runs.empty(); runs.pop_back()) {
            const Run& run = runs.back();
            insertRun(parent, run.position, {rows.data() + run.first, rows.data() + run.end});
        }
    } else {
        insertRun(parent, static_cast<std::uint32_t>(siblings.size()), rows);
        rearrange({indexOf(parent)}, [&] { TreeRoot::sort(parent); });
    }
    m_root.rows += count;
}

void TreeModel::insertRun(TreeItem* parent, std::uint32_t position,
                          std::span<TreeItem* const> rows) {
    const auto at = static_cast<int>(position);
    const int shown = m_root.descending ? parent->childCount() - at : at;
    const auto count = static_cast<int>(rows.size());
    beginInsertRows(indexOf(parent), shown, shown + count - 1);
    TreeRoot::insert(parent, position, rows);
    try {
        endInsertRows();
    } catch (...) {
        // Listeners may not all have been told of the rows: the view is reset without them.
        beginResetModel();
        TreeRoot::take(parent, position, static_cast<std::uint32_t>(count));
        m_root.closeAll();
        endResetModel();
        throw;
    }
}

void TreeModel::beginAdding() {
    m_isAdding = true;
    m_insertions = 0;
}

void TreeModel::endAdding() {
    m_isAdding = false;
    if (m_moving)
        endMoving({}, NoLayoutChangeHint);
}

void TreeModel::beginMoving(const QList<QPersistentModelIndex>& parents, LayoutChangeHint hint) {
    m_moving.emplace();
    emit layoutAboutToBeChanged(parents, hint);
    m_moving->from = persistentIndexList();
    m_moving->to.reserve(m_moving->from.size());
    m_moving->isKnown = true;
}

void TreeModel::endMoving(const QList<QPersistentModelIndex>& parents, LayoutChangeHint hint) {
    Moving moving = *std::exchange(m_moving, std::nullopt);
    try {
        if (!moving.isKnown)
            throw std::bad_alloc();
        for (const QModelIndex& index : moving.from)
            moving.to << indexOf(itemOf(index), index.column());
        changePersistentIndexList(moving.from, moving.to);
        emit layoutChanged(parents, hint);
    } catch (...) {
        beginResetModel();
        m_root.closeAll();
        endResetModel();
        throw;
    }
}

template <class Change>
void TreeModel::rearrange(const QList<QPersistentModelIndex>& parents, Change change) {
    beginMoving(parents, VerticalSortHint);
    change();
    endMoving(parents, VerticalSortHint);
}

void TreeModel::clear(bool keepAside) {
    if (m_root.childCount() == 0)
        return;
    // Items may be gone already, so that listeners must not read them.
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
