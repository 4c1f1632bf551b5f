#include "SourceText.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <system_error>
#include <utility>

#include <zlib.h>

namespace memory_host {

namespace {

// Between two looks at whether to stop.
constexpr std::size_t portion = std::size_t{1} << 20;

Bytef* bytesAt(char* data) {
    return reinterpret_cast<Bytef*>(data);
}

// zlib takes what it reads as not constant, and changes none of it.
Bytef* bytesAt(const char* data) {
    return reinterpret_cast<Bytef*>(const_cast<char*>(data)); // NOLINT
}

struct Deflater {
    Deflater() {
        if (deflateInit(&stream, Z_BEST_SPEED) != Z_OK)
            throw std::bad_alloc();
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater() { deflateEnd(&stream); }
    z_stream stream{};
};

struct Inflater {
    Inflater() {
        constexpr int zlibOrGzip = 15 + 32;
        if (inflateInit2(&stream, zlibOrGzip) != Z_OK)
            throw std::bad_alloc();
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&stream); }
    z_stream stream{};
};

// Packs a text; empty if it is stopped. The memory is the heap's own, which never throws in the
// middle of what others do.
Bytes packed(std::string_view text, const std::stop_token& stop) {
    Deflater deflater;
    z_stream& stream = deflater.stream;
    Bytes made;
    std::size_t size = 0;
    for (std::size_t taken = 0;;) {
        if (stop.stop_requested())
            return {};
        const std::size_t count = std::min(portion, text.size() - taken);
        stream.next_in = bytesAt(text.data() + taken);
        stream.avail_in = static_cast<uInt>(count);
        taken += count;
        int state = Z_OK;
        do {
            if (made.size() - size < portion / 4)
                made.resize(std::max(text.size() / 4, made.size() + made.size() / 4) + portion);
            const std::size_t room = std::min(portion, made.size() - size);
            stream.next_out = bytesAt(made.data() + size);
            stream.avail_out = static_cast<uInt>(room);
            state = deflate(&stream, taken == text.size() ? Z_FINISH : Z_NO_FLUSH);
            size += room - stream.avail_out;
        } while (stream.avail_out == 0);
        if (state == Z_STREAM_END)
            break;
    }
    made.resize(size);
    return made;
}

// Unpacks `size` bytes of one or several streams, which were unpacked before.
Bytes unpacked(std::string_view from, std::size_t size) {
    Bytes text;
    text.resize(size);
    Inflater inflater;
    z_stream& stream = inflater.stream;
    std::size_t taken = 0;
    std::size_t made = 0;
    while (made != size) {
        const std::size_t in = std::min(portion, from.size() - taken);
        const std::size_t out = std::min(portion, size - made);
        stream.next_in = bytesAt(from.data() + taken);
        stream.avail_in = static_cast<uInt>(in);
        stream.next_out = bytesAt(text.data() + made);
        stream.avail_out = static_cast<uInt>(out);
        const int state = inflate(&stream, Z_NO_FLUSH);
        taken += in - stream.avail_in;
        made += out - stream.avail_out;
        if (state == Z_STREAM_END)
            inflateReset(&stream);
        else if (state != Z_OK)
            throw std::bad_alloc(); // All else was seen when the file was read.
    }
    return text;
}

} // namespace

SourceText::SourceText(std::shared_ptr<const Bytes> text, const FileFormat& format)
    : m_format(&format), m_size(text->size()), m_isGzipped(false), m_text(std::move(text)) {
    try {
        m_packer = std::jthread([this](const std::stop_token& stop) { pack(stop); });
    } catch (const std::system_error&) {
        // Without a thread the text stays as it is.
    }
}

SourceText::SourceText(Bytes gzipped, std::size_t size, const FileFormat& format)
    : m_format(&format), m_size(size), m_isGzipped(true), m_packed(std::move(gzipped)) {}

void SourceText::pack(const std::stop_token& stop) try {
    Bytes made = packed(m_text->text(), stop);
    if (stop.stop_requested())
        return;
    std::shared_ptr<const Bytes> text; // Freed after the lock.
    const std::lock_guard lock(m_mutex);
    m_packed = std::move(made);
    text.swap(m_text);
} catch (const std::bad_alloc&) {
    // Short of memory, the text stays as it is.
}

std::shared_ptr<const Bytes> SourceText::unpack() const {
    const std::lock_guard lock(m_mutex);
    if (m_text)
        return m_text;
    std::shared_ptr<const Bytes> text = m_unpacked.lock();
    if (!text) {
        text = std::make_shared<const Bytes>(unpacked(m_packed.text(), m_size));
        m_unpacked = text;
    }
    return text;
}

std::size_t SourceText::memory() const {
    const std::lock_guard lock(m_mutex);
    return m_text ? m_text->size() : m_packed.size();
}

} // namespace memory_host
