#include "FileBytes.h"

#include "FileLimits.h"
#include "FileSource.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include <zlib.h>

namespace memory_host {

namespace {

constexpr std::size_t megabyte = std::size_t{1} << 20;

bool isGzipped(std::string_view bytes) {
    return bytes.size() >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b';
}

struct Inflater {
    Inflater() {
        constexpr int gzipOnly = 15 + 16;
        if (inflateInit2(&stream, gzipOnly) != Z_OK)
            throw std::bad_alloc();
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&stream); }
    z_stream stream{};
};

// Resizes `bytes`, at most to the limit and one byte, which shows that the limit is exceeded.
void makeRoom(Bytes& bytes, std::size_t size, const FileReport& report) {
    const std::size_t wanted = std::min(size, fileLimits().bytes + 1);
    requireMemory(report, wanted - std::min(wanted, bytes.size()));
    bytes.resize(wanted);
}

Bytes readStored(FileSource& source, Bytes bytes, const FileReport& report,
                 const LookAtBeginning& look) {
    std::size_t done = bytes.size();
    if (done == megabyte)
        look(bytes.text());
    else if (!source.size())
        return bytes;
    while (done == bytes.size() && done != source.size()) {
        makeRoom(bytes, source.size().value_or(2 * done), report);
        done += source.read(bytes.data() + done, bytes.size() - done);
        if (done > fileLimits().bytes)
            report.refuse(0, "is too large", acceptedSizes());
    }
    if (source.size() && done < *source.size())
        report.refuse(0, "became shorter while it was read", acceptedFiles());
    bytes.resize(done);
    return bytes;
}

// Unpacks a file as it is read.
class Unpacking {
public:
    Unpacking(FileSource& source, Bytes packed, const FileReport& report)
        : m_source(source), m_packed(std::move(packed)), m_report(report) {}

    Bytes run(const LookAtBeginning& look);
    /// All bytes of the file.
    Bytes takePacked();

private:
    std::size_t guessSize() const;
    bool refill(std::size_t wanted);
    bool step(Bytes& bytes);

    FileSource& m_source;
    Bytes m_packed; ///< as much of the file as is read
    const FileReport& m_report;
    Inflater m_inflater;
    std::size_t m_taken = 0; ///< of the packed bytes
    std::size_t m_made = 0;
};

// The size at the end of a gzipped file is only a first guess: it is modulo 4 GiB, of the last
// member alone, and unchecked.
std::size_t Unpacking::guessSize() const {
    constexpr std::size_t bestRatio = 1032;
    const std::optional<std::uint32_t> stated = m_source.lastWord();
    return stated ? std::min(std::size_t{*stated}, *m_source.size() * bestRatio) + 64 : 0;
}

// Provides at least `wanted` packed bytes, unless the file ends before.
bool Unpacking::refill(std::size_t wanted) {
    if (m_packed.size() - m_taken >= wanted)
        return true;
    const std::size_t before = m_packed.size();
    makeRoom(m_packed, before + megabyte, m_report);
    m_packed.resize(before + m_source.read(m_packed.data() + before, m_packed.size() - before));
    return m_packed.size() - m_taken >= wanted;
}

// What follows the gzipped data is no part of the text, but of the file.
Bytes Unpacking::takePacked() {
    do {
        m_taken = m_packed.size();
    } while (refill(1));
    return std::move(m_packed);
}

// Unpacks as much as is read and fits; returns false at the end.
bool Unpacking::step(Bytes& bytes) {
    constexpr std::size_t portion = std::size_t{1} << 30;
    const std::string accepted = "accepted are whole .gz files";
    const bool isMore = refill(1);
    z_stream& stream = m_inflater.stream;
    stream.next_in = reinterpret_cast<Bytef*>(m_packed.data() + m_taken);
    stream.avail_in = static_cast<uInt>(m_packed.size() - m_taken);
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data() + m_made);
    stream.avail_out = static_cast<uInt>(std::min(bytes.size() - m_made, portion));
    const uInt in = stream.avail_in;
    const uInt out = stream.avail_out;
    const int state = inflate(&stream, Z_NO_FLUSH);
    m_taken += in - stream.avail_in;
    m_made += out - stream.avail_out;
    if (state == Z_STREAM_END) {
        // A gzipped file may have several members; anything else after the last is padding.
        if (!refill(2) || !isGzipped(m_packed.text().substr(m_taken)))
            return false;
        inflateReset(&stream);
    } else if (state == Z_MEM_ERROR) {
        throw std::bad_alloc();
    } else if (state != Z_OK && state != Z_BUF_ERROR) {
        m_report.refuse(0,
                        "the gzipped data are damaged: " +
                            std::string(stream.msg ? stream.msg : "not a gzip stream"),
                        accepted);
    } else if (!isMore && stream.avail_out != 0) {
        m_report.refuse(0, "the gzipped data end too early: the file is cut", accepted);
    }
    return true;
}

