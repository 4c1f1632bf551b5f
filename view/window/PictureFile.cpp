#include "PictureFile.h"

#include "ColourKey.h"
#include "scene/ShownScales.h"

#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

#include <charconv>
#include <exception>
#include <new>
#include <utility>

namespace view {

namespace {

std::optional<int> sideOf(std::string_view text) {
    int side = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || end != text.data() + text.size() || side < 1 || side > largestSide)
        return {};
    return side;
}

std::string cannot(const QString& path, const QString& why) {
    return (path + ": the picture cannot be written: " + why).toStdString();
}

/// Nobody else has the image then: it can be painted on as it is.
QImage imageOf(const Order& order, const std::stop_token& stop) {
    Drawing drawing;
    std::optional<Drawn> drawn = drawing.draw(order, stop);
    return drawn ? std::move(drawn->image) : QImage();
}

} // namespace

std::optional<QSize> sizeOf(std::string_view text) {
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return {};
    const std::optional<int> width = sideOf(text.substr(0, cross));
    const std::optional<int> height = sideOf(text.substr(cross + 1));
    if (!width || !height || qint64(*width) * *height > largestArea)
        return {};
    return QSize(*width, *height);
}

std::optional<PictureRequest> pictureRequest(const std::string& text) {
    const std::size_t blank = text.rfind(' ');
    if (blank == std::string::npos || blank == 0)
        return {};
    const std::optional<QSize> size = sizeOf(std::string_view(text).substr(blank + 1));
    if (!size)
        return {};
    return PictureRequest{QFile::decodeName(text.substr(0, blank).c_str()), *size};
}

std::string refusalToReplace(const QString& path) {
    static const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
    if (!QFileInfo(path).isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return cannot(path, file.errorString());
    if (file.size() == 0 || file.read(signature.size()) == signature)
        return {};
    return cannot(path, QStringLiteral("the file that is there is no PNG picture, and is kept"));
}

std::string writePicture(const Order& order, const QString& path, const std::stop_token& stop) {
    // The file takes the place of what has its name: of a device or a pipe it would be the end.
    if (const QFileInfo place(path); place.exists() && !place.isFile())
        return cannot(path, QStringLiteral("it is no regular file"));
    // Opened first: where nothing can be written, nothing needs to be drawn.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return cannot(path, file.errorString());
    try {
        QImage image = imageOf(order, stop);
        if (image.isNull())
            return cannot(path, stop.stop_requested() ? QStringLiteral("it was cancelled")
                                                      : QStringLiteral("nothing was drawn"));
        paintKeys(image, shownScales(*order.snapshot.contents, *order.snapshot.marks),
                  double(order.lineScale), order.look.background);
        QImageWriter writer(&file, "PNG");
        if (!writer.write(image))
            return cannot(path, writer.errorString());
    } catch (const std::bad_alloc&) {
        return cannot(path, QStringLiteral("there is not enough memory"));
    } catch (const std::exception& failure) {
        return cannot(path, QString::fromLocal8Bit(failure.what()));
    }
    if (stop.stop_requested())
        return cannot(path, QStringLiteral("it was cancelled"));
    return file.commit() ? std::string() : cannot(path, file.errorString());
}

} // namespace view
