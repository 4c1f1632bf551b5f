#include "PdbRows.h"

#include "AtomNumbers.h"
#include "Elements.h"
#include "FileReport.h"
#include "Hybrid36.h"
#include "PdbColumns.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace memory_host::pdb {

namespace {

const char* const mmcifHolds = "accepted is saving it as mmCIF, which has room for it";

struct Number {
    std::size_t first; ///< column
    std::size_t last;
    int decimals;
    const char* name;
};

constexpr std::array<Number, 3> coordinates = {
    {{31, 38, 3, "coordinate"}, {39, 46, 3, "coordinate"}, {47, 54, 3, "coordinate"}}};
constexpr Number occupancy = {55, 60, 2, "occupancy"};
constexpr Number temperature = {61, 66, 2, "temperature factor"};

std::optional<float> read(std::string_view row, const Number& number) {
    return finiteFloat(field(row, number.first, number.last));
}

[[noreturn]] void refuse(const std::string& what, const SaveReport& report) {
    report.refuse(what + " does not fit the columns of a PDB file", mmcifHolds);
}

void put(std::string& row, const Number& number, float value, const SaveReport& report) {
    std::array<char, 64> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                      std::chars_format::fixed, number.decimals);
    const auto length = static_cast<std::size_t>(end - text.data());
    if (error != std::errc() || length > number.last - number.first + 1)
        refuse("the " + std::string(number.name) + ' ' + numberText(value), report);
    putRight(row, number.first, number.last, {text.data(), length});
}

char letterOf(std::string_view row) {
    const std::string_view letter = field(row, 17, 17);
    return letter.empty() ? '\0' : letter.front();
}

bool hasPositionOf(std::string_view row, const SavedAtom& atom) {
    bool isThere = true;
    bool isSame = true;
    for (const std::size_t axis : {0, 1, 2}) {
        const std::optional<float> value = read(row, coordinates[axis]);
        isThere = isThere && value;
        isSame = isSame && value == atom.position[axis];
    }
    return atom.hasPosition ? isThere && isSame : !isThere;
}

// In files of an older form, columns 79 and 80 hold a line number, which has no sign.
std::int8_t chargeOf(std::string_view row) {
    const std::string_view charge = field(row, 79, 80);
    return charge.find_first_of("+-") == std::string_view::npos ? std::int8_t{0}
                                                                : formalCharge(charge);
}

bool hasNumbersOf(std::string_view row, const SavedAtom& atom) {
    const std::string_view text = field(row, occupancy.first, occupancy.last);
    const float occupied = text == "1.00" ? 1.0F : finiteFloat(text).value_or(1.0F);
    return occupied == atom.details.occupancy &&
           read(row, temperature).value_or(0.0F) == atom.temperature &&
           chargeOf(row) == atom.details.formalCharge;
}

void putPosition(std::string& row, const SavedAtom& atom, const SaveReport& report) {
    for (const std::size_t axis : {0, 1, 2}) {
        const Number& number = coordinates[axis];
        if (!atom.hasPosition)
            putRight(row, number.first, number.last, {});
        else if (read(row, number) != atom.position[axis])
            put(row, number, atom.position[axis], report);
    }
}

void putCharge(std::string& row, std::int8_t charge, const SaveReport& report) {
    std::string text;
    if (charge != 0)
        text = std::to_string(std::abs(charge)) + (charge > 0 ? '+' : '-');
    if (text.size() > 2)
        refuse("the formal charge " + std::to_string(charge), report);
    if (charge != 0 || row.size() > 78)
        putRight(row, 79, 80, text);
}

void putSymbol(std::string& row, std::string symbol, const SaveReport& report) {
    if (symbol.size() > 2)
        refuse("the element " + inQuotes(symbol), report);
    std::ranges::transform(symbol, symbol.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    putRight(row, 77, 78, symbol);
}

// A name begins in the second of its columns, unless it fills all four or its element's symbol has
// two letters.
std::string nameColumns(const std::string& name, const std::string& element,
                        const SaveReport& report) {
    if (name.size() > 4)
        refuse("the atom name " + inQuotes(name), report);
    const bool isWide = name.size() == 4 || (element.size() == 2 && startsWith(name, element));
    std::string columns = isWide ? name : ' ' + name;
    columns.resize(4, ' ');
    return columns;
}

std::string residueNumberText(const std::string& text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    const std::string encoded = isNumber && value > 9999 ? hybrid36(value, 4) : std::string();
    return encoded.empty() ? text : encoded;
}

} // namespace

