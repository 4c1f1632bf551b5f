// The small text files that the host's services read, and bytes of unknown encoding as text.
#pragma once

#include "files/Fields.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <string>
#include <string_view>

namespace memory_host {

/// Bytes as text: UTF-8 where they are well-formed UTF-8, each other byte as Latin-1. The host's
/// own names are Latin-1, what users write into files is mostly UTF-8, and a log line holds both.
QString decodeText(std::string_view bytes);

/// A piece of a file as a message quotes it: in single quotes, and cut when it is long.
std::string quoted(std::string_view bytes);

/// Parses a number with a decimal point, whatever the locale; false when `text` is anything else.
bool parseNumber(std::string_view text, double& value);

struct TextFile {
    QByteArray bytes;    ///< without a UTF-8 byte order mark
    std::string problem; ///< why the file could not be read; empty when it was

    std::string_view text() const {
        return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
    }
};

/// Reads a whole file of at most one megabyte, which is far more than any of the host's text files.
TextFile readTextFile(const QString& path);

/// Calls `use(line, number)` for each line of `text`, numbered from 1 and without its end (\n or
/// \r\n), until `use` returns false.
template <class Use> void forEachLine(std::string_view text, Use use) {
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (!use(line, number))
            return;
    }
}

} // namespace memory_host
