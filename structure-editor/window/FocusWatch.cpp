#include "FocusWatch.h"

#include "Ancestry.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <QScopedValueRollback>

#include <utility>

FocusWatch::FocusWatch(TreeView* tree, std::function<void(TAVIK::Compound* item)> show,
                       std::function<TAVIK::Compound*()> entry)
    : m_tree(tree), m_show(std::move(show)), m_entry(std::move(entry)) {
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { act(); });
    QObject::connect(tree, &TreeView::currentRowChanged, &m_timer,
                     [this](bool isPointedTo) { currentRowChanged(isPointedTo); });
}

void FocusWatch::focusMoved(TAVIK::Compound* item, bool) {
    if (item)
        wait(Then::ShowFocus);
}

void FocusWatch::currentRowChanged(bool isPointedTo) {
    if (m_isShowing)
        return;
    m_center = isPointedTo || (m_center && m_then == Then::MoveFocus);
    wait(Then::MoveFocus);
}

void FocusWatch::entryPicked() {
    wait(Then::MoveToEntry);
}

void FocusWatch::wait(Then then) {
    m_then = then;
    m_timer.start();
}

void FocusWatch::act() {
    const bool center = std::exchange(m_center, false);
    switch (std::exchange(m_then, Then::Nothing)) {
    case Then::Nothing:
        return;
    case Then::ShowFocus:
        // It may have moved on, or its item be gone.
        if (TAVIK::Compound* const item = TAVIK::Focus::item()) {
            const QScopedValueRollback showing(m_isShowing, true);
            m_show(item);
        }
        return;
    case Then::MoveToEntry:
        moveToEntry();
        return;
    case Then::MoveFocus:
        const TreeItem* const row = m_tree->currentItem();
        if (row && row->compound())
            TAVIK::Focus::set(row->compound(), this, center); // This may be destroyed now.
        return;
    }
}

// What the tree shows is what the user looks at. A focus within it stays.
void FocusWatch::moveToEntry() {
    TAVIK::Compound* const entry = m_entry();
    TAVIK::Compound* around = TAVIK::Focus::item();
    while (around && around != entry)
        around = TAVIK::GetParent(around);
    if (entry && !around)
        TAVIK::Focus::set(entry, this); // This may be destroyed now.
}
