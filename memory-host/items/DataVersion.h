// Whether the data of an entry are those of its file: atoms and bonds made, changed or destroyed
// count, and what is only looked at, as selection, colours and sets, does not.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <cstdint>

namespace memory_host {

/// Another number after every change of the data of a top-level item; 0 for one that was just read.
HOST_EXPORT std::uint64_t dataVersion(const TAVIK::Compound* topLevel);
/// Whether these data are neither as they were read nor as they were saved last.
HOST_EXPORT bool hasUnsavedData(const TAVIK::Compound* topLevel);
/// Keeps that the present data of a top-level item are in a file.
HOST_EXPORT void setDataSaved(const TAVIK::Compound* topLevel);
/// Keeps that no file has the data of a top-level item, neither as they are nor as they were read.
/// Throws std::bad_alloc.
void setDataUnsaved(const TAVIK::Compound* topLevel);

/// Called when `item` was made, was changed, or is about to be destroyed: the data of the entry
/// that it stands in change, if it is in one and is something that files hold.
void noteDataChange(const TAVIK::HostItem& item) noexcept;
/// Gives a top-level item that was changed another version; returns the one it had.
std::uint32_t swapDataVersion(const TAVIK::HostItem& top, std::uint32_t version) noexcept;
/// Called before an item is freed.
void forgetDataVersion(const TAVIK::HostItem& item) noexcept;

} // namespace memory_host
