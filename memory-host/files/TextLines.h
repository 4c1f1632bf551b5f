// The lines of a text with the line ends that each of them has, so that they can be copied.
#pragma once

#include <algorithm>
#include <string_view>

namespace memory_host {

/// A line and its end, which is empty in a last line without one.
struct TextLine {
    std::string_view content;
    std::string_view end;
};

/// Takes a text apart into lines that end with "\n", "\r\n" or a lone "\r", as the readers do.
class TextLines {
public:
    explicit TextLines(std::string_view text) : m_text(text) {}

    bool areDone() const { return m_at == m_text.size(); }
    TextLine next() {
        m_newline = following('\n', m_newline);
        m_return = following('\r', m_return);
        const std::size_t end = std::min(m_newline, m_return);
        const bool areBoth = m_return + 1 == m_newline;
        const std::size_t after = std::min(end + (areBoth ? 2 : 1), m_text.size());
        const TextLine line{m_text.substr(m_at, end - m_at), m_text.substr(end, after - end)};
        m_at = after;
        return line;
    }

private:
    // The first such character from here on, or the end of the text; `known` is the last answer.
    std::size_t following(char c, std::size_t known) const {
        return known != std::string_view::npos && known >= m_at
                   ? known
                   : std::min(m_text.find(c, m_at), m_text.size());
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_newline = std::string_view::npos;
    std::size_t m_return = std::string_view::npos;
};

} // namespace memory_host