void putRight(std::string& row, std::size_t first, std::size_t last, std::string_view text) {
    if (row.size() < last)
        row.resize(last, ' ');
    const std::size_t width = last - first + 1;
    row.replace(first - 1, width, std::string(width - text.size(), ' ').append(text));
}

std::string serialText(std::int32_t serial, bool areDecimal) {
    return serial > 99999 && areDecimal ? std::to_string(serial) : hybrid36(serial, 5);
}

bool isUnchanged(std::string_view row, const WrittenAtom& written) {
    if (letterOf(row) != written.letter)
        return false;
    if (hasPositionOf(row, written.atom) && hasNumbersOf(row, written.atom))
        return true;
    // Of such a row nothing but names was read.
    return !written.atom.hasPosition && faultOf(row) != RowFault::None;
}

std::string changedRow(std::string_view row, const WrittenAtom& written, const SaveReport& report) {
    const SavedAtom& atom = written.atom;
    std::string changed(row);
    if (!hasPositionOf(row, atom))
        putPosition(changed, atom, report);
    if (letterOf(row) != written.letter)
        putRight(changed, 17, 17, std::string_view(&written.letter, written.letter ? 1 : 0));
    const std::string_view text = field(row, occupancy.first, occupancy.last);
    if (finiteFloat(text).value_or(1.0F) != atom.details.occupancy)
        put(changed, occupancy, atom.details.occupancy, report);
    if (read(row, temperature).value_or(0.0F) != atom.temperature)
        put(changed, temperature, atom.temperature, report);
    if (chargeOf(row) != atom.details.formalCharge)
        putCharge(changed, atom.details.formalCharge, report);
    return changed;
}

std::string newRow(std::string_view like, const WrittenAtom& written, const SavedContent& content,
                   std::int32_t serial, bool areSerialsDecimal, const SaveReport& report) {
    const SavedAtom& atom = written.atom;
    const std::string& element = content.names[atom.element];
    std::string row(atom.details.isHetero ? "HETATM" : "ATOM  ");
    const std::string number = serialText(serial, areSerialsDecimal);
    row.resize(11, ' ');
    // Six digits of an ATOM record begin in the blank column after its name.
    row.replace(row.front() == 'A' && number.size() > 5 ? 5 : 6, number.size(), number);
    row.resize(12, ' ');
    row += nameColumns(content.names[atom.name], element, report);
    row += written.letter ? written.letter : ' ';
    row += columns(like, 18, 27);
    row.resize(54, ' ');
    if (atom.hasPosition)
        for (const std::size_t axis : {0, 1, 2})
            put(row, coordinates[axis], atom.position[axis], report);
    put(row, occupancy, atom.details.occupancy, report);
    put(row, temperature, atom.temperature, report);
    row.resize(72, ' ');
    row += columns(like, 73, 76);
    row.resize(76, ' ');
    putSymbol(row, element, report);
    row.resize(80, ' ');
    putCharge(row, atom.details.formalCharge, report);
    return row;
}

std::string rowBeginning(const SavedModel& model, const SavedResidue& residue,
                         std::string_view neighbour, const SavedContent& content,
                         const SaveReport& report) {
    const std::string& name = content.names[residue.name];
    std::string chain = content.names[model.chains[residue.chain]];
    if (!neighbour.empty())
        chain = std::string(field(neighbour, 21, 22));
    else if (chain == "_") // as a blank one is shown
        chain.clear();
    const std::string number = residueNumberText(content.names[residue.number]);
    const std::string& insertion = content.names[residue.insertion];
    const bool fits = name.size() + std::max<std::size_t>(chain.size(), 1) <= 5 &&
                      name.size() <= 4 && chain.size() <= 2 && number.size() <= 4 &&
                      insertion.size() <= 1;
    if (!fits)
        refuse("residue " + inQuotes(name + ' ' + number + insertion) + " of chain " +
                   inQuotes(chain),
               report);
    const bool isHetero = model.atoms[residue.firstAtom].details.isHetero;
    std::string row(isHetero ? "HETATM" : "ATOM  ");
    putRight(row, 18, name.size() == 4 ? 21 : 20, name);
    putRight(row, name.size() == 4 ? 22 : 21, 22, chain);
    putRight(row, 23, 26, number);
    putRight(row, 27, 27, insertion);
    return row;
}

void remarkOnRounded(std::size_t atoms, SaveReport& report) {
    if (atoms != 0)
        report.remark("the numbers of " + std::to_string(atoms) +
                      (atoms == 1 ? " atom" : " atoms") +
                      " are rounded to the columns of a PDB file");
}

} // namespace memory_host::pdb
