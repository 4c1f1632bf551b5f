// The columns of ATOM and HETATM records in PDB files, and the detection of lines that violate
// them: the coordinates of such a line cannot be trusted.
#pragma once

#include "AtomTable.h"
#include "Fields.h"

#include <string>
#include <string_view>
#include <unordered_set>

namespace memory_host::pdb {

/// The last column of the coordinates, three numbers of eight columns from column 31 on.
constexpr std::size_t coordinateColumns = 54;

/// Columns of a line, counted from 1 and inclusive as in the format's description; fewer where the
/// line ends before.
inline std::string_view columns(std::string_view line, std::size_t first, std::size_t last) {
    return line.size() < first ? std::string_view() : line.substr(first - 1, last - first + 1);
}
/// The same without the blanks around it.
inline std::string_view field(std::string_view line, std::size_t first, std::size_t last) {
    return trimmed(columns(line, first, last));
}

/// Whether a line begins with the name of a record and a blank, or is that name. Behind six letters
/// a number may follow at once.
inline bool isRecord(std::string_view line, std::string_view record) {
    constexpr std::size_t nameColumns = 6;
    return line.starts_with(record) &&
           (record.size() == nameColumns || line.size() == record.size() ||
            line[record.size()] == ' ' || line[record.size()] == '\t');
}
/// Whether a line begins as a record of an atom. A serial number of more than five digits may
/// follow the record's name without a blank.
inline bool isAtomRecord(std::string_view line) {
    return line.starts_with("HETATM") ||
           (line.starts_with("ATOM") &&
            (line.size() == 4 || line[4] == ' ' || line[4] == '\t' || isDigit(line[4])));
}
/// Whether a text has records of atoms in their columns.
bool hasAtoms(std::string_view text);
/// The name of such a record if it is not in capital letters, which makes it invalid; else empty.
std::string_view wronglyWrittenRecord(std::string_view line);

enum class RowFault : std::uint8_t {
    None,
    Tab,     ///< a tab shifts what follows
    Serial,  ///< columns 5 or 7 to 12 hold more than a serial number
    Number,  ///< columns 23 to 27 hold more than a residue number
    Blanks,  ///< columns 28 to 30 are not blank
    Short,   ///< the line ends before the coordinates
    Cut,     ///< the line ends inside of the coordinates
    Shifted, ///< numbers run from one coordinate's columns into those of the next
    Left,    ///< the line misses columns before the residue number
    Joined,  ///< another record follows in the same line
};
/// The first fault in the columns of an atom's record, up to the coordinates.
RowFault faultOf(std::string_view line);
/// That fault as the beginning of a message.
std::string describe(RowFault fault, std::string_view line);

/// Whether all numbers of an atom's record up to the temperature factor fit PDB's columns.
bool fitsColumns(std::string_view line);

/// The serial number; may be longer than its five columns.
std::string_view serialNumberOf(std::string_view line);
/// The residue number; may be longer than its four columns if there is no insertion code.
std::string_view residueNumber(std::string_view line);
std::string_view insertionCode(std::string_view line);

/// Distinguishes residue names of four letters from chains of two: both use column 21.
class ResidueColumns {
public:
    struct Fields {
        std::string_view residue;
        std::string_view chain;
    };
    /// Takes apart five columns, as 18 to 22 of an atom's record.
    Fields read(std::string_view five);

private:
    bool isChainOfTwo(std::string_view residue, std::string_view chain);

    std::unordered_set<std::string_view> m_chains; ///< those of two letters
    std::string_view m_lastColumns;
    bool m_wasChainOfTwo = false;
};

} // namespace memory_host::pdb
