// The observer of the data space.
#pragma once

#include "HostExport.h"

/// Is told of every change as long as the subscriber exists, on the GUI thread, while the guard of
/// the change ends. A handler learns only the kind of change, and reads the data anew.
///
/// An exception out of a handler is logged by the host and goes no further. Subscribers may be made
/// and destroyed inside a handler.
class HOST_EXPORT Subscriber {
public:
    Subscriber();
    Subscriber(const Subscriber&) = delete;
    Subscriber& operator=(const Subscriber&) = delete;
    virtual ~Subscriber();

    virtual void commUpdate() = 0;
    virtual void commAdd() = 0;
    virtual void commDelete() = 0;
};
