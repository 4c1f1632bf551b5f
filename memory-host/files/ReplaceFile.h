// Replacing a file in one step: what stands at the path is the old file or the whole new one, also
// when the disk is full or the machine stops.
#pragma once

#include "FileStamp.h"
#include "SaveReport.h"

#include <string>
#include <string_view>

namespace memory_host {

/// Writes `bytes` to the report's path: a new file in the same folder gets the content, is forced
/// to the disk and then the name. Permissions are kept, and the owner where that is allowed; a
/// symbolic link is followed. Refuses when the file there is not `expected` any more, if that is
/// known. Returns the stamp of the new file.
FileStamp replaceFile(const SaveReport& report, std::string_view bytes,
                      const FileStamp& expected = {});

} // namespace memory_host
