// The PDB format: records of fixed columns. The columns are taken apart here and not by gemmi's
// reader, because that one reads blank coordinates as 0, ends at the first END, and takes line
// numbers of old files for charges that it refuses.
#include "AtomNumbers.h"
#include "FieldText.h"
#include "PdbBonds.h"
#include "PdbColumns.h"
#include "Readers.h"
#include "ResidueKinds.h"
#include "TableBuilder.h"

#include <algorithm>
#include <deque>
#include <iterator>

namespace memory_host {

namespace {

// Up to here a record has its coordinates.
constexpr std::size_t coordinateColumns = 54;
const std::string acceptedRecords =
    "accepted are PDB files of whole ATOM and HETATM records, with coordinates in columns 31 to 54";

using pdb::columns;
using pdb::field;

bool isRecord(std::string_view line, std::string_view record) {
    return startsWith(line, record) && (line.size() == record.size() || line[record.size()] == ' ');
}

// A serial number beyond five digits may begin right behind the record's name.
bool isAtomRecord(std::string_view line) {
    return startsWith(line, "HETATM") ||
           (startsWith(line, "ATOM") && (line.size() == 4 || line[4] == ' ' || isDigit(line[4])));
}

class PdbReader {
public:
    PdbReader(Bytes bytes, FileReport& report)
        : m_bytes(std::move(bytes)), m_report(report), m_builder(report),
          m_numbers(report, {"numbers in columns 31 to 54", "numbers in columns 61 to 66"}) {}

    StructureTable read(const std::string& stem);

private:
    void readLines();
    void readLine(std::string_view line);
    void readAtom(std::string_view line);
    void readPosition(std::string_view line, AtomRow& row);
    void startModel(std::string_view number);
    void checkEnd(std::string_view line) const;
    std::string_view residueNumber(std::string_view text);

