#include "FileNames.h"

#include <cstring>

namespace memory_host {

namespace {

unsigned char byteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// The length of the UTF-8 sequence that starts at `i`, and its code point; 0 if there is none.
std::size_t decodeUtf8(std::string_view text, std::size_t i, std::uint32_t& codePoint) {
    const unsigned char lead = byteAt(text, i);
    const std::size_t length = lead >= 0xf0 && lead < 0xf8   ? 4
                               : lead >= 0xe0 && lead < 0xf0 ? 3
                               : lead >= 0xc2 && lead < 0xe0 ? 2
                                                             : 0;
    codePoint = length ? lead & (0x7fU >> length) : 0;
    for (std::size_t k = 1; k < length; ++k) {
        const unsigned char next = byteAt(text, i + k);
        if ((next & 0xc0) != 0x80)
            return 0;
        codePoint = codePoint << 6 | (next & 0x3fU);
    }
    return length;
}

// As many as fit into the processor's first-level cache.
constexpr std::size_t mostRecent = 4096;

} // namespace

std::string asLatin1Component(std::string_view text) {
    std::string component;
    component.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        std::uint32_t codePoint = 0;
        std::size_t length = decodeUtf8(text, i, codePoint);
        if (length == 0) {
            codePoint = byteAt(text, i);
            length = 1;
        }
        const bool fits = codePoint >= 0x20 && codePoint < 0x100 && codePoint != '/' &&
                          (codePoint < 0x7f || codePoint >= 0xa0);
        component += fits ? static_cast<char>(codePoint) : '_';
        i += length;
    }
    return component;
}

FileNames::FileNames() : m_recent(16) {
    number({});
}

std::uint32_t FileNames::number(std::string_view text) {
    std::uint64_t key = 0;
    if (text.empty() || text.size() > sizeof key)
        return find(text);
    std::memcpy(&key, text.data(), text.size());
    const std::uint64_t place = (key * 0x9e3779b97f4a7c15U) >> 52;
    Recent& recent = m_recent[place & (m_recent.size() - 1)];
    if (recent.key == key)
        return recent.number;
    const std::uint32_t found = find(text);
    recent = {key, found};
    if (m_names.size() > m_recent.size() && m_recent.size() < mostRecent)
        m_recent = std::vector<Recent>(4 * m_recent.size());
    return found;
}

std::uint32_t FileNames::find(std::string_view text) {
    if (const auto found = m_numbers.find(text); found != m_numbers.end())
        return found->second;
    const auto number = static_cast<std::uint32_t>(m_names.size());
    std::string component = asLatin1Component(text);
    const bool isChanged = component != text;
    m_hasChanged = m_hasChanged || isChanged;
    m_names.push_back({std::string(text), std::move(component), isChanged});
    m_numbers.emplace(m_names.back().written, number);
    return number;
}

} // namespace memory_host
