// The rows of the structure tree as Qt's views read them.
#pragma once

#include "TreeItem.h"

#include <QAbstractItemModel>

/// The invisible row above the top level. It leads every row to its model.
class TreeRoot : public TreeItem {
public:
    explicit TreeRoot(TreeModel& ofModel) : model(ofModel) { m_isRoot = true; }
    ~TreeRoot() = default;
    /// Deletes all rows. Their memory stays for rows that come next, until it is trimmed.
    void deleteRows();
    /// Gives back memory that no row stands in.
    static void trimMemory();
    /// Takes the rows out, if they are those of one item, and keeps them for when that is shown
    /// again.
    void setRowsAside();
    /// Puts the rows that were set aside into the tree again if they are of `c`, as if they had
    /// just been made; else null.
    TreeItem* takeFromAside(TAVIK::Compound* c);
    void dropAside() noexcept;

    TreeModel& model;
    std::size_t rows = 0; ///< how many there are; less where memory ran out as they came
    Detached aside;
    std::size_t rowsAside = 0;
    bool descending = false; ///< shown by falling id
    bool inStep = false; ///< no row has come or was changed by the user since all took the host's
                         ///< selection over
    std::uint64_t selectionTaken = 0; ///< SelectionChanges() when they did
};

/// Owns the rows. Rows come one at a time or with all that lies below them, and go only all at
/// once. What is open, current or selected stays so while rows come, unless memory runs out.
class TreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    explicit TreeModel(TreeView* view);
    ~TreeModel() override;

    enum Column { Object, Show, Select, Partial, Columns };

    TreeView* view() const { return m_view; }
    TreeRoot* root() { return &m_root; }
    const TreeRoot* root() const { return &m_root; }

    /// Puts `rows`, none of which is in a tree, below `parent`: each to where its id belongs.
    /// Neighbours come in one step. With what lies below them they are `count` rows. They belong to
    /// the tree afterwards; when this throws, those that have no parent do not.
    void insert(TreeItem* parent, std::vector<TreeItem*> rows, std::size_t count);
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
    /// Shows the rows by rising or falling host id, whatever the column.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

private:
    const TreeItem* rowOf(const QModelIndex& parent) const;
    void insertRun(TreeItem* parent, std::uint32_t position, TreeItem* const* rows,
                   std::uint32_t count);
    /// Runs `change`, which moves rows among their siblings.
    template <class Change>
    void rearrange(const QList<QPersistentModelIndex>& parents, Change change);

    TreeView* m_view;
    TreeRoot m_root;
    bool m_leaving = false; ///< the rows are about to be deleted
};
