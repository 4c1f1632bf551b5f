// Rows that share items through sets, whose members are elsewhere in the tree or in other entries.
#pragma once

#include "RowRange.h"

class TreeView;

/// After a gesture that selected the rows of `wanted` and unselected others: clears the "changed by
/// the user" mark of unselected rows that share items with `wanted` through a set. Handed to the
/// host, such a row would unselect the shared items. Its other items are handed over by rows of
/// their own; only members of such a set in other entries keep their selection.
///
/// Visits each row if a set was selected or unselected, and costs next to nothing otherwise. Throws
/// std::bad_alloc; marks are then cleared only in part, but none of them wrongly.
void leaveSharedRows(const TreeView& view, const RowRange& wanted);
