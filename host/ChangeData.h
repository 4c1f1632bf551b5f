// The one way to change data: below a guard that is good.
#pragma once

#include "DataPointBase.h"
#include "HostExport.h"
#include "detail/FunctionRef.h"

/// What is said of a change that the host refuses.
enum class Refusal { Report, Silent };

/// Runs `change(guard)` if `guard`, which was made for this change alone and ends with it, is good.
/// Else nothing is changed, which is said unless it is to be silent. Exceptions pass, and end the
/// guard. Throws std::bad_alloc after a change that the host takes back, as memory does not suffice
/// to keep it.
HOST_EXPORT void changeData(DataPointBase&& guard,
                            TAVIK::detail::FunctionRef<void(DataPointBase&)> change,
                            Refusal refusal = Refusal::Report);
