#include "Formats.h"

#include <algorithm>
#include <array>

namespace memory_host {

// Refers to a format that another source file defines, and declares it.
#define FORMAT(format)                                                                             \
    [] {                                                                                           \
        extern const FileFormat format;                                                            \
        return &format;                                                                            \
    }()

// The last format that recognises a file reads it. The first one is the fallback for text that none
// recognises, and its message says what is missing.
// clang-format off
static const std::array formats = {
    FORMAT(pdbFormat),
    FORMAT(pqrFormat),
    FORMAT(mmcifFormat),
    FORMAT(ccp4Format),
    FORMAT(openDxFormat),
};
// clang-format on

namespace {

// The formats that hold structures, or maps, as "A", "A and B", "A, B and C". `addWord` gets each
// format, and whether it is the last one.
template <class AddWord>
void enumerate(std::string& text, FileFormat::Holds holds, std::string_view conjunction,
               const AddWord& addWord) {
    auto count = std::ranges::count(formats, holds, [](auto* format) { return format->holds; });
    std::string_view separator;
    for (const FileFormat* format : formats) {
        if (format->holds != holds)
            continue;
        text.append(count == 1 && !separator.empty() ? conjunction : separator);
        addWord(*format, --count == 0);
        separator = ", ";
    }
}

// "PDB (.pdb, .ent), PQR (.pqr) and mmCIF files (.cif, .mmcif)"
void addWithEndings(std::string& text, FileFormat::Holds holds, std::string_view plural) {
    enumerate(text, holds, " and ", [&](const FileFormat& format, bool isLast) {
        text.append(format.name);
        if (isLast)
            text.append(plural);
        std::string_view separator = " (";
        for (const std::string_view ending : format.endings) {
            text.append(separator).append(ending);
            separator = ", ";
        }
        text += ')';
    });
}

} // namespace

std::span<const FileFormat* const> fileFormats() {
    return formats;
}

std::string formatNames(FileFormat::Holds holds) {
    std::string text;
    enumerate(text, holds, " or ",
              [&](const FileFormat& format, bool) { text.append(format.name); });
    return text;
}

std::string acceptedFiles() {
    std::string text;
    text.reserve(256); // Enough, so that only one allocation may fail when memory is short.
    text = "accepted are ";
    addWithEndings(text, FileFormat::Holds::Structure, " files");
    text += ", and ";
    addWithEndings(text, FileFormat::Holds::Map, " maps");
    text += ", each also gzipped (.gz)";
    return text;
}

} // namespace memory_host
