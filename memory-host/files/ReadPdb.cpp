// The PDB format: rows of fixed columns.
#include "EditPdb.h"
#include "PdbBonds.h"
#include "PdbRecords.h"
#include "ResidueKinds.h"
#include "WritePdb.h"

#include <algorithm>
#include <deque>

namespace memory_host {

namespace {

const pdb::RecordReader::Accepted accepted = {
    "accepted are PDB files of whole ATOM and HETATM records, with coordinates in columns 31 to 54",
    "whole records with coordinates in columns 31 to 54",
    {"numbers in columns 31 to 54", "numbers in columns 61 to 66"}};

class PdbReader : public pdb::RecordReader {
public:
    PdbReader(Bytes bytes, FileReport& report) : RecordReader(std::move(bytes), accepted, report) {}

private:
    void readAtom(std::string_view record) override;
    void checkLastAtom(std::string_view record) override;
    Element elementByName(const AtomRow& row, std::string_view columns);
    void readPosition(std::string_view record, AtomRow& row);
    std::string_view residueNumber(std::string_view text);

    std::size_t m_shortestAtom = std::string_view::npos;
    bool m_areNamesLeft = false;       ///< names of atoms begin in the first of their columns
    std::deque<std::string> m_decoded; ///< residue numbers; texts of the table point here
    std::string_view m_lastEncoded;
};

void PdbReader::checkLastAtom(std::string_view record) {
    if (record.size() < pdb::coordinateColumns ||
        (m_shortestAtom != std::string_view::npos && record.size() < m_shortestAtom))
        refuseCut(record);
}

// In files of an older form, columns 79 and 80 hold a line number, which has no sign.
TAVIK::AtomDetails detailsOf(std::string_view record) {
    TAVIK::AtomDetails details;
    details.serial = serialNumber(pdb::serialNumberOf(record));
    details.isHetero = record.front() == 'H';
    const std::string_view occupancy = pdb::field(record, 55, 60);
    if (occupancy != "1.00")
        details.occupancy = finiteFloat(occupancy).value_or(1.0F);
    const std::string_view charge = pdb::field(record, 79, 80);
    if (charge.find_first_of("+-") != std::string_view::npos)
        details.formalCharge = formalCharge(charge);
    return details;
}

void PdbReader::readAtom(std::string_view record) {
    using pdb::columns;
    using pdb::field;
    m_shortestAtom = std::min(m_shortestAtom, record.size());
    AtomRow row;
    row.serial = pdb::serialOf(record);
    row.name = field(record, 13, 16);
    row.alternative = field(record, 17, 17);
    const pdb::ResidueColumns::Fields residue = m_residueColumns.read(columns(record, 18, 22));
    row.residue = residue.residue;
    row.chain = residue.chain;
    row.number = residueNumber(pdb::residueNumber(record));
    row.insertion = pdb::insertionCode(record);
    row.segment = field(record, 73, 76);
    row.element = elementOf(field(record, 77, 78));
    if (row.element == unknownElement && field(record, 77, 78) != "X")
        row.element = elementByName(row, columns(record, 13, 16));
    if (const pdb::RowFault fault = pdb::faultOf(record); fault != pdb::RowFault::None) {
        addFaulty(row, describe(fault, record));
        return;
    }
    readPosition(record, row);
    row.details = detailsOf(record);
    const std::string_view temperature = field(record, 61, 66);
    m_numbers.setTemperature(row, temperature, finiteFloat(temperature), line());
    m_builder.add(row);
}

// For files without elements. In some files all names begin in their first column.
Element PdbReader::elementByName(const AtomRow& row, std::string_view columns) {
    if (const Element ion = elementOfIon(row.name, row.residue); ion != unknownElement)
        return ion;
    m_areNamesLeft = m_areNamesLeft || isLeftName(columns);
    const bool inPolymer = residueKind(row.residue) != ResidueKind::Other;
    return m_areNamesLeft && !columns.starts_with(' ') ? elementOfLeftName(row.name, inPolymer)
                                                       : elementOfPdbName(columns, inPolymer);
}

void PdbReader::readPosition(std::string_view record, AtomRow& row) {
    std::array<std::optional<float>, 3> values;
    bool isBlank = true;
    for (const std::size_t axis : {0, 1, 2}) {
        const std::string_view text = pdb::field(record, 31 + 8 * axis, 38 + 8 * axis);
        values[axis] = finiteFloat(text);
        isBlank = isBlank && text.empty();
    }
    m_numbers.setPosition(row, values, isBlank, line(), [record] {
        return std::string(pdb::columns(record, 31, pdb::coordinateColumns));
    });
}

// Hybrid-36: numbers beyond 9999 start with a letter. A000 is 10000, and a000 follows ZZZZ.
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

// Whether one of the lines begins with a record of the format.
bool hasRecord(std::string_view text) {
    constexpr auto records = std::to_array<std::string_view>(
        {"ATOM ",  "HETATM", "HEADER", "OBSLTE", "TITLE ", "SPLIT ", "CAVEAT", "COMPND", "SOURCE",
         "KEYWDS", "EXPDTA", "NUMMDL", "MDLTYP", "AUTHOR", "REVDAT", "SPRSDE", "JRNL  ", "REMARK",
         "DBREF",  "SEQADV", "SEQRES", "MODRES", "HET   ", "HETNAM", "HETSYN", "FORMUL", "HELIX ",
         "SHEET ", "TURN  ", "SSBOND", "LINK  ", "LINKR ", "CISPEP", "SITE  ", "CRYST1", "ORIGX",
         "SCALE",  "MTRIX",  "MODEL ", "TER",    "ENDMDL", "CONECT", "USER",   "FTNOTE"});
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        if (std::ranges::any_of(
                records, [line](std::string_view record) { return startsWith(line, record); }))
            return true;
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return false;
}

// The first atom may come long after the beginning.
bool isPdb(const FileSample& sample) {
    return sample.isWhole ? pdb::hasAtoms(sample.bytes) : hasRecord(sample.bytes);
}

FileContent readPdb(Bytes bytes, const std::string& stem, FileReport& report) {
    FileContent content;
    content.structures.push_back(PdbReader(std::move(bytes), report).read(stem));
    return content;
}

constexpr auto endings = std::to_array<std::string_view>({".pdb", ".ent"});

} // namespace

extern const FileFormat pdbFormat = {.name = "PDB",
                                     .holds = FileFormat::Holds::Structure,
                                     .form = FileFormat::Form::Text,
                                     .endings = endings,
                                     .recognises = isPdb,
                                     .read = readPdb,
                                     .write = writePdb,
                                     .edit = editPdb,
                                     .addsBonds = true};

} // namespace memory_host
