// The kind of a file by its content and its name: one of the formats, or a known foreign one.
#pragma once

#include "Formats.h"

#include <string>
#include <string_view>

namespace memory_host {

/// A known kind of file that cannot be read, as "is compressed with bzip2", and what to do about
/// it; both empty for unknown bytes.
struct ForeignKind {
    std::string what;
    std::string accepted;
};
ForeignKind foreignKind(std::string_view bytes);

/// Removes the ending from a file's name, and returns the format of the ending, or null.
const FileFormat* takeEnding(std::string_view& name);

/// The binary format recognised by the first bytes of a file, or null.
const FileFormat* binaryFormatOf(std::string_view bytes);

/// The format of a text; `named` is the one of the file's ending, or null.
const FileFormat& textFormatOf(std::string_view text, const FileFormat* named);
/// Whether the first megabyte of a longer text begins like a file of some format.
bool beginsLikeText(std::string_view beginning, const FileFormat* named);

} // namespace memory_host
