#include "Gzip.h"

#include <algorithm>
#include <array>
#include <new>

#include <zlib.h>

namespace memory_host {

namespace {

struct Deflater {
    explicit Deflater(Packing packing) {
        constexpr int gzipFormat = 15 + 16;
        constexpr int usualMemory = 8;
        const int level = packing == Packing::Fast ? Z_BEST_SPEED : Z_DEFAULT_COMPRESSION;
        if (deflateInit2(&stream, level, Z_DEFLATED, gzipFormat, usualMemory, Z_DEFAULT_STRATEGY) !=
            Z_OK)
            throw std::bad_alloc();
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater() { deflateEnd(&stream); }
    z_stream stream{};
};

} // namespace

std::string gzipped(std::string_view bytes, const SaveReport& report, Packing packing) {
    constexpr std::size_t portion = std::size_t{1} << 20;
    Deflater deflater(packing);
    z_stream& stream = deflater.stream;
    std::string made;
    std::array<char, 1 << 16> buffer{};
    std::size_t taken = 0;
    int state = Z_OK;
    while (state != Z_STREAM_END) {
        if (stream.avail_in == 0 && taken != bytes.size()) {
            report.advance(static_cast<double>(taken) / static_cast<double>(bytes.size()));
            const std::size_t count = std::min(portion, bytes.size() - taken);
            // zlib takes what it reads as not constant, and changes none of it.
            stream.next_in =
                reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data() + taken)); // NOLINT
            stream.avail_in = static_cast<uInt>(count);
            taken += count;
        }
        stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream.avail_out = static_cast<uInt>(buffer.size());
        state = deflate(&stream, taken == bytes.size() ? Z_FINISH : Z_NO_FLUSH);
        made.append(buffer.data(), buffer.size() - stream.avail_out);
    }
    return made;
}

} // namespace memory_host
