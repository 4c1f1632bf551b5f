// The change guard for updates of existing items: selection, visibility, colour, model.
#pragma once

#include "DataGuard.h"

template <class T> class DataPoint : public DataGuard<T, Publisher::Update> {
public:
    /// `originator` is not told of the change; null tells everybody. A null `data` only warns.
    /// `label` is that of DataPointBase.
    DataPoint(Subscriber* originator, T* data, std::string_view label = {})
        : DataGuard<T, Publisher::Update>(originator, data, label, "../../include/DataPoint") {}

    /// The item that the guard was opened on. Asking a guard that is not good only warns.
    T* data() const {
        checkThat(this->m_good, "m_good", "../../include/DataPoint", 101);
        return this->m_data;
    }
};
