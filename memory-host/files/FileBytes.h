// The content of a file in memory, unpacked if it is gzipped.
#pragma once

#include "FileReport.h"
#include "FileStamp.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <stop_token>

namespace memory_host {

/// A block of bytes that grows in place where it can.
class Bytes {
public:
    Bytes() = default;
    /// The bytes of others, which live as long as this does. They are copied before a change; what
    /// data() gives is not to be written to.
    explicit Bytes(std::shared_ptr<const Bytes> others);

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
    /// Whether unifyLineEnds() would change anything.
    bool haveLoneReturns() const;

private:
    struct Free {
        bool isOthers; ///< false in a new one
        void operator()(char* block) const {
            if (!isOthers)
                std::free(block); // NOLINT: it came from realloc
        }
    };
    void own(); ///< makes a copy of others' bytes

    std::unique_ptr<char, Free> m_data;
    std::size_t m_size = 0;
    std::shared_ptr<const Bytes> m_others;
};

/// Checks the first megabyte of a longer file, unpacked, before the rest is read; throws to refuse
/// the file.
using LookAtBeginning = std::function<void(std::string_view beginning)>;

/// What a file holds, and its state when it was opened.
struct ReadBytes {
    Bytes text;    ///< unpacked
    Bytes gzipped; ///< all bytes of a gzipped file as they are; else empty
    FileStamp stamp;
};

/// Reads a file, or a pipe to its end. Refuses a file that is missing, neither of the two,
/// unreadable, empty, too large or larger than the free memory, and gzipped data that are damaged
/// or truncated.
ReadBytes readFile(const FileReport& report, const LookAtBeginning& look, std::stop_token stop);

} // namespace memory_host
