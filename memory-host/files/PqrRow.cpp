#include "PqrRow.h"

#include "FieldText.h"
#include "PdbColumns.h"
#include "ResidueKinds.h"

#include <algorithm>

namespace memory_host::pqr {

namespace {

// The words of a row: at most one more than any row has.
struct Words {
    std::array<std::string_view, 12> word;
    std::size_t count = 0;
};

Words wordsOf(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    Words words;
    for (std::size_t at = text.find_first_not_of(blanks);
         at != std::string_view::npos && words.count != words.word.size();
         at = text.find_first_not_of(blanks, at)) {
        const std::size_t end = std::min(text.find_first_of(blanks, at), text.size());
        words.word[words.count++] = text.substr(at, end - at);
        at = end;
    }
    return words;
}

// "12", "-5", "52A", or with a chain of one letter in front: "A1000".
bool splitNumber(std::string_view text, bool mayHaveChain, Row& row) {
    if (mayHaveChain && text.size() > 1 && isLetter(text.front())) {
        row.chain = text.substr(0, 1);
        text.remove_prefix(1);
    }
    std::size_t end = text.starts_with('-') ? 1 : 0;
    const std::size_t first = end;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    row.number = text.substr(0, end);
    row.insertion = text.substr(end);
    return end > first && row.insertion.size() <= 1 && std::ranges::all_of(row.insertion, isLetter);
}

// Coordinates are all written in one way. An integer in front of them is a residue number, and the
// one before it the chain.
bool isFirstCoordinate(std::string_view x, std::string_view y, std::string_view z) {
    const auto hasPoint = [](std::string_view number) {
        return number.find_first_of(".eEnN") != std::string_view::npos;
    };
    return hasPoint(x) || !(hasPoint(y) || hasPoint(z));
}

bool splitWords(std::string_view line, Row& row) {
    // Behind the record's name, for the serial number may follow at once.
    const Words words = wordsOf(line.substr(line.starts_with("ATOM") ? 4 : 6));
    const auto& word = words.word;
    if (words.count != 9 && words.count != 10)
        return false;
    row = Row{};
    row.serial = word[0];
    row.name = word[1];
    row.residue = word[2];
    if (words.count == 10)
        row.chain = word[3];
    const std::size_t number = words.count == 10 ? 4 : 3;
    if (row.chain.size() > 4 || !splitNumber(word[number], words.count == 9, row))
        return false;
    row.position = {word[number + 1], word[number + 2], word[number + 3]};
    row.charge = word[number + 4];
    row.radius = word[number + 5];
    return isFirstCoordinate(row.position[0], row.position[1], row.position[2]);
}

// Programs that keep to PDB's columns up to the coordinates leave no blanks between wide numbers.
bool splitColumns(std::string_view line, Row& row) {
    if (line.size() <= pdb::coordinateColumns || pdb::faultOf(line) != pdb::RowFault::None)
        return false;
    const Words words = wordsOf(line.substr(pdb::coordinateColumns));
    if (words.count != 2)
        return false;
    row = Row{};
    row.serial = pdb::field(line, 7, 11);
    row.name = pdb::field(line, 13, 16);
    row.residue = pdb::field(line, 18, 21);
    row.chain = pdb::field(line, 22, 22);
    row.number = pdb::residueNumber(line);
    row.insertion = pdb::insertionCode(line);
    for (const std::size_t axis : {0, 1, 2})
        row.position[axis] = pdb::field(line, 31 + 8 * axis, 38 + 8 * axis);
    row.charge = words.word[0];
    row.radius = words.word[1];
    return areNumbers(row);
}

} // namespace

bool split(std::string_view line, Row& row) {
    return splitWords(line, row) || splitColumns(line, row);
}

bool areNumbers(const Row& row) {
    return std::ranges::all_of(
               row.position, [](std::string_view text) { return finiteFloat(text).has_value(); }) &&
           finiteFloat(row.charge).has_value() && finiteFloat(row.radius).has_value();
}

Element elementOf(const Row& row, std::string_view line) {
    if (const Element ion = elementOfIon(row.name, row.residue); ion != unknownElement)
        return ion;
    const bool inPolymer = residueKind(row.residue) != ResidueKind::Other;
    const std::string_view columns = pdb::columns(line, 13, 16);
    if (trimmed(columns) == row.name && (columns.front() == ' ' || row.name.size() == 4))
        return elementOfPdbName(columns, inPolymer);
    return elementOfLeftName(row.name, inPolymer);
}

bool isText(std::string_view text, bool isNamedSo) {
    constexpr std::size_t enoughRows = 1000;
    constexpr std::size_t fewRows = 10;
    std::size_t ofPdb = 0;
    std::size_t ofPqr = 0;
    std::size_t ofBoth = 0;
    std::size_t negative = 0;
    std::size_t full = 0;
    for (std::size_t at = 0; at < text.size() && ofPdb + ofPqr + ofBoth < enoughRows;) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string_view line = text.substr(at, end - at);
        at = end + 1;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (!pdb::isAtomRecord(line))
            continue;
        Row row;
        const bool fitsPdb = pdb::fitsColumns(line);
        const bool fitsPqr = split(line, row) && areNumbers(row);
        ofPdb += fitsPdb && !fitsPqr;
        ofPqr += fitsPqr && !fitsPdb;
        ofBoth += fitsPqr && fitsPdb;
        full += fitsPqr && !fitsPdb && finiteFloat(row.charge) == 1.0F;
        negative += fitsPqr && fitsPdb && row.charge.starts_with('-');
    }
    // Occupancies and temperature factors behind coordinates that keep to no columns.
    if (!isNamedSo && full > ofPqr / 2)
        return false;
    const bool areBothPqr = isNamedSo && (ofPqr != 0 || negative != 0 || ofBoth < fewRows);
    return ofPqr + (areBothPqr ? ofBoth : 0) > ofPdb + (areBothPqr ? 0 : ofBoth);
}

} // namespace memory_host::pqr
