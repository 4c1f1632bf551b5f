// Atoms as a table in CSV, for spreadsheets.
#pragma once

#include "Compound.h"
#include "Progress.h"

#include <QString>

#include <cstdint>
#include <stop_token>
#include <string>
#include <vector>

class QIODevice;

namespace workbench {

/// What the table says of atoms, copied: it may be written on any thread, whatever becomes of the
/// items.
class AtomTable {
public:
    /// Reads the selected atoms at or below `root`.
    static AtomTable ofSelected(TAVIK::Compound* root);

    std::size_t size() const { return m_rows.size(); }

    /// Writes a line of titles and one for each atom, in UTF-8, as RFC 4180 has it: name, element,
    /// x, y, z (Å; empty without a position), occupancy, temperature factor (Å²), alternative
    /// location, formal charge, partial charge (empty where it is not known). Returns whether all
    /// was written, which it is not when `stop` was requested.
    bool write(QIODevice& out, ProgressReporter* reporter = nullptr,
               const std::stop_token& stop = {}) const;

    /// The same to a file, which is replaced only when all is written: not when `stop` was
    /// requested. Returns what went wrong, in one line; empty if nothing did.
    QString save(const QString& file, ProgressReporter* reporter = nullptr,
                 const std::stop_token& stop = {}) const;

private:
    class Reader;
    struct Row {
        std::uint32_t place; ///< what its name begins with, in m_places
        std::uint32_t texts; ///< name and element in m_texts, each with a zero at its end
        float at[3];         ///< Å; NaN without a position
        float occupancy;
        float temperature;
        float partialCharge; ///< NaN where it is not known
        std::int8_t formalCharge;
        char alternative;
    };

    std::vector<std::string> m_places;
    std::string m_texts;
    std::vector<Row> m_rows;
};

} // namespace workbench
