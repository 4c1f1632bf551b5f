// How items look, as runs of those that follow one another and look the same.
#pragma once

#include "JournalSections.h"
#include "items/ElementColours.h"
#include "items/Holder.h"
#include "items/Sets.h"

namespace memory_host {

class LookRuns {
public:
    explicit LookRuns(JournalBytes& bytes) : m_bytes(bytes) {}

    void add(const HostItem& item) {
        const std::uint8_t marks = marksOf(item);
        const bool isColoured = item.color != defaultColor(item).rgba();
        const std::uint8_t look = isColoured ? marks | journal_look::coloured : marks;
        if (item.id == m_first + m_length && look == m_look &&
            (!isColoured || item.color == m_color) && m_length != 0) {
            ++m_length;
            return;
        }
        finish();
        m_first = item.id;
        m_length = 1;
        m_look = look;
        if (isColoured)
            m_color = item.color;
    }
    /// Writes the last run.
    void finish() {
        if (m_length == 0)
            return;
        m_areAllUsual = m_areAllUsual && m_look == 0;
        const bool isNew = (m_look & journal_look::coloured) != 0 && m_color != m_lastColor;
        m_bytes.difference(std::int64_t{m_first} - std::int64_t{m_end});
        m_bytes.number(m_length);
        m_bytes.byte(isNew ? m_look | journal_look::newColour : m_look);
        if (isNew)
            m_bytes.four(m_color);
        if (isNew)
            m_lastColor = m_color;
        m_end = m_first + m_length;
        m_length = 0;
    }
    /// Whether no item is selected, hidden or coloured.
    bool areAllUsual() const { return m_areAllUsual; }

private:
    /// What stands for others has no marks of its own: it goes with the run.
    std::uint8_t marksOf(const HostItem& item) const {
        const bool standsForOthers =
            item.isHolder() ? static_cast<const Holder&>(item).sum.leaves > 0 : listsMembers(item);
        if (standsForOthers)
            return m_look & (journal_look::selected | journal_look::hidden);
        return static_cast<std::uint8_t>(
            (item.has(HostItem::Selected) ? journal_look::selected : 0U) |
            (item.has(HostItem::Visible) ? 0U : journal_look::hidden));
    }

    JournalBytes& m_bytes;
    std::uint32_t m_first = 0;
    std::uint32_t m_length = 0;
    std::uint32_t m_end = 0; ///< of the run before
    std::uint32_t m_color = 0;
    std::uint32_t m_lastColor = 0; ///< that was written
    std::uint8_t m_look = 0;
    bool m_areAllUsual = true;
};

} // namespace memory_host
