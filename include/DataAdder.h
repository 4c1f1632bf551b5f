// The change guard for additions.
#pragma once

#include "DataGuard.h"

template <class T> class DataAdder : public DataGuard<T, Publisher::Add> {
public:
    /// `data` is the item that receives new items; null only warns.
    DataAdder(Subscriber* originator, T* data)
        : DataGuard<T, Publisher::Add>(originator, data, "../../include/DataAdder") {}
};
