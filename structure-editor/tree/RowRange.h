// A range of tree rows, in the order shown.
#pragma once

class TreeItem;

/// Whether `a` comes before `b` in the order shown; a row comes before its descendants.
bool isBefore(const TreeItem* a, const TreeItem* b);

/// The rows from `first` to `last`: all of them, or only those that no closed branch hides.
struct RowRange {
    TreeItem* first;
    TreeItem* last;
    bool shownOnly;

    bool holds(const TreeItem* row) const;
    /// Whether the range holds `row` or one of its ancestors.
    bool covers(const TreeItem* row) const;
};
