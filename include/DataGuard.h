// What the three kinds of change guards have in common.
#pragma once

#include "Checks.h"
#include "DataPointBase.h"

/// A change guard of one kind that remembers the item it was opened on. It owns nothing;
/// DataPointBase says what its end does.
template <class T, Publisher::ActionType kind> class DataGuard : public DataPointBase {
protected:
    /// `source` names the guard's header in the warning that a null `data` gives.
    DataGuard(Subscriber* originator, T* data, std::string_view label, const char* source)
        : DataPointBase(originator, kind, label), m_data(data) {
        checkPtr(data, source, 78);
    }

    T* m_data;
};
