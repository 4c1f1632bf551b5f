#include "PdbColumns.h"

#include "FileReport.h"
#include "ResidueKinds.h"
#include "Waters.h"

#include <array>
#include <optional>

namespace memory_host::pdb {

namespace {

char column(std::string_view line, std::size_t number) {
    return line.size() < number ? ' ' : line[number - 1];
}

bool isBlank(char c) {
    return c == ' ';
}

bool hasGap(std::string_view text) {
    return trimmed(text).find(' ') != std::string_view::npos;
}

std::string_view withoutBlankEnd(std::string_view line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string_view coordinate(std::string_view line, std::size_t axis) {
    return field(line, 31 + 8 * axis, 38 + 8 * axis);
}

// Number of digits after the decimal point.
std::size_t decimalsOf(std::string_view number) {
    const std::size_t point = number.find('.');
    return point == std::string_view::npos ? 0 : number.size() - point - 1;
}

bool haveDecimals(std::string_view line, std::size_t decimals) {
    for (const std::size_t axis : {0, 1, 2})
        if (decimalsOf(coordinate(line, axis)) != decimals)
            return false;
    return true;
}

// Whether a number may continue after the column. A sign starts a new number.
bool runsOn(std::string_view line, std::size_t last) {
    const char next = column(line, last + 1);
    return !isBlank(column(line, last)) && (isDigit(next) || next == '.');
}

std::string_view serialColumns(std::string_view line) {
    return line.front() == 'H' ? columns(line, 7, 12) : columns(line, 5, 12);
}

// A serial number of six digits may use the blank column after it.
bool isSerial(std::string_view line) {
    const std::string_view text = trimmed(serialColumns(line));
    return !hasGap(text) && (isBlank(column(line, 12)) || std::ranges::all_of(text, isDigit));
}

// Residue numbers too long for their columns continue after them.
bool isLongNumber(std::string_view line) {
    return std::ranges::all_of(columns(line, 26, 28), isDigit) &&
           (isDigit(column(line, 29)) || isBlank(column(line, 29))) && isBlank(column(line, 30));
}

// Whether the residue's name (of three letters) or its number (reaching into the chain's column),
// and everything after it, is shifted to the left by `count` columns. A shift that leaves residue,
// chain and number correct does not matter.
bool missesColumns(std::string_view line, std::size_t count) {
    const auto moved = [&](std::size_t number) { return column(line, number - count); };
    const auto endsBefore = [&](std::size_t last) {
        return isDigit(moved(last)) && trimmed(columns(line, last - count + 1, last)).empty();
    };
    const bool hasCutResidue = !isBlank(moved(18)) && !isBlank(moved(20)) && isBlank(moved(21));
    const bool hasCutNumber = isDigit(column(line, 22)) && isDigit(column(line, 23));
    return (hasCutResidue || hasCutNumber) && endsBefore(26) && endsBefore(38) && endsBefore(46) &&
           endsBefore(54) && haveDecimals(line, 3);
}

// Whether a line end is missing, so that the next atom's record follows on this line.
bool hasAnother(std::string_view line) {
    constexpr std::size_t mostColumns = 80;
    return line.size() > mostColumns &&
           (line.find("ATOM  ", coordinateColumns) != std::string_view::npos ||
            line.find("HETATM", coordinateColumns) != std::string_view::npos);
}

bool isNumberOrBlank(std::string_view text) {
    return text.empty() || finiteFloat(text).has_value();
}

} // namespace

bool hasAtoms(std::string_view text) {
    return text.starts_with("ATOM  ") || text.starts_with("HETATM") ||
           text.find("\nATOM  ") != std::string_view::npos ||
           text.find("\nHETATM") != std::string_view::npos;
}

std::string_view wronglyWrittenRecord(std::string_view line) {
    for (const std::string_view record : {"ATOM", "HETATM"})
        if (startsWith(line, record) && line.size() > record.size() && line[record.size()] == ' ' &&
            !line.starts_with(record))
            return line.substr(0, record.size());
    return {};
}

RowFault faultOf(std::string_view line) {
    const std::string_view front = line.substr(0, coordinateColumns);
    if (front.find('\t') != std::string_view::npos)
        return RowFault::Tab;
    if (!isSerial(line))
        return RowFault::Serial;
    if (hasGap(columns(line, 23, 26)))
        return RowFault::Number;
    if (!trimmed(columns(line, 28, 30)).empty() && !isLongNumber(line))
        return RowFault::Blanks;
    if (line.size() < coordinateColumns) {
        const std::size_t end = withoutBlankEnd(line).size();
        if (end < 31)
            return RowFault::Short;
        // A truncated number has fewer decimals than the others.
        const std::size_t decimals = decimalsOf(coordinate(line, 0));
        if (end < 47 || decimals == 0 || !haveDecimals(line, decimals) ||
            !finiteFloat(coordinate(line, 2)))
            return RowFault::Cut;
    }
    // Numbers that fill their columns have no blanks between them. If the number of decimals is not
    // the format's, the end of the columns has cut one of them.
    if ((runsOn(line, 38) || runsOn(line, 46) || runsOn(line, coordinateColumns)) &&
        !haveDecimals(line, 3))
        return RowFault::Shifted;
    if (missesColumns(line, 1) || missesColumns(line, 2))
        return RowFault::Left;
    return hasAnother(line) ? RowFault::Joined : RowFault::None;
}

std::string describe(RowFault fault, std::string_view line) {
    switch (fault) {
    case RowFault::None:
        break;
    case RowFault::Tab:
        return "the record has a tabulator in its columns";
    case RowFault::Serial:
        return "the columns up to 12 hold " + inQuotes(trimmed(serialColumns(line))) +
               ", which is no serial number";
    case RowFault::Number:
        return "columns 23 to 26 hold " + inQuotes(field(line, 23, 26)) +
               ", which is no residue number";
    case RowFault::Blanks:
        return "columns 28 to 30 hold " + inQuotes(columns(line, 28, 30)) +
               ", and are blank in PDB records";
    case RowFault::Short:
        return "the record ends in column " + std::to_string(withoutBlankEnd(line).size()) +
               ", before its coordinates";
    case RowFault::Cut:
        return "the record ends in column " + std::to_string(withoutBlankEnd(line).size()) +
               ", inside of its coordinates";
    case RowFault::Shifted:
        return "the coordinates " + inQuotes(columns(line, 31, 60)) +
               " run from one number's columns into the next one's";
    case RowFault::Left:
        return "the residue number and the coordinates stand to the left of their columns";
    case RowFault::Joined:
        return "another record follows in the same line";
    }
    return {};
}

bool fitsColumns(std::string_view line) {
    if (faultOf(line) != RowFault::None)
        return false;
    for (const std::size_t axis : {0, 1, 2})
        if (!finiteFloat(coordinate(line, axis)))
            return false;
    const std::string_view occupancy = field(line, 55, 60);
    const std::string_view temperature = field(line, 61, 66);
    return isNumberOrBlank(occupancy) && decimalsOf(occupancy) <= 2 &&
           isNumberOrBlank(temperature) && decimalsOf(temperature) <= 2 &&
           (!runsOn(line, 60) || decimalsOf(occupancy) == 2) && !runsOn(line, 66);
}

std::string_view serialNumberOf(std::string_view line) {
    return trimmed(serialColumns(line));
}

std::string_view residueNumber(std::string_view line) {
    return isBlank(column(line, 28)) ? field(line, 23, 26) : field(line, 23, 29);
}

std::string_view insertionCode(std::string_view line) {
    return isBlank(column(line, 28)) ? field(line, 27, 27) : std::string_view();
}

// If known residues have chains of two letters, other residues of the file may have them, too.
bool ResidueColumns::isChainOfTwo(std::string_view residue, std::string_view chain) {
    if (residueKind(residue) == ResidueKind::Other && !TAVIK::isWater(residue))
        return m_chains.contains(chain);
    m_chains.insert(chain);
    return true;
}

ResidueColumns::Fields ResidueColumns::read(std::string_view five) {
    const bool isJoined = !isBlank(column(five, 3)) && !isBlank(column(five, 4));
    if (isJoined && five != m_lastColumns) {
        m_lastColumns = five;
        m_wasChainOfTwo = !isBlank(column(five, 5)) && !TAVIK::isWater(field(five, 1, 4)) &&
                          isChainOfTwo(field(five, 1, 3), five.substr(3));
    }
    const std::size_t nameEnd = isJoined && !m_wasChainOfTwo ? 4 : 3;
    return {field(five, 1, nameEnd), field(five, nameEnd + 1, 5)};
}

} // namespace memory_host::pdb
