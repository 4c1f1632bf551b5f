// Packing a file's content as gzip does.
#pragma once

#include "SaveReport.h"

#include <string>
#include <string_view>

namespace memory_host {

enum class Packing { Usual, Fast };
/// The bytes as one member of a .gz file, without a name or a time. Throws std::bad_alloc.
std::string gzipped(std::string_view bytes, const SaveReport& report,
                    Packing packing = Packing::Usual);

} // namespace memory_host
