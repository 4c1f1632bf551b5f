// What the reader of a file format is given, and what it brings: from bytes to plain tables.
// Readers touch no data space, and free the bytes as soon as they have what they need.
#pragma once

#include "AtomTable.h"
#include "FileBytes.h"
#include "Formats.h"
#include "items/Building.h"

#include <optional>

namespace memory_host {

/// A file whose format is looked for.
struct FileSample {
    std::string_view bytes;
    bool isWhole;   ///< else `bytes` is the first megabyte, with its line ends as they are
    bool isNamedSo; ///< whether the file's name has an ending of the format that is asked
};

/// What a file holds: structures, or one map.
struct FileContent {
    std::vector<StructureTable> structures;
    std::optional<GridRecord> grid;
};

// A reader gets the whole of a file, unpacked, with unified line ends where the format is text; the
// file's name without its endings, for an entry that has no identifier; and the report, by which it
// refuses the file or remarks on it.

} // namespace memory_host
