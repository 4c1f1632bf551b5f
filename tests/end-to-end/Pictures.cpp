#include "Pictures.h"

#include <cstdlib>

namespace end_to_end {

bool isEmpty(const QImage& part) {
    QImage background(part.size(), part.format());
    background.fill(part.pixelColor(0, 0));
    return part == background;
}

int count(const QImage& part, const IsColour& isColour) {
    int found = 0;
    for (int y = 0; y != part.height(); ++y)
        for (int x = 0; x != part.width(); ++x)
            found += isColour(part.pixelColor(x, y)) ? 1 : 0;
    return found;
}

std::optional<QPoint> findSquare(const QImage& part, int size, const IsColour& isColour) {
    for (int y = 0; y + size <= part.height(); y += size / 2)
        for (int x = 0; x + size <= part.width(); x += size / 2)
            if (count(part.copy(x, y, size, size), isColour) == size * size)
                return QPoint(x + size / 2, y + size / 2);
    return std::nullopt;
}

double difference(const QImage& one, const QImage& other) {
    if (one.isNull() || one.size() != other.size())
        return 255.0;
    const auto coarse = [](const QImage& image) {
        return image.scaled(image.size() / 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB32);
    };
    const QImage a = coarse(one);
    const QImage b = coarse(other);
    double sum = 0.0;
    for (int y = 0; y != a.height(); ++y)
        for (int x = 0; x != a.width(); ++x) {
            const QColor left = a.pixelColor(x, y);
            const QColor right = b.pixelColor(x, y);
            sum += std::abs(left.red() - right.red()) + std::abs(left.green() - right.green()) +
                   std::abs(left.blue() - right.blue());
        }
    return sum / (3.0 * a.width() * a.height());
}

} // namespace end_to_end
