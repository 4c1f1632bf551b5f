// The host's focus and the tree's current row, each of which follows the other.
#pragma once

#include "Focus.h"

#include <QTimer>

#include <functional>

class TreeView;

/// Both ways wait until the event that made the change is over: who is told of the focus may do
/// anything, and the focus may move in the middle of a command.
class FocusWatch : public TAVIK::FocusObserver {
public:
    /// `show` makes the row of an item current; `entry` says what the tree shows, or null.
    FocusWatch(TreeView* tree, std::function<void(TAVIK::Compound* item)> show,
               std::function<TAVIK::Compound*()> entry);

    /// The user has picked what the tree shows.
    void entryPicked();

    void focusMoved(TAVIK::Compound* item, bool center) override;

private:
    enum class Then { Nothing, ShowFocus, MoveFocus, MoveToEntry };

    void currentRowChanged(bool isPointedTo);
    void wait(Then then);
    void act();
    void moveToEntry();

    TreeView* m_tree;
    std::function<void(TAVIK::Compound* item)> m_show;
    std::function<TAVIK::Compound*()> m_entry;
    Then m_then = Then::Nothing;
    bool m_center = false;
    bool m_isShowing = false; ///< the row that becomes current is that of the focus
    QTimer m_timer;
};
