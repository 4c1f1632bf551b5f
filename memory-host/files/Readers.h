// Input and result of the reader of a file format: from bytes to plain tables. Readers do not touch
// the data space, and free the bytes as soon as possible.
#pragma once

#include "AtomTable.h"
#include "FileBytes.h"
#include "Formats.h"
#include "items/Building.h"
#include "items/MapCrystal.h"

#include <optional>

namespace memory_host {

/// A file whose format is to be recognised.
struct FileSample {
    std::string_view bytes;
    bool isWhole;   ///< else `bytes` is the first megabyte, with its original line ends
    bool isNamedSo; ///< whether the file's name has an ending of this format
};

/// How many points a map may have.
inline constexpr std::int64_t mostMapPoints = std::int64_t{1} << 30;

/// What a file holds: structures, or one map.
struct FileContent {
    std::vector<StructureTable> structures;
    std::optional<TAVIK::GridValues> grid;
    MapCrystal crystal = {}; ///< of the grid
};

// A reader gets the whole content of a file, unpacked, for text with unified line ends; the file's
// name without its endings, for an entry without an identifier; and the report, for its refusal or
// remarks.

} // namespace memory_host
