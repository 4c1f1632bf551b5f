// The rows of the structure tree as Qt's views read them.
#pragma once

#include "TreeRoot.h"

#include <QAbstractItemModel>

#include <optional>

/// Owns the rows. Rows are added singly or with all that lies below them, and deleted only all at
/// once. Adding keeps open, current and selected rows as they are, unless memory runs out.
class TreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    explicit TreeModel(QObject* parent = nullptr);
    ~TreeModel() override;

    enum Column { Object, Show, Select, Partial, Columns };

    TreeRoot* root() { return &m_root; }
    const TreeRoot* root() const { return &m_root; }

    /// Inserts `rows`, none of which is in a tree, below `parent`, in the order of ids; neighbours
    /// are inserted in one step. `count` is their number with all rows below. The tree owns them
    /// afterwards; if this throws, not those without a parent.
    void insert(TreeItem* parent, std::vector<TreeItem*> rows, std::size_t count);
    /// Between these, rows are inserted for one change of the data: of many insertions views are
    /// told at once, at the end.
    void beginAdding();
    void endAdding();
    /// Deletes all rows, or sets them aside. Their memory is kept: see TreeRoot.
    void clear(bool keepAside = false);

    /// Invalid for null.
    QModelIndex indexOf(const TreeItem* row, int column = 0) const;
    /// Null for an invalid index.
    static TreeItem* itemOf(const QModelIndex& index) {
        return static_cast<TreeItem*>(index.internalPointer());
    }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    /// Shows the rows in ascending or descending order of host ids, whatever the column.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    /// `row` was opened or closed.
    void openChanged(TreeItem* row);

private:
    const TreeItem* rowOf(const QModelIndex& parent) const;
    void insertRun(TreeItem* parent, std::uint32_t position, std::span<TreeItem* const> rows);
    /// Runs `change`, which moves rows among their siblings.
    template <class Change>
    void rearrange(const QList<QPersistentModelIndex>& parents, Change change);

    /// Where rows that views know are, while others are moved or inserted.
    struct Moving {
        QModelIndexList from;
        QModelIndexList to;
        bool isKnown = false;
    };
    void beginMoving(const QList<QPersistentModelIndex>& parents, LayoutChangeHint hint);
    /// If memory runs out, the views are reset.
    void endMoving(const QList<QPersistentModelIndex>& parents, LayoutChangeHint hint);

    TreeRoot m_root;
    std::optional<Moving> m_moving;
    int m_insertions = 0; ///< since beginAdding()
    bool m_isAdding = false;
    bool m_leaving = false; ///< the rows are being deleted
};
