// What selecting in the tree means: which rows a press, a drag or a key selects and unselects. It
// works on rows alone; the view finds the rows and tells of the change.
#pragma once

#include "RowRange.h"
#include "TreeItem.h"

#include <Qt>

/// The extended selection: one row with a plain press, single rows with Ctrl, ranges with Shift or
/// by dragging. Ranges run from the anchor, which is where the last selection without Shift was.
///
/// A row is set only where its mark changes, so that only such rows are handed to the host. A row
/// that holds others, or a set's, is cleared together with them, and set again: it goes to the host
/// once more, for the whole of what it holds or lists.
///
/// Where rows stay selected inside of one that is unselected, that one does not count as changed:
/// handed over, it would unselect them too. What it held beside them is unselected row by row, so
/// that one CheckSelection() leaves in the host exactly what was selected here.
class TreeSelection {
public:
    explicit TreeSelection(const TreeView& view) : m_view(view) {}

    /// Forgets rows: they are about to go.
    void forget();

    /// A press that selected nothing is not to be made up for any more.
    void forgetPress() { m_pressed = nullptr; }

    /// A press with the left button on `row`, while `current` (which may be null) is current.
    /// Returns whether anything is to be told: a plain press on a selected row waits for release().
    bool press(TreeItem* row, TreeItem* current, Qt::KeyboardModifiers modifiers);
    /// A press with any button on the empty area. Returns whether anything changed.
    bool pressNothing(Qt::KeyboardModifiers modifiers);
    /// A press on the branch mark of `row`.
    void pressMark(TreeItem* row, Qt::KeyboardModifiers modifiers);
    /// The end of a press; `row`, under the mouse, may be null. Returns whether it selected.
    bool release(TreeItem* row);
    /// Takes the selection from the anchor to `row`; so far it went from there to `current`.
    /// Returns whether there is an anchor: nothing happens without one.
    bool extendTo(TreeItem* row, TreeItem* current);
    /// A key has led to `row`. Returns whether it selected.
    bool moveTo(TreeItem* row, Qt::KeyboardModifiers modifiers);
    void toggle(TreeItem* row);
    /// Selects every row. Returns whether anything changed.
    bool selectAll();

private:
    bool setAll(bool selected);
    void selectOnly(TreeItem* row);
    void selectShown(TreeItem* first, TreeItem* last, bool only);
    /// Ends that rows count as changed that are unselected but share something with `wanted`.
    void leaveShared(const RowRange& wanted);

    const TreeView& m_view;
    TreeItem* m_anchor = nullptr;  ///< null until a press or a key sets it
    TreeItem* m_pressed = nullptr; ///< what release() would select
};
