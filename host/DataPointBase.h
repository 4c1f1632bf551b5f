// The common base of the change guards: taken while data are changed, and the announcement of the
// change when it ends.
#pragma once

#include "HostExport.h"
#include "Publisher.h"

class Subscriber;

/// A change in progress. Lives on the stack for one command; guards are not nested, a second one is
/// refused. When a good guard ends, also while an exception passes, every subscriber but the
/// originator is told of the kind of change, in order of registration; a refused guard has changed
/// nothing and announces nothing. A subscriber may answer with a change of its own: those who have
/// not heard of a deletion yet hear of it before they hear of an answer to it.
class HOST_EXPORT DataPointBase {
public:
    /// Asks the host for the change. `originator`, which may be null, is the one that is not told.
    DataPointBase(Subscriber* originator, Publisher::ActionType kind);
    DataPointBase(const DataPointBase&) = delete;
    DataPointBase& operator=(const DataPointBase&) = delete;
    virtual ~DataPointBase();

    /// Whether the change may go ahead: false while another guard is open or the space is locked.
    bool m_good;

private:
    bool m_holds; ///< what the host granted, whatever became of m_good
    Publisher::ActionType m_kind;
    Subscriber* m_originator;
};
