// The fields of text files: case-insensitive comparison, trimming, parsing of numbers.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace memory_host {

// The letters and digits of ASCII, whatever the locale is.
inline bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
inline char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether `text` begins, or ends, with another one, ignoring the case.
inline bool startsWith(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), text.begin(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}
inline bool endsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() &&
           startsWith(text.substr(text.size() - ending.size()), ending);
}

/// `text` without the blanks and tabs around it.
inline std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

/// Removes the first line from a text, and returns it without its line end.
inline std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}
/// Removes and returns the first word of a line, and the blanks before it; empty if there is none.
inline std::string_view takeWord(std::string_view& line) {
    constexpr std::string_view blanks = " \t";
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    line.remove_prefix(word.size());
    return word;
}

/// Parses the whole of a trimmed text as a number; nullopt for other text, for infinity and NaN,
/// and for numbers beyond a float.
inline std::optional<float> finiteFloat(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    // The comparison is false for NaN.
    if (error != std::errc() || stop != end ||
        !(std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max())))
        return std::nullopt;
    return static_cast<float>(value);
}

/// A number as text, with a point in every locale.
inline std::string numberText(float value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

} // namespace memory_host
