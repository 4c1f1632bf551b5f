// Where the bytes of a file come from: a regular file, or a pipe that is read to its end.
#pragma once

#include "FileReport.h"

#include <cstdint>
#include <optional>
#include <stop_token>

namespace memory_host {

/// What is accepted where a file is too large.
std::string acceptedSizes();

class FileSource {
public:
    /// Opens the report's file. Refuses what is missing, unreadable, empty, or neither a regular
    /// file nor a pipe, and what is too large.
    FileSource(const FileReport& report, std::stop_token stop);
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource();

    /// Reads up to `count` bytes, and fewer only at the end. Refuses the file when reading fails,
    /// is stopped, or when nobody writes into a pipe.
    std::size_t read(char* to, std::size_t count);
    /// The size of a regular file.
    std::optional<std::size_t> size() const { return m_size; }
    /// The last four bytes of a regular file, as a number with the lowest byte first.
    std::optional<std::uint32_t> lastWord() const;

private:
    std::size_t readSome(char* to, std::size_t count);

    const FileReport& m_report;
    std::stop_token m_stop;
    int m_file = -1;
    std::optional<std::size_t> m_size;
    bool m_hasWriter = false; ///< somebody has opened the pipe to write
};

} // namespace memory_host
