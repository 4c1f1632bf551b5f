// Compares the rows of a tree with those of the plain model.
#pragma once

#include "Comparison.h"
#include "plain/PlainTree.h"

class TreeView;

namespace plain {

/// What the rows say, which are marked and open, and which is the current one.
void compareTree(Comparison& all, const Tree& tree, const TreeView& view);

} // namespace plain