Bytes Unpacking::run(const LookAtBeginning& look) {
    Bytes bytes;
    bytes.resize(megabyte);
    bool goesOn = true;
    while (goesOn && m_made != bytes.size())
        goesOn = step(bytes);
    if (m_made == megabyte)
        look(bytes.text());
    while (goesOn) {
        if (m_made == bytes.size()) {
            const bool isFirst = m_made == megabyte;
            makeRoom(bytes, std::max(2 * m_made, isFirst ? guessSize() : 0), m_report);
        }
        goesOn = step(bytes);
        if (m_made > fileLimits().bytes)
            m_report.refuse(0, "is too large when it is unpacked", acceptedSizes());
    }
    if (m_made == 0)
        m_report.refuse(0, "is empty when it is unpacked", acceptedFiles());
    bytes.resize(m_made);
    return bytes;
}

} // namespace

Bytes::Bytes(std::shared_ptr<const Bytes> others)
    : m_data(const_cast<char*>(others->data()), Free{true}), // NOLINT: see the promise
      m_size(others->size()), m_others(std::move(others)) {}

void Bytes::resize(std::size_t size) {
    void* const block = std::realloc(m_others ? nullptr : m_data.get(), // NOLINT
                                     std::max<std::size_t>(size, 1));
    if (!block)
        throw std::bad_alloc();
    if (m_others) {
        std::memcpy(block, m_data.get(), std::min(size, m_size));
        m_others.reset();
        m_data.get_deleter().isOthers = false;
    }
    (void)m_data.release();
    m_data.reset(static_cast<char*>(block));
    m_size = size;
}

void Bytes::own() {
    if (m_others)
        resize(m_size);
}

void Bytes::removeFront(std::size_t count) {
    own();
    std::memmove(data(), data() + count, m_size - count);
    resize(m_size - count);
}

void Bytes::unifyLineEnds() {
    own();
    char* const end = data() + m_size;
    for (char* at = data();
         (at = static_cast<char*>(std::memchr(at, '\r', static_cast<std::size_t>(end - at)))); ++at)
        if (at + 1 == end || at[1] != '\n')
            *at = '\n';
}

bool Bytes::haveLoneReturns() const {
    const std::string_view all = text();
    for (std::size_t at = 0; (at = all.find('\r', at)) != std::string_view::npos; ++at)
        if (at + 1 == all.size() || all[at + 1] != '\n')
            return true;
    return false;
}

ReadBytes readFile(const FileReport& report, const LookAtBeginning& look, std::stop_token stop) {
    FileSource source(report, std::move(stop));
    Bytes beginning;
    beginning.resize(std::min(megabyte, source.size().value_or(megabyte)));
    beginning.resize(source.read(beginning.data(), beginning.size()));
    if (beginning.size() == 0)
        report.refuse(0, "is empty", acceptedFiles());
    ReadBytes read;
    read.stamp = source.stamp();
    if (isGzipped(beginning.text())) {
        Unpacking unpacking(source, std::move(beginning), report);
        read.text = unpacking.run(look);
        read.gzipped = unpacking.takePacked();
    } else {
        read.text = readStored(source, std::move(beginning), report, look);
    }
    return read;
}

} // namespace memory_host
