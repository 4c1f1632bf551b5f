#include "AtomNumbers.h"

#include "Fields.h"

namespace memory_host {

namespace {

// The whole of a text as a number; nullopt for any other text.
std::optional<std::int32_t> wholeNumber(std::string_view text, int base) {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace

std::int32_t serialNumber(std::string_view text) {
    constexpr std::size_t width = 5;
    constexpr std::int32_t afterDigits = 100'000;
    constexpr std::int32_t lettersFirst = 10 * 36 * 36 * 36 * 36;
    constexpr std::int32_t perCase = 26 * 36 * 36 * 36 * 36;
    const bool isEncoded = text.size() == width && isLetter(text.front());
    const std::optional<std::int32_t> number = wholeNumber(text, isEncoded ? 36 : 10);
    if (!number || *number < 0)
        return TAVIK::AtomDetails::noSerial;
    if (!isEncoded)
        return *number;
    return *number - lettersFirst + afterDigits + (text.front() >= 'a' ? perCase : 0);
}

std::int8_t formalCharge(std::string_view text) {
    constexpr std::int32_t most = 127;
    if (text.empty())
        return 0;
    bool isNegative = false;
    const auto isSign = [](char c) { return c == '+' || c == '-'; };
    if (isSign(text.front())) {
        isNegative = text.front() == '-';
        text.remove_prefix(1);
    } else if (isSign(text.back())) {
        isNegative = text.back() == '-';
        text.remove_suffix(1);
    }
    const std::int32_t charge = wholeNumber(text, 10).value_or(0);
    if (charge < 0 || charge > most)
        return 0;
    return static_cast<std::int8_t>(isNegative ? -charge : charge);
}

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
