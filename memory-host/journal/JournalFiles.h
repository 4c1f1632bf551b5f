// The files of a journal: bytes that are packed, with a checksum.
#pragma once

#include "JournalBytes.h"
#include "files/FileReport.h"

#include <string>
#include <string_view>

namespace memory_host {

/// The unpacked bytes of a file. Throws FileError.
std::string readJournalFile(const FileReport& report);
/// Replaces a file by these bytes, packed, when they are on the disk. Throws SaveError.
void writeJournalFile(const std::string& path, std::string_view bytes);

/// What `read` makes of the unpacked bytes of a file. Throws FileError.
template <class Read> auto readFramed(const FileReport& report, const Read& read) {
    try {
        return read(readJournalFile(report));
    } catch (const JournalDamage&) {
        report.refuse(0, "is damaged", "accepted is a whole journal");
    }
}

} // namespace memory_host
