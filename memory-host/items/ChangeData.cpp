#include "ChangeData.h"

#include "Recording.h"

#include <QtGlobal>

#include <new>

void changeData(DataPointBase&& guard, TAVIK::detail::FunctionRef<void(DataPointBase&)> change,
                Refusal refusal) {
    if (!guard.m_good) {
        if (refusal == Refusal::Report)
            qDebug("%s", "Cannot update CDB!");
        return;
    }
    change(guard);
    // The guard takes the change back; whoever asked for it must not go on as if it was done.
    if (const auto* const step = memory_host::recording.step; step && step->hasFailed())
        throw std::bad_alloc();
}
