#include "NameKeys.h"

namespace workbench {

namespace {

constexpr NameKeys::Key longMark = NameKeys::Key{1} << 63;

char upperOf(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

NameKeys::Key NameKeys::pack(std::string_view name) {
    Key key = 0;
    for (const char c : name)
        key = key << 8 | static_cast<unsigned char>(upperOf(c));
    return key;
}

std::string NameKeys::upper(std::string_view name) {
    std::string text(name);
    for (char& c : text)
        c = upperOf(c);
    return text;
}

NameKeys::Key NameKeys::add(std::string_view name) {
    if (name.size() <= longestPacked)
        return pack(name);
    return m_long.try_emplace(upper(name), longMark | m_long.size()).first->second;
}

NameKeys::Key NameKeys::find(std::string_view name) const {
    if (name.size() <= longestPacked)
        return pack(name);
    const auto found = m_long.find(upper(name));
    return found == m_long.end() ? none : found->second;
}

} // namespace workbench