    Bytes m_bytes;
    FileReport& m_report;
    TableBuilder m_builder;
    AtomNumbers m_numbers;
    std::size_t m_line = 0;
    std::size_t m_modelLine = 0; ///< of the MODEL record that no ENDMDL has followed yet
    std::size_t m_shortestAtom = std::string_view::npos;
    std::size_t m_shortestOther = std::string_view::npos; ///< of ANISOU and its like
    bool m_isInModel = false;
    std::string m_identifier;
    std::deque<std::string> m_decoded; ///< residue numbers; texts of the table point here
    std::string_view m_lastEncoded;
};

StructureTable PdbReader::read(const std::string& stem) {
    readLines();
    m_bytes = {};
    if (m_builder.atomCount() == 0)
        m_report.refuse(0, "is no structure: it has no ATOM or HETATM record", acceptedFiles());
    m_numbers.check(acceptedRecords);
    if (m_modelLine != 0)
        m_report.remark(FileReport::Kind::Cut, m_modelLine,
                        "this model has no ENDMDL record: the file may have been cut");
    return m_builder.finish(m_identifier.empty() ? stem : m_identifier);
}

void PdbReader::readLines() {
    const std::string_view text = m_bytes.text();
    for (std::size_t from = 0; from < text.size();) {
        ++m_line;
        const std::size_t to = text.find('\n', from);
        std::string_view line = text.substr(from, to - from);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (to == std::string_view::npos)
            checkEnd(line);
        readLine(line);
        from = to == std::string_view::npos ? text.size() : to + 1;
    }
}

// The last line has no line end. It may still be whole; but a file that was cut must not pass for
// one with fewer atoms.
void PdbReader::checkEnd(std::string_view line) const {
    constexpr std::array<std::string_view, 8> records = {"ATOM",   "HETATM", "ANISOU", "SIGATM",
                                                         "SIGUIJ", "MODEL",  "ENDMDL", "TER"};
    const std::string_view word = trimmed(line);
    bool isCut = false;
    if (isAtomRecord(line)) {
        isCut = line.size() < coordinateColumns ||
                (m_shortestAtom != std::string_view::npos && line.size() < m_shortestAtom);
    } else if (startsWith(line, "ANISOU") || startsWith(line, "SIG")) {
        isCut = m_shortestOther != std::string_view::npos && line.size() < m_shortestOther;
    } else if (!word.empty() && word != "END" && word != "TER" && word != "ENDMDL") {
        isCut = std::ranges::any_of(
            records, [word](std::string_view record) { return record.starts_with(word); });
    }
    if (isCut)
        m_report.refuse(
            m_line, "the file is cut: this last line ends in column " + std::to_string(line.size()),
            acceptedRecords);
}

void PdbReader::readLine(std::string_view line) {
    if (isAtomRecord(line)) {
        readAtom(line);
        m_shortestAtom = std::min(m_shortestAtom, line.size());
    } else if (startsWith(line, "ANISOU") || startsWith(line, "SIG")) {
        m_shortestOther = std::min(m_shortestOther, line.size());
    } else if (isRecord(line, "MODEL")) {
        startModel(trimmed(line.substr(std::min<std::size_t>(line.size(), 6))));
        m_modelLine = m_line;
    } else if (isRecord(line, "ENDMDL") || isRecord(line, "END")) {
        m_isInModel = false;
        m_modelLine = 0;
    } else if (isRecord(line, "TER")) {
        m_builder.endResidues();
    } else if (isRecord(line, "HEADER")) {
        const std::string_view identifier = field(line, 63, 66);
        const bool isIdentifier =
            identifier.size() == 4 && isDigit(identifier[0]) &&
            std::ranges::all_of(identifier, [](char c) { return isLetter(c) || isDigit(c); });
        if (isIdentifier && m_identifier.empty())
            std::ranges::transform(identifier, std::back_inserter(m_identifier), lowerCase);
    } else {
        pdb::readBonds(line, m_line, m_builder.listedBonds());
    }
}

void PdbReader::startModel(std::string_view number) {
    m_builder.startModel(number, false);
    m_isInModel = true;
}

void PdbReader::readAtom(std::string_view line) {
    if (!m_isInModel)
        startModel({});
    AtomRow row;
    row.serial = pdb::serialOf(line);
    row.name = field(line, 13, 16);
    row.alternative = field(line, 17, 17);
    row.residue = field(line, 18, 20);
    // The column before the chain's is unused by the format, and the first of two by extension.
    row.chain = field(line, 21, 22);
    row.number = residueNumber(field(line, 23, 26));
    row.insertion = field(line, 27, 27);
    row.segment = field(line, 73, 76);
    readPosition(line, row);
    const std::string_view temperature = field(line, 61, 66);
    m_numbers.setTemperature(row, temperature, finiteFloat(temperature), m_line);
    row.element = elementOf(field(line, 77, 78));
    if (row.element == unknownElement && field(line, 77, 78) != "X")
        row.element =
            elementOfPdbName(columns(line, 13, 16), residueKind(row.residue) != ResidueKind::Other);
    m_builder.add(row);
}

void PdbReader::readPosition(std::string_view line, AtomRow& row) {
    std::array<std::optional<float>, 3> values;
    bool isBlank = true;
    for (const std::size_t axis : {0, 1, 2}) {
        const std::string_view text = field(line, 31 + 8 * axis, 38 + 8 * axis);
        values[axis] = finiteFloat(text);
        isBlank = isBlank && text.empty();
    }
    m_numbers.setPosition(row, values, isBlank, m_line,
                          [line] { return std::string(columns(line, 31, coordinateColumns)); });
}

// Beyond 9999 residues a number starts with a letter: A000 is 10000, and a000 follows on ZZZZ.
std::string_view PdbReader::residueNumber(std::string_view text) {
    constexpr int width = 4;
    constexpr int lettersFirst = 10 * 36 * 36 * 36;
    constexpr int perCase = 26 * 36 * 36 * 36;
    if (text.size() != width || !isLetter(text[0]))
        return text;
    if (text != m_lastEncoded) {
        int value = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + width, value, 36);
        if (error != std::errc() || stop != text.data() + width)
            return text;
        const int cases = text[0] >= 'a' ? perCase : 0;
        m_decoded.push_back(std::to_string(value - lettersFirst + 10000 + cases));
        m_lastEncoded = text;
    }
    return m_decoded.back();
}

} // namespace

StructureTable readPdb(Bytes bytes, const std::string& stem, FileReport& report) {
    return PdbReader(std::move(bytes), report).read(stem);
}

} // namespace memory_host
