// The text of a file that entries were read from, kept so that what is not edited can be saved as
// it was written.
#pragma once

#include "FileBytes.h"
#include "Formats.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

namespace memory_host {

/// All bytes of a file's text. Shared by the entries of the file; for use on any thread.
class SourceText {
public:
    /// Takes the text, and packs it on a thread of its own. Until that is done, and if memory is
    /// short, it stays as it is.
    SourceText(std::shared_ptr<const Bytes> text, const FileFormat& format);
    /// The same for a gzipped file, whose own bytes are kept; `size` is that of the text.
    SourceText(Bytes gzipped, std::size_t size, const FileFormat& format);
    SourceText(const SourceText&) = delete;
    SourceText& operator=(const SourceText&) = delete;

    /// The format that it was read in.
    const FileFormat& format() const { return *m_format; }
    /// The text, byte for byte, with its own line ends; the same as long as someone has it. Throws
    /// std::bad_alloc.
    std::shared_ptr<const Bytes> unpack() const;
    /// The bytes of a gzipped file; empty for others.
    std::string_view gzipped() const { return m_isGzipped ? m_packed.text() : std::string_view(); }
    /// The memory that the text takes now, in bytes.
    std::size_t memory() const;

private:
    void pack(const std::stop_token& stop);

    const FileFormat* m_format;
    std::size_t m_size;
    bool m_isGzipped;
    mutable std::mutex m_mutex;          ///< for what follows
    std::shared_ptr<const Bytes> m_text; ///< until it is packed
    mutable std::weak_ptr<const Bytes> m_unpacked;
    Bytes m_packed;
    std::jthread m_packer; ///< last, so that it ends first
};

} // namespace memory_host
