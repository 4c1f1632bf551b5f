// The change guard for additions.
#pragma once

#include "DataGuard.h"

template <class T> class DataAdder : public DataGuard<T, Publisher::Add> {
public:
    /// `data` is the item that receives new items; null only warns.
    /// `label` is that of DataPointBase.
    DataAdder(Subscriber* originator, T* data, std::string_view label = {})
        : DataGuard<T, Publisher::Add>(originator, data, label, "../../include/DataAdder") {}
};
