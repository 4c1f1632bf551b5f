// Where the bytes of a file come from: a regular file, or a pipe that is read to its end.
#pragma once

#include "FileReport.h"
#include "FileStamp.h"

#include <cstdint>
#include <optional>
#include <stop_token>

namespace memory_host {

/// The accepted sizes, for a refusal.
std::string acceptedSizes();

class FileSource {
public:
    /// Opens the report's file. Refuses a file that is missing, unreadable, empty, too large, or
    /// neither a regular file nor a pipe.
    FileSource(const FileReport& report, std::stop_token stop);
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource();

    /// Reads up to `count` bytes, and fewer only at the end. Refuses the file when reading fails,
    /// is stopped, or when nobody writes into a pipe.
    std::size_t read(char* to, std::size_t count);
    /// The size of a regular file.
    std::optional<std::size_t> size() const { return m_size; }
    /// The last four bytes of a regular file as a little-endian number.
    std::optional<std::uint32_t> lastWord() const;

    /// The state of a regular file when it was opened.
    const FileStamp& stamp() const { return m_stamp; }

private:
    std::size_t readSome(char* to, std::size_t count);

    const FileReport& m_report;
    std::stop_token m_stop;
    int m_file = -1;
    std::optional<std::size_t> m_size;
    FileStamp m_stamp;
    bool m_hasWriter = false; ///< some process has opened the pipe for writing
};

} // namespace memory_host
