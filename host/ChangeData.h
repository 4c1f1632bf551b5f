// The one way to change data: below a guard that is good.
#pragma once

#include "DataPointBase.h"

#include <QtGlobal>

#include <type_traits>

/// What is said of a change that the host refuses.
enum class Refusal { Report, Silent };

/// Runs `change(guard)` if `guard`, which was made for this change alone, is good. Else nothing is
/// changed, which is said unless it is to be silent. Exceptions pass, and end the guard.
template <class Guard, class Change>
void changeData(Guard&& guard, Change&& change, Refusal refusal = Refusal::Report) {
    static_assert(!std::is_lvalue_reference_v<Guard>, "the guard ends with the change");
    if (guard.m_good)
        change(guard);
    else if (refusal == Refusal::Report)
        qDebug("%s", "Cannot update CDB!");
}
