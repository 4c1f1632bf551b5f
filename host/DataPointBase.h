// The common base of the change guards: a guard is held while data are changed, and announces the
// change when it ends.
#pragma once

#include "HostExport.h"
#include "Publisher.h"

#include <string_view>

class Subscriber;

/// A change in progress (RAII): a guard lives on the stack for one command. Guards do not nest; a
/// second one is refused. When a good guard ends, also during stack unwinding, every subscriber but
/// the originator is told the kind of change, in order of registration. A refused guard announces
/// nothing. A change that an exception ends, or that memory does not suffice for, is taken back as
/// if it had never been; the originator is told then, too. A subscriber may answer with a change of
/// its own; subscribers that have not been told of a deletion yet are told of it before they are
/// told of such an answer.
class HOST_EXPORT DataPointBase {
public:
    /// Asks the host for the change. `originator`, which may be null, is not told.
    DataPointBase(Subscriber* originator, Publisher::ActionType kind);
    /// The same, for a change with a label.
    DataPointBase(Subscriber* originator, Publisher::ActionType kind, std::string_view label);
    DataPointBase(const DataPointBase&) = delete;
    DataPointBase& operator=(const DataPointBase&) = delete;
    virtual ~DataPointBase();

    /// Says what the change is in words for the user, as "Hide 40 atoms": a log shows them, and a
    /// list of what can be undone. In Latin-1, as names are. The last label counts when the guard
    /// ends; an empty one means that there is nothing to tell of. A host may ignore labels, and a
    /// refused guard does.
    void setLabel(std::string_view label) noexcept;

    /// Whether the change may go ahead: false while another guard is open or the space is locked.
    bool m_good;

private:
    bool m_holds; ///< what the host granted; callers can overwrite m_good
    Publisher::ActionType m_kind;
    Subscriber* m_originator;
};
