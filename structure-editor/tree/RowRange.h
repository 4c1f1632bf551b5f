// A range of tree rows, in the order shown.
#pragma once

class TreeItem;

/// Whether `a` comes before `b` in the order shown; a row comes before what lies below it.
bool isBefore(const TreeItem* a, const TreeItem* b);

/// The rows from `first` to `last`: all of them, or those that closed branches do not hide.
struct RowRange {
    TreeItem* first;
    TreeItem* last;
    bool shownOnly;

    bool holds(const TreeItem* row) const;
    /// Whether the range holds `row` or a row above it.
    bool covers(const TreeItem* row) const;
};
