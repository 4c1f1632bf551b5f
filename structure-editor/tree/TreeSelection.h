// The selection rules of the tree: which rows a press, a drag or a key selects and unselects. Works
// on rows alone; the view finds the rows and announces the change.
#pragma once

#include "RowRange.h"
#include "TreeItem.h"

#include <Qt>

/// The extended selection: one row with a plain press, single rows with Ctrl, ranges with Shift or
/// by dragging. Ranges run from the anchor, which is where the last selection without Shift was.
///
/// A row is written only where its mark changes, so that only such rows are handed to the host. But
/// a row that holds or, as a set, lists others is cleared with them and set again: then it is
/// handed to the host once more, for all that it holds or lists.
///
/// An unselected row with rows inside that stay selected does not count as changed: handed over, it
/// would unselect them, too. Its other rows are unselected one by one, so that one CheckSelection()
/// gives the host exactly the selection made here.
class TreeSelection {
public:
    explicit TreeSelection(const TreeView& view) : m_view(view) {}

    /// Forgets all rows, because they are about to be deleted.
    void forget();

    /// Forgets a press that has selected nothing yet, so that release() does nothing.
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
    /// Changes the range, which ran from the anchor to `current`, to end at `row`. Returns whether
    /// there is an anchor; without one nothing happens.
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
    /// Clears the isDirty() mark of unselected rows that share items with `wanted`.
    void leaveShared(const RowRange& wanted);

    const TreeView& m_view;
    TreeItem* m_anchor = nullptr;  ///< null until a press or a key sets it
    TreeItem* m_pressed = nullptr; ///< what release() would select
};
