// Positions and temperature factors of atoms as a file gives them. A text that is no number gets a
// remark; a file without a single usable position is refused.
#pragma once

#include "AtomTable.h"
#include "FileReport.h"
#include "HostExport.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace memory_host {

/// An atom's serial number: decimal, or in the hybrid-36 encoding of cctbx, where A0000 follows
/// 99999, and a0000 follows ZZZZZ. AtomDetails::noSerial for any other text, for negative numbers,
/// and for those beyond 32 bits.
HOST_EXPORT std::int32_t serialNumber(std::string_view text);
/// A formal charge with its sign before or behind the number: "2+", "-1", "1". 0 for any other
/// text, and for charges beyond 127.
HOST_EXPORT std::int8_t formalCharge(std::string_view text);

class AtomNumbers {
public:
    /// The text after "accepted are" in remarks on positions and temperature factors.
    struct Accepted {
        std::string position;
        std::string temperature;
    };

    AtomNumbers(FileReport& report, Accepted accepted)
        : m_report(report), m_accepted(std::move(accepted)) {}

    /// Sets the atom's position if all of `values` are numbers. `isBlank` says that the file has no
    /// text for any of them; `written()` makes the file's text, for a remark.
    template <class Written>
    void setPosition(AtomRow& row, const std::array<std::optional<float>, 3>& values, bool isBlank,
                     std::size_t line, const Written& written) {
        row.hasPosition = values[0] && values[1] && values[2];
        if (row.hasPosition) {
            row.position = {*values[0], *values[1], *values[2]};
            ++m_positions;
        } else if (isBlank) {
            withoutPosition(line);
            remarkOnBlank(row, line);
        } else {
            remarkOnText(row, line, written());
        }
    }
    /// Sets the atom's temperature factor unless `text` is empty; 0 when there is no `value`.
    void setTemperature(AtomRow& row, std::string_view text, std::optional<float> value,
                        std::size_t line);
    /// Counts an atom without a position, if the reason is reported elsewhere.
    void withoutPosition(std::size_t line) {
        if (m_firstBlankLine == 0)
            m_firstBlankLine = line;
    }
    bool hasPositions() const { return m_positions != 0; }
    /// Refuses a file with atoms of which not one has a position.
    void check(const std::string& accepted) const;

private:
    void remarkOnBlank(const AtomRow& row, std::size_t line);
    void remarkOnText(const AtomRow& row, std::size_t line, const std::string& text);

    FileReport& m_report;
    Accepted m_accepted;
    std::size_t m_firstBadLine = 0;
    std::size_t m_firstBlankLine = 0;
    std::size_t m_positions = 0; ///< number of atoms that have one
};

} // namespace memory_host
