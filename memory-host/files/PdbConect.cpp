#include "PdbConect.h"

#include "PdbBonds.h"
#include "PdbColumns.h"
#include "PdbRows.h"

#include <algorithm>

namespace memory_host::pdb {

namespace {

constexpr std::size_t serialWidth = 5;
constexpr std::size_t firstSerial = 7;
constexpr std::size_t firstPartner = 12;
// Hydrogen bonds and salt bridges of old files are in the columns up to here.
constexpr std::size_t lastColumn = 61;
constexpr std::size_t lastPartner = 31;
constexpr std::size_t partnersOfARecord = 4;

std::string_view serialAt(std::string_view record, std::size_t column) {
    return field(record, column, column + serialWidth - 1);
}

} // namespace

void Conect::see(std::string_view row, bool isKept) {
    if (const Serial serial = serialOf(row); serial != noSerial)
        (isKept ? m_kept : m_gone).push_back(serial);
}

// A number that several atoms have, as in the models of a file, is gone with the last of them.
void Conect::settle() {
    std::ranges::sort(m_kept);
    std::erase_if(m_gone,
                  [this](Serial serial) { return std::ranges::binary_search(m_kept, serial); });
    std::ranges::sort(m_gone);
    m_kept = {};
}

void Conect::loseBond(std::string_view firstRow, std::string_view secondRow) {
    const Serial a = serialOf(firstRow);
    const Serial b = serialOf(secondRow);
    if (a != noSerial && b != noSerial)
        m_lostBonds.insert({pairOf(a, b), pairOf(b, a)});
}

void Conect::keepBond(std::string_view firstRow, std::string_view secondRow) {
    const Serial a = serialOf(firstRow);
    const Serial b = serialOf(secondRow);
    m_lostBonds.erase(pairOf(a, b));
    m_lostBonds.erase(pairOf(b, a));
}

bool Conect::isGone(Serial serial) const {
    return serial != noSerial && std::ranges::binary_search(m_gone, serial);
}

std::string Conect::update(std::string_view record) const {
    const Serial first = packedSerial(serialAt(record, firstSerial));
    if (isGone(first))
        return {};
    std::string updated(record);
    std::vector<std::string_view> left;
    bool isChanged = false;
    for (std::size_t column = firstPartner; column < lastColumn; column += serialWidth) {
        const std::string_view text = serialAt(record, column);
        const Serial other = packedSerial(text);
        const bool isBond = column < lastPartner;
        const bool isLost =
            !text.empty() &&
            (isGone(other) || (isBond && m_lostBonds.contains(pairOf(first, other))));
        isChanged = isChanged || isLost;
        if (isLost && !isBond)
            putRight(updated, column, column + serialWidth - 1, {});
        else if (!isLost && isBond && !text.empty())
            left.push_back(text);
    }
    if (!isChanged)
        return updated;
    for (std::size_t i = 0; i != partnersOfARecord; ++i) {
        const std::size_t column = firstPartner + i * serialWidth;
        if (column <= updated.size() || i < left.size())
            putRight(updated, column, column + serialWidth - 1,
                     i < left.size() ? left[i] : std::string_view());
    }
    return trimmed(columns(updated, firstPartner, lastColumn - 1)).empty() ? std::string()
                                                                           : updated;
}

std::vector<std::string> Conect::recordsOf(std::vector<std::pair<std::string, std::string>> bonds) {
    // As usual, each bond is in the records of both atoms.
    const std::size_t count = bonds.size();
    for (std::size_t i = 0; i != count; ++i)
        bonds.emplace_back(bonds[i].second, bonds[i].first);
    std::ranges::sort(bonds);
    bonds.erase(std::unique(bonds.begin(), bonds.end()), bonds.end());
    std::vector<std::string> records;
    std::size_t partners = 0;
    for (std::size_t i = 0; i != bonds.size(); ++i) {
        const bool isSame = i != 0 && bonds[i].first == bonds[i - 1].first;
        if (!isSame || partners == partnersOfARecord) {
            records.push_back("CONECT" + bonds[i].first);
            partners = 0;
        }
        records.back() += bonds[i].second;
        ++partners;
    }
    return records;
}

} // namespace memory_host::pdb
