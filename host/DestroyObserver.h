// Who must let go of items before they are destroyed.
#pragma once

#include "HostExport.h"

namespace TAVIK {

class Compound;

/// Hears of every destruction in the data space, from its own construction until its destruction,
/// on the GUI thread, while all that is about to go is still there. A Subscriber hears of it when
/// the change is over, and others before it may run an event loop by then: whoever keeps pointers
/// to items, and paints or answers from them, lets go of them here.
///
/// An exception out of a handler is logged by the host and goes no further. Observers may be made
/// and destroyed inside a handler.
class HOST_EXPORT DestroyObserver {
public:
    DestroyObserver();
    DestroyObserver(const DestroyObserver&) = delete;
    DestroyObserver& operator=(const DestroyObserver&) = delete;
    virtual ~DestroyObserver();

    /// `item` is about to be destroyed, with all that it holds and with the bonds of its atoms.
    /// Told once for each call of DataMaker::Destroy(), but not of items outside of the data space.
    /// No data may be changed here.
    virtual void aboutToDestroy(Compound* item) = 0;
};

} // namespace TAVIK
