#include "JournalBytes.h"

#include <algorithm>

namespace memory_host {

void JournalBytes::bytes(std::string_view text) {
    while (!text.empty()) {
        if (m_left == 0)
            grow();
        const std::size_t count = std::min(m_left, text.size());
        std::memcpy(m_pieces.back().get() + (pieceSize - m_left), text.data(), count);
        m_left -= count;
        m_size += count;
        text.remove_prefix(count);
    }
}

void JournalBytes::appendTo(std::string& all) const {
    all.reserve(all.size() + m_size);
    for (std::size_t i = 0; i != m_pieces.size(); ++i)
        all.append(m_pieces[i].get(), i + 1 == m_pieces.size() ? pieceSize - m_left : pieceSize);
}

} // namespace memory_host
