// What rows share by way of sets, whose members stand elsewhere in the tree or in other entries.
#pragma once

#include "RowRange.h"

class TreeView;

/// After a gesture that selected the rows of `wanted` and unselected others: ends that a row counts
/// as unselected by the user where it shares items with `wanted` through a set. Handed over, it
/// would unselect them again. What it holds beside them is handed over in rows of its own; only
/// members of such a set that stand in other entries keep their selection.
///
/// Costs a look at each row when a set was selected or unselected, and next to nothing otherwise.
/// Throws std::bad_alloc, and has changed nothing wrongly then.
void leaveSharedRows(const TreeView& view, const RowRange& wanted);
