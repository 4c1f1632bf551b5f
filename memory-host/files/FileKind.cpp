#include "FileKind.h"

#include "FieldText.h"
#include "FileReport.h"

#include <algorithm>
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

// Behind the name of the first file and what else is known of it.
constexpr std::size_t tarMarkAt = 257;

// UTF-32 before UTF-16, whose mark its own begins with.
constexpr std::array<Mark, 4> encodings = {{{"\xff\xfe\0\0"sv, "is text in UTF-32"},
                                            {"\0\0\xfe\xff"sv, "is text in UTF-32"},
                                            {"\xff\xfe"sv, "is text in UTF-16"},
                                            {"\xfe\xff"sv, "is text in UTF-16"}}};

// Letters of ASCII with a byte 0 behind or before each.
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

bool hasPdbRecord(std::string_view text) {
    constexpr auto records = std::to_array<std::string_view>(
        {"ATOM ",  "HETATM", "HEADER", "OBSLTE", "TITLE ", "SPLIT ", "CAVEAT", "COMPND", "SOURCE",
         "KEYWDS", "EXPDTA", "NUMMDL", "MDLTYP", "AUTHOR", "REVDAT", "SPRSDE", "JRNL  ", "REMARK",
         "DBREF",  "SEQADV", "SEQRES", "MODRES", "HET   ", "HETNAM", "HETSYN", "FORMUL", "HELIX ",
         "SHEET ", "TURN  ", "SSBOND", "LINK  ", "LINKR ", "CISPEP", "SITE  ", "CRYST1", "ORIGX",
         "SCALE",  "MTRIX",  "MODEL ", "TER",    "ENDMDL", "CONECT", "USER",   "FTNOTE"});
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        if (std::ranges::any_of(
                records, [line](std::string_view record) { return startsWith(line, record); }))
            return true;
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return false;
}

} // namespace memory_host
