// The fields of a record of the PDB format, by their columns.
#pragma once

#include "FieldText.h"

#include <cstddef>
#include <string_view>

namespace memory_host::pdb {

/// Columns of a line, counted from 1 and inclusive as in the format's description; fewer where the
/// line ends before.
inline std::string_view columns(std::string_view line, std::size_t first, std::size_t last) {
    return line.size() < first ? std::string_view() : line.substr(first - 1, last - first + 1);
}

/// The same without the blanks around it.
inline std::string_view field(std::string_view line, std::size_t first, std::size_t last) {
    return trimmed(columns(line, first, last));
}

} // namespace memory_host::pdb
