// The invisible row above all rows of a structure tree. It leads every row to its model, and puts
// rows into the tree and takes them out: all at once, or aside for a while.
#pragma once

#include "TreeItem.h"

class TreeModel;

class TreeRoot : public TreeItem {
public:
    explicit TreeRoot(TreeModel& ofModel) : model(ofModel) {}
    ~TreeRoot() = default;

    // For the model, between its signals before and after a change.

    /// Makes room for `count` more rows below `parent`; they can then be put there without failing.
    static void makeRoom(TreeItem* parent, std::size_t count) { parent->makeRoom(count); }
    /// Puts `rows`, which are in no tree and for which there is room, before the one at `position`.
    static void insert(TreeItem* parent, std::uint32_t position, std::span<TreeItem* const> rows);
    /// Removes `count` rows from `position` on; they are in no tree then.
    static void take(TreeItem* parent, std::uint32_t position, std::uint32_t count) {
        parent->leaveWhole();
        parent->take(position, count);
    }
    /// Sorts the rows below `parent` by their ids.
    static void sort(TreeItem* parent) {
        parent->leaveWhole();
        parent->sort();
    }

    /// Deletes all rows. Their memory is kept for the next rows, until it is trimmed.
    void deleteRows();
    /// Frees memory that no row uses.
    static void trimMemory();
    /// Closes all rows.
    void closeAll();

    /// Takes the rows out of the tree, if they are of one item, and keeps them for when that item
    /// is shown again.
    void setRowsAside();
    /// Puts the rows that were set aside back into the tree, like new, if they are of `c`; returns
    /// null otherwise.
    TreeItem* takeFromAside(TAVIK::Compound* c);
    void dropAside() noexcept;

    TreeModel& model;
    std::size_t rows = 0;    ///< number of rows; too small after memory ran out in the middle
    bool descending = false; ///< shown in descending order of ids
    bool inStep = false; ///< no row was added, or changed by the user, since all rows took over the
                         ///< host's selection
    std::uint64_t selectionTaken = 0; ///< SelectionChanges() at that time

private:
    Detached m_aside;
    std::size_t m_rowsAside = 0;
};
