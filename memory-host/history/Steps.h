// The steps that can be taken back and done again, and the memory for them.
#pragma once

#include "HostExport.h"

#include <cstddef>

namespace memory_host {

/// Bytes that steps may take, unless set otherwise.
inline constexpr std::size_t defaultHistoryBytes = std::size_t{256} << 20U;

/// Sets how many bytes the steps may take together; with 0, nothing is recorded. Steps that take
/// more are forgotten.
HOST_EXPORT void setHistoryBytes(std::size_t bytes);
/// The same from the setting "Megabytes" of "History"; what is no number is told to the log.
HOST_EXPORT void readHistorySetting();
/// Bytes that the steps take now: an estimate.
HOST_EXPORT std::size_t historyBytes();
/// Bytes of steps that are forgotten, but not freed yet: an estimate.
HOST_EXPORT std::size_t forgottenBytes();
/// Forgets all steps, and frees them.
HOST_EXPORT void forgetHistory();

} // namespace memory_host
