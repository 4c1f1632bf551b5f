#include "Hybrid36.h"

#include <string_view>

namespace memory_host {

std::string hybrid36(std::int64_t value, std::size_t width) {
    std::string text = std::to_string(value);
    if (text.size() <= width)
        return text.insert(0, width - text.size(), ' ');
    std::int64_t block = 1; // how many numbers share a first letter
    std::int64_t decimal = 10;
    for (std::size_t i = 1; i != width; ++i) {
        block *= 36;
        decimal *= 10;
    }
    constexpr std::int64_t letters = 26;
    value -= decimal;
    if (value < 0 || value >= 2 * letters * block)
        return {};
    const bool isLower = value >= letters * block;
    value = value % (letters * block) + 10 * block;
    const std::string_view digits =
        isLower ? "0123456789abcdefghijklmnopqrstuvwxyz" : "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    text.assign(width, '0');
    for (std::size_t at = width; at != 0; value /= 36)
        text[--at] = digits[static_cast<std::size_t>(value % 36)];
    return text;
}

} // namespace memory_host
