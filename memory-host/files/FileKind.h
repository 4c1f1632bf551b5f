// What a file is by its first bytes, where those tell.
#pragma once

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

/// Whether a record of the PDB format begins one of the lines.
bool hasPdbRecord(std::string_view text);

} // namespace memory_host
