// Alternative models: which atoms of a residue belong to the active one. Atoms of model 0 belong to
// all of them, and are never looked at here.
#pragma once

#include "HostItem.h"

namespace memory_host {

/// Which model of a residue is to be shown: the first one that it has, or the one after or before.
enum class ModelStep { First, Next, Previous };
void switchModel(Holder& residue, ModelStep step);
/// Counts and marks the atoms at or in an item, which has just come into its place, for the models
/// of the residue around it. The first model that comes to a residue without any is active.
void joinModels(Compound& item);
/// Takes them out of the count before the item goes; returns the residue around it if that needs to
/// settle its model when the item is gone, else null.
Holder* leaveModels(Compound& item);
/// Makes the first model active that the residue has when there are no atoms of the active one any
/// more. `residue` may be null.
void settleModel(Holder* residue);

} // namespace memory_host
