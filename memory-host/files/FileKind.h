// What a file is by its content and its name: one of the formats, or something else that is known.
#pragma once

#include "Formats.h"

#include <string>
#include <string_view>

namespace memory_host {

/// What a file is that cannot be read, as "is compressed with bzip2", and what to do about it; both
/// empty where the bytes are of none that is known.
struct ForeignKind {
    std::string what;
    std::string accepted;
};
ForeignKind foreignKind(std::string_view bytes);

/// Takes the ending of a format off a file's name, and says which format it was; else null.
const FileFormat* takeEnding(std::string_view& name);

/// The binary format that the first bytes of a file are of, or null.
const FileFormat* binaryFormatOf(std::string_view bytes);

/// The format of a text; `named` is the one of the file's ending, or null.
const FileFormat& textFormatOf(std::string_view text, const FileFormat* named);
/// Whether the first megabyte of a longer text begins like a file of some format.
bool beginsLikeText(std::string_view beginning, const FileFormat* named);

} // namespace memory_host
