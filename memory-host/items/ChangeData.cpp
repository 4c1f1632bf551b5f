#include "ChangeData.h"

#include <QtGlobal>

void changeData(DataPointBase&& guard, TAVIK::detail::FunctionRef<void(DataPointBase&)> change,
                Refusal refusal) {
    if (guard.m_good)
        change(guard);
    else if (refusal == Refusal::Report)
        qDebug("%s", "Cannot update CDB!");
}
