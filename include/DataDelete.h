// The change guard for deletions.
#pragma once

#include "DataGuard.h"

template <class T> class DataDelete : public DataGuard<T, Publisher::Delete> {
public:
    /// `data` is the item that is destroyed, or below which items are; null only warns.
    DataDelete(Subscriber* originator, T* data)
        : DataGuard<T, Publisher::Delete>(originator, data, "../../include/DataDelete") {}
};
