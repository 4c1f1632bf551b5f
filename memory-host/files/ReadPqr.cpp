// The PQR format: PDB records, in which an atom's row has its partial charge and radius after the
// coordinates, and blanks between words instead of fixed columns.
#include "PdbBonds.h"
#include "PdbRecords.h"
#include "ResidueKinds.h"

#include <algorithm>
#include <array>

namespace memory_host {

namespace {

// The fields of a row as they are written.
struct Row {
    std::string_view serial;
    std::string_view name;
    std::string_view residue;
    std::string_view chain; // may be empty
    std::string_view number;
    std::string_view insertion; // may be empty
    std::array<std::string_view, 3> position;
    std::string_view charge;
    std::string_view radius;
};

// The words of a row: at most one more than any row has.
struct Words {
    std::array<std::string_view, 12> word;
    std::size_t count = 0;
};

Words wordsOf(std::string_view text) {
    Words words;
    while (words.count != words.word.size()) {
        const std::string_view word = takeWord(text);
        if (word.empty())
            break;
        words.word[words.count++] = word;
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

// Coordinates are all written in the same form. An integer before them is the residue number, and
// the word before that the chain.
bool isFirstCoordinate(std::string_view x, std::string_view y, std::string_view z) {
    const auto hasPoint = [](std::string_view number) {
        return number.find_first_of(".eEnN") != std::string_view::npos;
    };
    return hasPoint(x) || !(hasPoint(y) || hasPoint(z));
}

bool splitWords(std::string_view line, Row& row) {
    // After the record's name, because a long serial number follows without a blank.
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

// Whether all the numbers of a row are some.
bool areNumbers(const Row& row) {
    return std::ranges::all_of(
               row.position, [](std::string_view text) { return finiteFloat(text).has_value(); }) &&
           finiteFloat(row.charge).has_value() && finiteFloat(row.radius).has_value();
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

// Splits a line that begins as a record of an atom. Returns whether it has the form of a row; its
// numbers may still be invalid.
bool split(std::string_view line, Row& row) {
    return splitWords(line, row) || splitColumns(line, row);
}

// The format has no elements: they follow from the names.
Element elementOf(const Row& row, std::string_view line) {
    if (const Element ion = elementOfIon(row.name, row.residue); ion != unknownElement)
        return ion;
    const bool inPolymer = residueKind(row.residue) != ResidueKind::Other;
    const std::string_view columns = pdb::columns(line, 13, 16);
    if (trimmed(columns) == row.name && (columns.front() == ' ' || row.name.size() == 4))
        return elementOfPdbName(columns, inPolymer);
    return elementOfLeftName(row.name, inPolymer);
}

// Whether a text has more rows of PQR than records of PDB. Rows that could be both are PQR if the
// file is named so, unless a larger molecule has no negative charge: then they are occupancies.
// With another name, rows with charges of mostly 1 are PDB's.
bool isPqr(const FileSample& sample) {
    std::string_view text = sample.bytes;
    constexpr std::size_t enoughRows = 1000;
    constexpr std::size_t fewRows = 10;
    std::size_t ofPdb = 0;
    std::size_t ofPqr = 0;
    std::size_t ofBoth = 0;
    std::size_t negative = 0;
    std::size_t full = 0;
    while (!text.empty() && ofPdb + ofPqr + ofBoth < enoughRows) {
        const std::string_view line = takeLine(text);
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
    // These are occupancies and temperature factors, after coordinates outside of their columns.
    if (!sample.isNamedSo && full > ofPqr / 2)
        return false;
    const bool areBothPqr = sample.isNamedSo && (ofPqr != 0 || negative != 0 || ofBoth < fewRows);
    return ofPqr + (areBothPqr ? ofBoth : 0) > ofPdb + (areBothPqr ? 0 : ofBoth);
}

const pdb::RecordReader::Accepted accepted = {
    "accepted are PQR files of whole ATOM and HETATM rows, with blanks around x, y, z, charge and "
    "radius",
    "rows of 10 words, or 11 with a chain",
    {"numbers as x, y and z", "numbers"}};

class PqrReader : public pdb::RecordReader {
public:
    PqrReader(Bytes bytes, FileReport& report) : RecordReader(std::move(bytes), accepted, report) {}

private:
    void readAtom(std::string_view record) override;
    void checkLastAtom(std::string_view record) override;
};

void PqrReader::checkLastAtom(std::string_view record) {
    Row row;
    if (!split(record, row))
        refuseCut(record);
    m_report.remark(FileReport::Kind::Cut, line(),
                    "the last row has no line end: the file may have been cut");
}

void PqrReader::readAtom(std::string_view record) {
    Row words;
    AtomRow row;
    if (!split(record, words)) {
        row.name = pdb::field(record, 13, 16);
        addFaulty(row, inQuotes(record) + " is no row of a PQR file");
        return;
    }
    row.serial = pdb::packedSerial(words.serial);
    row.details.serial = serialNumber(words.serial);
    row.details.isHetero = record.front() == 'H';
    row.name = words.name;
    row.residue = words.residue;
    row.chain = words.chain;
    row.number = words.number;
    row.insertion = words.insertion;
    row.element = elementOf(words, record);
    const auto& xyz = words.position;
    m_numbers.setPosition(
        row, {finiteFloat(xyz[0]), finiteFloat(xyz[1]), finiteFloat(xyz[2])}, false, line(),
        [&] { return std::string(xyz[0]).append(" ").append(xyz[1]).append(" ").append(xyz[2]); });
    const std::optional<float> charge = finiteFloat(words.charge);
    const std::optional<float> radius = finiteFloat(words.radius);
    row.partial = {charge.value_or(0.0F), radius.value_or(0.0F), charge && radius};
    if (!row.partial.isKnown)
        m_report.remark(FileReport::Kind::Charge, line(), [&] {
            return "the charge " + inQuotes(words.charge) + " and the radius " +
                   inQuotes(words.radius) + " of the atom " + inQuotes(row.name) +
                   " are no numbers: it has neither; accepted are numbers";
        });
    m_builder.add(row);
}

FileContent readPqr(Bytes bytes, const std::string& stem, FileReport& report) {
    FileContent content;
    content.structures.push_back(PqrReader(std::move(bytes), report).read(stem));
    return content;
}

constexpr auto endings = std::to_array<std::string_view>({".pqr"});

} // namespace

extern const FileFormat pqrFormat = {.name = "PQR",
                                     .holds = FileFormat::Holds::Structure,
                                     .form = FileFormat::Form::Text,
                                     .endings = endings,
                                     .recognises = isPqr,
                                     .read = readPqr};

} // namespace memory_host
