#include "TextFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <charconv>

namespace memory_host {

namespace {

constexpr qint64 largestTextFile = 1 << 20;

/// The length of the UTF-8 sequence that `bytes` begins with; 0 when there is none.
std::size_t sequenceLength(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xc0 ? 0
                               : lead < 0xe0 ? 2
                               : lead < 0xf0 ? 3
                                             : 4;
    if (length == 0 || length > bytes.size())
        return 0;
    const QUtf8StringView sequence(bytes.data(), static_cast<qsizetype>(length));
    return sequence.isValidUtf8() ? length : 0;
}

} // namespace

QString decodeText(std::string_view bytes) {
    const QUtf8StringView all(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (all.isValidUtf8())
        return all.toString();
    QString text;
    while (!bytes.empty()) {
        const std::size_t length = sequenceLength(bytes);
        if (length > 0)
            text += QString::fromUtf8(bytes.data(), static_cast<qsizetype>(length));
        else
            text += QChar(static_cast<unsigned char>(bytes.front()));
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

std::string quoted(std::string_view bytes) {
    constexpr std::size_t longest = 60;
    std::string text(bytes.substr(0, longest));
    if (bytes.size() > longest)
        text += "...";
    return "'" + text + "'";
}

bool parseNumber(std::string_view text, double& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

TextFile readTextFile(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return {{}, "there is no such file"};
    if (!info.isFile())
        return {{}, "it is not a file"};
    if (info.size() > largestTextFile)
        return {{}, "it is larger than 1 MB"};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, "it cannot be read: " + file.errorString().toStdString()};
    TextFile result{file.readAll(), {}};
    if (file.error() != QFileDevice::NoError)
        return {{}, "it cannot be read: " + file.errorString().toStdString()};
    if (result.bytes.startsWith("\xef\xbb\xbf"))
        result.bytes.remove(0, 3);
    return result;
}

} // namespace memory_host
