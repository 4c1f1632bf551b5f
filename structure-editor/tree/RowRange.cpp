#include "RowRange.h"

#include "TreeItem.h"

namespace {

bool isHidden(const TreeItem* row) {
    const TreeItem* above = row->parent();
    while (above && above->isOpen())
        above = above->parent();
    return above;
}

} // namespace

bool isBefore(const TreeItem* a, const TreeItem* b) {
    const int depthA = a->depth();
    const int depthB = b->depth();
    const TreeItem* aboveA = a;
    const TreeItem* aboveB = b;
    for (int depth = depthA; depth > depthB; --depth)
        aboveA = aboveA->parent();
    for (int depth = depthB; depth > depthA; --depth)
        aboveB = aboveB->parent();
    if (aboveA == aboveB)
        return depthA < depthB;
    while (aboveA->parent() != aboveB->parent()) {
        aboveA = aboveA->parent();
        aboveB = aboveB->parent();
    }
    return aboveA->position() < aboveB->position();
}

bool RowRange::holds(const TreeItem* row) const {
    return !(shownOnly && isHidden(row)) && !isBefore(row, first) && !isBefore(last, row);
}

bool RowRange::covers(const TreeItem* row) const {
    while (row && !holds(row))
        row = row->parent();
    return row;
}
