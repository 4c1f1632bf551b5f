// Observers that drop their pointers to items before the items are destroyed.
#pragma once

#include "HostExport.h"

namespace TAVIK {

class Compound;

/// Is told of every destruction in the data space as long as the observer exists, on the GUI thread
/// and before anything is destroyed. Subscribers are told only after the change, and one of them
/// may run an event loop before the next is told. An object that keeps pointers to items, and
/// paints or answers from them, must therefore drop the pointers here.
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
    /// Called once for each call of DataMaker::Destroy(), but not for items outside of the data
    /// space. No data may be changed here.
    virtual void aboutToDestroy(Compound* item) = 0;
};

} // namespace TAVIK
