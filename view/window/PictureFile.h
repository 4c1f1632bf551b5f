// Pictures as files.
#pragma once

#include "scene/Drawing.h"

#include <QSize>
#include <QString>

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace view {

/// The largest picture in pixels along a side, and in all.
inline constexpr int largestSide = 32'768;
inline constexpr qint64 largestArea = 100'000'000;

/// A size as "1600x1200"; nothing if it is none, or too large.
std::optional<QSize> sizeOf(std::string_view text);

/// Draws a picture of the whole quality and writes it to a file in the format PNG. Returns what
/// went wrong, as one line; empty when nothing did. An existing file stays unless the new one is
/// complete.
std::string writePicture(const Order& order, const QString& path, const std::stop_token& stop = {});

/// Why a picture must not take the place of the file at `path` where nobody asks the user: it holds
/// something else, as the structure that was named by mistake. Empty where there is no such file.
std::string refusalToReplace(const QString& path);

/// "PATH WIDTHxHEIGHT", as a command's argument has it; the path may hold blanks.
struct PictureRequest {
    QString path;
    QSize size;
};
/// Nothing if the text is no such request.
std::optional<PictureRequest> pictureRequest(const std::string& text);

} // namespace view
