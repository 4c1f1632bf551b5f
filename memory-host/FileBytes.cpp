#include "FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace memory_host {

namespace {

const std::string acceptedSize = "accepted are files of up to 4 GiB, also when they are unpacked";

struct Descriptor {
    explicit Descriptor(int opened) : fd(opened) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (fd >= 0)
            ::close(fd);
    }
    int fd;
};

std::string systemText(int error) {
    return std::generic_category().message(error);
}

Bytes readStored(const FileReport& report) {
    // Without O_NONBLOCK a pipe that nobody writes to would never open.
    const Descriptor file(::open(report.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat state {};
    if (file.fd < 0 || ::fstat(file.fd, &state) != 0)
        report.refuse(0, "cannot be read: " + systemText(errno), acceptedFiles());
    if (S_ISDIR(state.st_mode))
        report.refuse(0, "is a folder", acceptedFiles());
    if (!S_ISREG(state.st_mode))
        report.refuse(0, "is no regular file", acceptedFiles());
    if (state.st_size == 0)
        report.refuse(0, "is empty", acceptedFiles());
    const auto size = static_cast<std::size_t>(state.st_size);
    if (size > largestFile)
        report.refuse(0, "is too large: " + std::to_string(size) + " bytes", acceptedSize);

    Bytes bytes;
    bytes.resize(size);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::read(file.fd, bytes.data() + done, size - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            report.refuse(0, "cannot be read: " + systemText(errno), acceptedFiles());
        if (got == 0)
            report.refuse(0, "became shorter while it was read", acceptedFiles());
        done += static_cast<std::size_t>(got);
    }
    return bytes;
}

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

// The size that the end of a gzipped file states is a first guess: it is modulo 4 GiB, of the last
// part alone, and nobody checked it.
std::size_t guessUnpacked(std::string_view packed) {
    constexpr std::size_t bestRatio = 1032;
    std::uint32_t stated = 0;
    for (std::size_t i = 4; i != 0; --i)
        stated = stated << 8 | static_cast<unsigned char>(packed[packed.size() - 5 + i]);
    return std::min({std::size_t{stated} + 64, packed.size() * bestRatio + 64, largestFile + 1});
}

Bytes unpack(const Bytes& packed, const FileReport& report) {
    const std::string accepted = "accepted are whole .gz files";
    if (packed.size() < 18)
        report.refuse(0, "the gzipped data end too early: the file is cut", accepted);
    Inflater inflater;
    z_stream& stream = inflater.stream;
    Bytes bytes;
    bytes.resize(guessUnpacked(packed.text()));
    std::size_t taken = 0;
    std::size_t made = 0;
    constexpr std::size_t portion = std::size_t{1} << 30;
    for (;;) {
        if (made == bytes.size()) {
            if (made > largestFile)
                report.refuse(0, "is too large when it is unpacked", acceptedSize);
            bytes.resize(std::min(2 * made, largestFile + 1));
        }
        // The library only reads what next_in points to.
        stream.next_in =
            reinterpret_cast<Bytef*>(const_cast<char*>(packed.data() + taken)); // NOLINT
        stream.avail_in = static_cast<uInt>(std::min(packed.size() - taken, portion));
        stream.next_out = reinterpret_cast<Bytef*>(bytes.data() + made);
        stream.avail_out = static_cast<uInt>(std::min(bytes.size() - made, portion));
        const uInt in = stream.avail_in;
        const uInt out = stream.avail_out;
        const int state = inflate(&stream, Z_NO_FLUSH);
        taken += in - stream.avail_in;
        made += out - stream.avail_out;
        if (state == Z_STREAM_END) {
            // A gzipped file may have several parts; what else follows the last is padding.
            if (!isGzipped(packed.text().substr(taken)))
                break;
            inflateReset(&stream);
        } else if (state == Z_MEM_ERROR) {
            throw std::bad_alloc();
        } else if (state != Z_OK && state != Z_BUF_ERROR) {
            report.refuse(0,
                          "the gzipped data are damaged: " +
                              std::string(stream.msg ? stream.msg : "not a gzip stream"),
                          accepted);
        } else if (taken == packed.size() && stream.avail_out != 0) {
            report.refuse(0, "the gzipped data end too early: the file is cut", accepted);
        }
    }
    if (made == 0)
        report.refuse(0, "is empty when it is unpacked", acceptedFiles());
    if (made > largestFile)
        report.refuse(0, "is too large when it is unpacked", acceptedSize);
    bytes.resize(made);
    return bytes;
}

} // namespace

void Bytes::resize(std::size_t size) {
    void* const block = std::realloc(m_data.get(), std::max<std::size_t>(size, 1)); // NOLINT
    if (!block)
        throw std::bad_alloc();
    (void)m_data.release();
    m_data.reset(static_cast<char*>(block));
    m_size = size;
}

void Bytes::removeFront(std::size_t count) {
    std::memmove(data(), data() + count, m_size - count);
    resize(m_size - count);
}

void Bytes::unifyLineEnds() {
    char* const end = data() + m_size;
    for (char* at = data();
         (at = static_cast<char*>(std::memchr(at, '\r', static_cast<std::size_t>(end - at)))); ++at)
        if (at + 1 == end || at[1] != '\n')
            *at = '\n';
}

Bytes readFile(const FileReport& report) {
    Bytes stored = readStored(report);
    return isGzipped(stored.text()) ? unpack(stored, report) : std::move(stored);
}

} // namespace memory_host
