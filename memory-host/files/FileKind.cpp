#include "FileKind.h"

#include "Fields.h"
#include "Readers.h"

#include <array>

namespace memory_host {

namespace {

using namespace std::string_view_literals;

struct Mark {
    std::string_view bytes;
    const char* what;
};

constexpr std::array<Mark, 8> packers = {
    {{"\x1f\x8b"sv, "is compressed with gzip twice"},
     {"\x1f\x9d"sv, "is compressed with compress (.Z)"},
     {"\x1f\xa0"sv, "is compressed with compress (.Z)"},
     {"BZh"sv, "is compressed with bzip2 (.bz2)"},
     {"\xfd"
      "7zXZ\0"sv,
      "is compressed with xz (.xz)"},
     {"PK\x03\x04"sv, "is a ZIP archive (.zip)"},
     {"7z\xbc\xaf\x27\x1c"sv, "is a 7-Zip archive (.7z)"},
     {"\x28\xb5\x2f\xfd"sv, "is compressed with zstd (.zst)"}}};

// Offset of the mark, after the first file's name and attributes.
constexpr std::size_t tarMarkAt = 257;

// UTF-32 before UTF-16, because its byte order mark begins with that of UTF-16.
constexpr std::array<Mark, 4> encodings = {{{"\xff\xfe\0\0"sv, "is text in UTF-32"},
                                            {"\0\0\xfe\xff"sv, "is text in UTF-32"},
                                            {"\xff\xfe"sv, "is text in UTF-16"},
                                            {"\xfe\xff"sv, "is text in UTF-16"}}};

// ASCII letters with a zero byte after or before each.
bool isUnmarkedUtf16(std::string_view bytes) {
    constexpr std::size_t letters = 4;
    if (bytes.size() < 2 * letters)
        return false;
    const auto isText = [bytes](std::size_t first) {
        for (std::size_t i = 0; i != 2 * letters; ++i) {
            const char c = bytes[i];
            const bool isLetterHere = i % 2 == first;
            if (isLetterHere ? c < '\t' || c > '~' : c != '\0')
                return false;
        }
        return true;
    };
    return isText(0) || isText(1);
}

const FileFormat* recognisedAs(FileFormat::Form form, FileSample sample, const FileFormat* named) {
    const auto formats = fileFormats();
    for (auto format = formats.rbegin(); format != formats.rend(); ++format) {
        sample.isNamedSo = *format == named;
        if ((*format)->form == form && (*format)->recognises(sample))
            return *format;
    }
    return nullptr;
}

} // namespace

ForeignKind foreignKind(std::string_view bytes) {
    for (const Mark& mark : packers)
        if (bytes.starts_with(mark.bytes))
            return {std::string(mark.what) + ": unpack it first", acceptedFiles()};
    if (bytes.size() > tarMarkAt && bytes.substr(tarMarkAt).starts_with("ustar"))
        return {"is a tar archive: unpack it first", acceptedFiles()};
    const char* encoding = isUnmarkedUtf16(bytes) ? "is text in UTF-16" : nullptr;
    for (const Mark& mark : encodings)
        if (!encoding && bytes.starts_with(mark.bytes))
            encoding = mark.what;
    return encoding ? ForeignKind{encoding, "accepted is text in ASCII, Latin-1 or UTF-8"}
                    : ForeignKind{};
}

const FileFormat* takeEnding(std::string_view& name) {
    for (const FileFormat* format : fileFormats()) {
        for (const std::string_view ending : format->endings) {
            if (name.size() > ending.size() && endsWith(name, ending)) {
                name.remove_suffix(ending.size());
                return format;
            }
        }
    }
    return nullptr;
}

const FileFormat* binaryFormatOf(std::string_view bytes) {
    return recognisedAs(FileFormat::Form::Binary, {bytes, true, false}, nullptr);
}

const FileFormat& textFormatOf(std::string_view text, const FileFormat* named) {
    const FileFormat* format = recognisedAs(FileFormat::Form::Text, {text, true, false}, named);
    return format ? *format : *fileFormats().front();
}

bool beginsLikeText(std::string_view beginning, const FileFormat* named) {
    return recognisedAs(FileFormat::Form::Text, {beginning, false, false}, named) != nullptr;
}

} // namespace memory_host
