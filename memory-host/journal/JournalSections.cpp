#include "JournalSections.h"

namespace memory_host {

void writeStamp(JournalBytes& bytes, const FileStamp& stamp) {
    bytes.number(stamp.device);
    bytes.number(stamp.inode);
    for (const std::int64_t part : {stamp.size, stamp.seconds, stamp.nanoseconds})
        bytes.difference(part);
}

FileStamp readStamp(JournalReader& reader) {
    FileStamp stamp;
    stamp.device = reader.number();
    stamp.inode = reader.number();
    for (std::int64_t* const part : {&stamp.size, &stamp.seconds, &stamp.nanoseconds})
        *part = reader.difference();
    return stamp;
}

} // namespace memory_host
