// The focus: the one item that the user looks at, in whichever window.
#pragma once

#include "HostExport.h"

namespace TAVIK {

class Compound;

/// Is told when the focus moves, as long as the observer exists, on the GUI thread.
///
/// An exception out of a handler is logged by the host and goes no further. Observers may be made
/// and destroyed inside a handler; a new one hears from the next move on.
class HOST_EXPORT FocusObserver {
public:
    FocusObserver();
    FocusObserver(const FocusObserver&) = delete;
    FocusObserver& operator=(const FocusObserver&) = delete;
    virtual ~FocusObserver();

    /// The focus is on `item` now, or on nothing if it is null. `center` asks that views move it
    /// into their middle. A handler may set the focus; the others then hear of that first, and not
    /// of the move before it.
    virtual void focusMoved(Compound* item, bool center) = 0;
};

/// Moving the focus changes no data, and needs no guard.
class HOST_EXPORT Focus {
public:
    /// The item in focus, or null. An item that is about to be destroyed, by itself or with what it
    /// hangs in or with an atom of the bond that it is, leaves the focus while it is still there.
    static Compound* item();
    /// Moves the focus to `item`, or with null away from everything. Every observer but `by`, which
    /// may be null, is told. To set the same item again tells only if `center` is true. An item
    /// that is about to be destroyed is not taken. Handlers that answer each move with another,
    /// eight times over, are refused with a line in the log.
    static void set(Compound* item, FocusObserver* by, bool center = false);
};

} // namespace TAVIK
