#include "PdbBonds.h"

#include "PdbColumns.h"

#include <algorithm>

namespace memory_host::pdb {

namespace {

constexpr std::size_t serialWidth = 5;
// Atom and partners of a CONECT record end here; hydrogen bonds and salt bridges of old files
// follow.
constexpr std::size_t conectColumns = 31;

std::uint32_t codeOf(char c) {
    if (isDigit(c))
        return 1U + static_cast<std::uint32_t>(c - '0');
    if (c >= 'A' && c <= 'Z')
        return 11U + static_cast<std::uint32_t>(c - 'A');
    return c >= 'a' && c <= 'z' ? 37U + static_cast<std::uint32_t>(c - 'a') : 0U;
}

// Whether every field ends in its last column, as serial numbers in columns do.
bool isInColumns(std::string_view fields) {
    for (std::size_t at = 0; at < fields.size(); at += serialWidth) {
        const std::string_view text = fields.substr(at, serialWidth);
        const std::string_view word = trimmed(text);
        const bool isLast = at + serialWidth >= fields.size();
        if (!word.empty() && (word.find_first_of(" \t") != std::string_view::npos ||
                              (text.back() == ' ' && !isLast)))
            return false;
    }
    return true;
}

// The next serial number: by columns, or by words in files that do not keep to them.
std::string_view takeSerial(std::string_view& fields, bool areColumns) {
    if (areColumns) {
        const std::string_view word = trimmed(fields.substr(0, serialWidth));
        fields.remove_prefix(std::min(serialWidth, fields.size()));
        return word;
    }
    fields = trimmed(fields);
    const std::string_view word = fields.substr(0, fields.find_first_of(" \t"));
    fields.remove_prefix(word.size());
    return word;
}

void readConect(std::string_view line, std::size_t number, ListedBonds& bonds) {
    std::string_view fields = columns(line, 7, conectColumns);
    const bool areColumns = isInColumns(fields);
    const std::string_view first = takeSerial(fields, areColumns);
    while (!fields.empty())
        if (const std::string_view other = takeSerial(fields, areColumns); !other.empty())
            bonds.add(packedSerial(first), packedSerial(other), number);
}

// Whether the two atoms are in the same copy of the structure.
bool areInOneCopy(std::string_view line) {
    const std::string_view first = field(line, 60, 65);
    const std::string_view second = field(line, 67, 72);
    return first.empty() || second.empty() || first == second;
}

void readDisulfide(std::string_view line, std::size_t number, ListedBonds& bonds) {
    const auto atom = [line](std::size_t residue, std::size_t chain) {
        ListedAtom sulfur;
        sulfur.residue = field(line, residue, residue + 2);
        sulfur.chain = field(line, chain, chain + 1);
        sulfur.number = field(line, chain + 3, chain + 6);
        sulfur.insertion = field(line, chain + 7, chain + 7);
        sulfur.name = "SG";
        return sulfur;
    };
    if (areInOneCopy(line))
        bonds.add(atom(12, 15), atom(26, 29), number);
}

void readLink(std::string_view line, std::size_t number, ListedBonds& bonds) {
    const auto atom = [line](std::size_t name) {
        ListedAtom linked;
        linked.name = field(line, name, name + 3);
        linked.alternative = field(line, name + 4, name + 4);
        linked.residue = field(line, name + 5, name + 7);
        linked.chain = field(line, name + 8, name + 9);
        linked.number = field(line, name + 10, name + 13);
        linked.insertion = field(line, name + 14, name + 14);
        return linked;
    };
    if (areInOneCopy(line))
        bonds.add(atom(13), atom(43), number);
}

} // namespace

Serial packedSerial(std::string_view text) {
    constexpr int codeBits = 6;
    if (text.size() > serialWidth)
        return noSerial;
    Serial packed = noSerial;
    for (const char c : text) {
        const std::uint32_t code = codeOf(c);
        if (code == 0)
            return noSerial;
        packed = packed << codeBits | code;
    }
    return packed;
}

Serial serialOf(std::string_view line) {
    // A longer number fills the column before or behind, and could be taken for a shorter one.
    const auto isDigitAt = [line](std::size_t at) { return line.size() > at && isDigit(line[at]); };
    const bool isLonger = isDigitAt(5) || isDigitAt(11);
    return isLonger ? noSerial : packedSerial(field(line, 7, 11));
}

void readBonds(std::string_view line, std::size_t number, ListedBonds& bonds) {
    if (startsWith(line, "CONECT"))
        readConect(line, number, bonds);
    else if (startsWith(line, "SSBOND"))
        readDisulfide(line, number, bonds);
    else if (startsWith(line, "LINK  "))
        readLink(line, number, bonds);
}

} // namespace memory_host::pdb
