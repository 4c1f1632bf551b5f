#include "RepaintCount.h"

#include "tree/TreeView.h"

#include <QCoreApplication>

namespace {

int allCalls = 0;

// One thing leads to the next: a layout that was put off, then what it paints.
void finishEvents() {
    for (int turn = 0; turn != 5; ++turn)
        QCoreApplication::processEvents();
}

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

PaintCount::PaintCount(QWidget* widget) {
    finishEvents();
    widget->installEventFilter(this);
}

int PaintCount::events() {
    finishEvents();
    return m_events;
}

bool PaintCount::eventFilter(QObject*, QEvent* event) {
    m_events += event->type() == QEvent::Paint;
    return false;
}
