#include "RepaintCount.h"

#include "TreeView.h"

namespace {

int allCalls = 0;

} // namespace

void realUpdate(TreeView* tree) asm("__real__ZN8TreeView13triggerUpdateEv");
void countedUpdate(TreeView* tree) asm("__wrap__ZN8TreeView13triggerUpdateEv");

void countedUpdate(TreeView* tree) {
    ++allCalls;
    realUpdate(tree);
}

RepaintCount::RepaintCount() : m_before(allCalls) {}

int RepaintCount::calls() const {
    return allCalls - m_before;
}
