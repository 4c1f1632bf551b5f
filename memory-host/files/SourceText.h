// The text of a file that entries were read from, kept so that what is not edited can be saved as
// it was written.
#pragma once

#include "FileBytes.h"
#include "Formats.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace memory_host {

/// All bytes of a file's text. Shared by the entries of the file; may be used on any thread.
class SourceText {
public:
    /// Takes the text, and packs it on a thread of its own. Until that is done, and if memory is
    /// short, the text stays as it is.
    SourceText(std::shared_ptr<const Bytes> text, const FileFormat& format);
    /// The same for a gzipped file, whose own bytes are kept.
    SourceText(Bytes gzipped, std::size_t size, const FileFormat& format);
    SourceText(const SourceText&) = delete;
    SourceText& operator=(const SourceText&) = delete;
    ~SourceText();

    /// The format that it was read in.
    const FileFormat& format() const { return *m_format; }
    /// The text, byte for byte, with its own line ends. Throws std::bad_alloc.
    std::shared_ptr<const Bytes> unpack() const;
    /// The bytes of a gzipped file; empty for others.
    std::string_view gzipped() const { return m_gzipped.text(); }
    /// The memory that it takes, in bytes.
    std::size_t memory() const;

private:
    struct Pieces;

    const FileFormat* m_format;
    std::size_t m_size; ///< unpacked
    Bytes m_gzipped;
    std::unique_ptr<Pieces> m_pieces;
};

} // namespace memory_host
