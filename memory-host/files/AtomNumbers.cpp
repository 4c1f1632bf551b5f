#include "AtomNumbers.h"

namespace memory_host {

void AtomNumbers::remarkOnBlank(const AtomRow& row, std::size_t line) {
    m_report.remark(FileReport::Kind::NoCoordinates, line, [&] {
        return "the atom " + inQuotes(row.name) + " has no coordinates; accepted are " +
               m_accepted.position;
    });
}

void AtomNumbers::remarkOnText(const AtomRow& row, std::size_t line, const std::string& text) {
    if (m_firstBadLine == 0)
        m_firstBadLine = line;
    m_report.remark(FileReport::Kind::Coordinates, line, [&] {
        return "the coordinates " + inQuotes(text) + " of the atom " + inQuotes(row.name) +
               " are no numbers: it has no position; accepted are " + m_accepted.position;
    });
}

void AtomNumbers::setTemperature(AtomRow& row, std::string_view text, std::optional<float> value,
                                 std::size_t line) {
    if (text.empty())
        return;
    row.temperature = value.value_or(0.0F);
    if (!value)
        m_report.remark(FileReport::Kind::Temperature, line, [&] {
            return "the temperature factor " + inQuotes(text) +
                   " is no number, and was read as 0; accepted are " + m_accepted.temperature;
        });
}

void AtomNumbers::check(const std::string& accepted) const {
    if (hasPositions())
        return;
    if (m_firstBadLine != 0)
        m_report.refuse(m_firstBadLine, "no atom of the file has coordinates that are numbers",
                        accepted);
    if (m_firstBlankLine != 0)
        m_report.refuse(m_firstBlankLine, "no atom of the file has a position", accepted);
}

} // namespace memory_host
