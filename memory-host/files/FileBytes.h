// The content of a file in memory, unpacked if it is gzipped.
#pragma once

#include "FileReport.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <stop_token>

namespace memory_host {

/// A block of bytes that grows in place where it can.
class Bytes {
public:
    char* data() { return m_data.get(); }
    const char* data() const { return m_data.get(); }
    std::size_t size() const { return m_size; }
    std::string_view text() const { return {data(), m_size}; }
    /// Changes the size; new bytes are uninitialized. Throws std::bad_alloc.
    void resize(std::size_t size);
    void removeFront(std::size_t count);
    /// Replaces each lone carriage return by a newline, so that lines end with "\n" or "\r\n", also
    /// in a file with the line ends of several systems.
    void unifyLineEnds();

private:
    struct Free {
        void operator()(char* block) const { std::free(block); } // NOLINT: it came from realloc
    };
    std::unique_ptr<char, Free> m_data;
    std::size_t m_size = 0;
};

/// Checks the first megabyte of a longer file, unpacked, before the rest is read; throws to refuse
/// the file.
using LookAtBeginning = std::function<void(std::string_view beginning)>;

/// Reads a file, or a pipe to its end. Refuses a file that is missing, neither of the two,
/// unreadable, empty, too large or larger than the free memory, and gzipped data that are damaged
/// or truncated.
Bytes readFile(const FileReport& report, const LookAtBeginning& look, std::stop_token stop);

} // namespace memory_host
