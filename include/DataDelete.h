// The change guard for deletions.
#pragma once

#include "DataGuard.h"

template <class T> class DataDelete : public DataGuard<T, Publisher::Delete> {
public:
    /// `data` is the item that is destroyed, or below which items are; null only warns. `label` is
    /// that of DataPointBase.
    DataDelete(Subscriber* originator, T* data, std::string_view label = {})
        : DataGuard<T, Publisher::Delete>(originator, data, label, "../../include/DataDelete") {}
};
