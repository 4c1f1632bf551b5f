#include "JournalFiles.h"

#include "files/FileBytes.h"
#include "files/Gzip.h"
#include "files/ReplaceFile.h"

namespace memory_host {

std::string readJournalFile(const FileReport& report) {
    const ReadBytes read = readFile(report, [](std::string_view) {}, {});
    // What is not packed has no checksum.
    if (read.gzipped.size() == 0)
        throw JournalDamage();
    return std::string(read.text.text());
}

void writeJournalFile(const std::string& path, std::string_view bytes) {
    const SaveReport report(path);
    replaceFile(report, gzipped(bytes, report, Packing::Fast));
}

} // namespace memory_host
