// Which file stands behind a path, and its state: tells whether someone else has changed it.
#pragma once

#include <cstdint>
#include <string>

namespace memory_host {

/// The identity of a regular file, its size, and when its content was last changed.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = -1; ///< -1: there is no regular file
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    bool isKnown() const { return size >= 0; }
    bool operator==(const FileStamp&) const = default;
};

/// The stamp of an open file, or of a path; of no file where there is no regular one.
FileStamp stampOf(int file);
FileStamp stampOf(const std::string& path);

} // namespace memory_host
