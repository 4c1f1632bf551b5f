#include "PdbBonds.h"

#include <algorithm>

namespace memory_host::pdb {

namespace {

constexpr std::size_t serialWidth = 5;
// The atom and partners of a CONECT record end here; old files have hydrogen bonds and salt bridges
// after them.
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

// Removes the next serial number: by columns, or by words in files that ignore the columns.
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

// The name and the chain of a residue, which begin in column `first` of a record.
ListedAtom residueAt(std::string_view line, std::size_t first, ResidueColumns& residues) {
    const ResidueColumns::Fields fields = residues.read(columns(line, first, first + 4));
    ListedAtom atom;
    atom.residue = fields.residue;
    atom.chain = fields.chain;
    return atom;
}

void readDisulfide(std::string_view line, std::size_t number, ResidueColumns& residues,
                   ListedBonds& bonds) {
    const auto atom = [&](std::size_t first) {
        ListedAtom sulfur = residueAt(line, first, residues);
        sulfur.number = field(line, first + 6, first + 9);
        sulfur.insertion = field(line, first + 10, first + 10);
        sulfur.name = "SG";
        return sulfur;
    };
    bonds.add(atom(12), atom(26), number);
}

void readLinked(std::string_view line, std::size_t number, ResidueColumns& residues,
                ListedBonds& bonds) {
    const auto atom = [&](std::size_t first) {
        ListedAtom linked = residueAt(line, first + 5, residues);
        linked.name = field(line, first, first + 3);
        linked.alternative = field(line, first + 4, first + 4);
        linked.number = field(line, first + 10, first + 13);
        linked.insertion = field(line, first + 14, first + 14);
        return linked;
    };
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
    // A longer number extends into the next column, and could be mistaken for a shorter one.
    const auto isDigitAt = [line](std::size_t at) { return line.size() > at && isDigit(line[at]); };
    const bool isLonger = isDigitAt(5) || isDigitAt(11);
    return isLonger ? noSerial : packedSerial(field(line, 7, 11));
}

void readConnections(std::string_view line, std::size_t number, ListedBonds& bonds) {
    if (startsWith(line, "CONECT"))
        readConect(line, number, bonds);
}

bool isLink(std::string_view line) {
    return startsWith(line, "SSBOND") || startsWith(line, "LINK  ");
}

bool areInOneCopy(std::string_view line) {
    const std::string_view first = field(line, 60, 65);
    const std::string_view second = field(line, 67, 72);
    return first.empty() || second.empty() || first == second;
}

void readLink(std::string_view line, std::size_t number, ResidueColumns& columns,
              ListedBonds& bonds) {
    if (!areInOneCopy(line))
        return;
    if (startsWith(line, "SSBOND"))
        readDisulfide(line, number, columns, bonds);
    else
        readLinked(line, number, columns, bonds);
}

} // namespace memory_host::pdb
