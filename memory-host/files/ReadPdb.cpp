// The PDB format, records of fixed columns, and PQR, which has the same records with other rows of
// atoms. They are taken apart here and not by gemmi's reader, because that one reads blank
// coordinates as 0, ends at the first END, and takes line numbers of old files for charges that it
// refuses.
#include "AtomNumbers.h"
#include "FieldText.h"
#include "PdbBonds.h"
#include "PdbColumns.h"
#include "PqrRow.h"
#include "Readers.h"
#include "ResidueKinds.h"
#include "TableBuilder.h"

#include <algorithm>
#include <deque>
#include <iterator>

namespace memory_host {

namespace {

// More lines than these in a wrong form, and the file is something else.
constexpr std::size_t handful = 10;

enum class RowForm { Pdb, Pqr };

// What a format's messages say that it accepts.
struct Wording {
    std::string file;
    std::string row;
    AtomNumbers::Accepted numbers;
};
Wording wordingOf(RowForm form) {
    if (form == RowForm::Pqr)
        return {"accepted are PQR files of whole ATOM and HETATM rows, with blanks around x, y, z, "
                "charge and radius",
                "rows of 10 words, or 11 with a chain",
                {"numbers as x, y and z", "numbers"}};
    return {"accepted are PDB files of whole ATOM and HETATM records, with coordinates in columns "
            "31 to 54",
            "whole records with coordinates in columns 31 to 54",
            {"numbers in columns 31 to 54", "numbers in columns 61 to 66"}};
}

class PdbReader {
public:
    PdbReader(Bytes bytes, RowForm form, FileReport& report)
        : m_bytes(std::move(bytes)), m_form(form), m_accepted(wordingOf(form).file),
          m_report(report), m_builder(report), m_numbers(report, wordingOf(form).numbers) {}

    StructureTable read(const std::string& stem);

private:
    void readLines();
    void readLine(std::string_view line);
    void readOtherRecord(std::string_view line);
    void readPdbAtom(std::string_view line);
    void readPqrAtom(std::string_view line);
    Element elementByName(const AtomRow& row, std::string_view columns);
    void readPosition(std::string_view line, AtomRow& row);
    void addFaulty(const AtomRow& row, const std::string& fault);
    void startModel(std::string_view number);
    void checkEnd(std::string_view line);
    bool isCut(std::string_view line) const;
    [[noreturn]] void refuseEmpty() const;
    std::string_view residueNumber(std::string_view text);

    Bytes m_bytes;
    RowForm m_form;
    std::string m_accepted; ///< as the end of a message
    FileReport& m_report;
    TableBuilder m_builder;
    AtomNumbers m_numbers;
    pdb::ResidueColumns m_residueColumns;
    /// With their lines' numbers; the atoms tell which chains there are.
    std::vector<std::pair<std::string_view, std::size_t>> m_links;
    std::size_t m_line = 0;
    std::size_t m_faultyRows = 0;
    std::size_t m_faultyLine = 0; ///< the first one
    std::string m_fault;          ///< of the first one
    std::size_t m_wronglyWrittenLine = 0;
    std::string m_wronglyWritten; ///< the name of a record there
    std::size_t m_modelLine = 0;  ///< of the MODEL record that no ENDMDL has followed yet
    std::size_t m_shortestAtom = std::string_view::npos;
    std::size_t m_shortestOther = std::string_view::npos; ///< of ANISOU and its like
    bool m_isInModel = false;
    bool m_areNamesLeft = false; ///< names of atoms begin in the first of their columns
    std::string m_identifier;
    std::deque<std::string> m_decoded; ///< residue numbers; texts of the table point here
    std::string_view m_lastEncoded;
};

StructureTable PdbReader::read(const std::string& stem) {
    readLines();
    for (const auto& [line, number] : m_links)
        pdb::readLink(line, number, m_residueColumns, m_builder.listedBonds());
    m_links = {};
    m_bytes = {};
    if (m_builder.atomCount() == 0)
        refuseEmpty();
    if (!m_numbers.hasPositions() && m_faultyRows != 0)
        m_report.refuse(m_faultyLine, m_fault + ", and no atom of the file has a position",
                        m_accepted);
    m_numbers.check(m_accepted);
    if (m_modelLine != 0)
        m_report.remark(FileReport::Kind::Cut, m_modelLine,
                        "this model has no ENDMDL record: the file may have been cut");
    return m_builder.finish(m_identifier.empty() ? stem : m_identifier);
}

void PdbReader::refuseEmpty() const {
    if (m_wronglyWrittenLine != 0)
        m_report.refuse(m_wronglyWrittenLine,
                        "is no structure: " + inQuotes(m_wronglyWritten) +
                            " is no record, as their names are in capital letters",
                        acceptedFiles());
    m_report.refuse(0, "is no structure: it has no ATOM or HETATM record", acceptedFiles());
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

// Whether a line, the last one, ends where records do not.
bool PdbReader::isCut(std::string_view line) const {
    constexpr std::array<std::string_view, 8> records = {"ATOM",   "HETATM", "ANISOU", "SIGATM",
                                                         "SIGUIJ", "MODEL",  "ENDMDL", "TER"};
    const std::string_view word = trimmed(line);
    if (pdb::isAtomRecord(line)) {
        pqr::Row row;
        return m_form == RowForm::Pqr
                   ? !pqr::split(line, row)
                   : line.size() < pdb::coordinateColumns ||
                         (m_shortestAtom != std::string_view::npos && line.size() < m_shortestAtom);
    }
    if (line.starts_with("ANISOU") || line.starts_with("SIG"))
        return m_shortestOther != std::string_view::npos && line.size() < m_shortestOther;
    return !word.empty() && word != "END" && word != "TER" && word != "ENDMDL" &&
           std::ranges::any_of(
               records, [word](std::string_view record) { return record.starts_with(word); });
}

// The last line has no line end. It may still be whole; but a file that was cut must not pass for
// one with fewer atoms.
void PdbReader::checkEnd(std::string_view line) {
    if (isCut(line))
        m_report.refuse(
            m_line, "the file is cut: this last line ends in column " + std::to_string(line.size()),
            m_accepted);
    if (m_form == RowForm::Pqr && pdb::isAtomRecord(line))
        m_report.remark(FileReport::Kind::Cut, m_line,
                        "the last row has no line end: the file may have been cut");
}

void PdbReader::readLine(std::string_view line) {
    if (!pdb::isAtomRecord(line)) {
        readOtherRecord(line);
        return;
    }
    if (!m_isInModel)
        startModel({});
    if (m_form == RowForm::Pqr)
        readPqrAtom(line);
    else
        readPdbAtom(line);
    m_shortestAtom = std::min(m_shortestAtom, line.size());
}

void PdbReader::readOtherRecord(std::string_view line) {
    using pdb::isRecord;
    if (line.starts_with("ANISOU") || line.starts_with("SIG")) {
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
        const std::string_view identifier = pdb::field(line, 63, 66);
        const bool isIdentifier =
            identifier.size() == 4 && isDigit(identifier[0]) &&
            std::ranges::all_of(identifier, [](char c) { return isLetter(c) || isDigit(c); });
        if (isIdentifier && m_identifier.empty())
            std::ranges::transform(identifier, std::back_inserter(m_identifier), lowerCase);
    } else if (const std::string_view name = pdb::wronglyWrittenRecord(line); name.empty()) {
        if (pdb::isLink(line))
            m_links.emplace_back(line, m_line);
        else
            pdb::readConnections(line, m_line, m_builder.listedBonds());
    } else {
        if (m_wronglyWrittenLine == 0) {
            m_wronglyWrittenLine = m_line;
            m_wronglyWritten = name;
        }
        // In the middle of others it would be an atom that is lost.
        if (m_builder.atomCount() != 0 && pdb::fitsColumns(line))
            m_report.remark(FileReport::Kind::Row, m_line, [&] {
                return inQuotes(name) +
                       " is no record, as their names are in capital letters: this line was not "
                       "read; accepted are " +
                       wordingOf(m_form).row;
            });
    }
}

void PdbReader::startModel(std::string_view number) {
    m_builder.startModel(number, false);
    m_isInModel = true;
}

// The atom of a line in a wrong form stays, and has no position. Nothing tells what its numbers
// are.
void PdbReader::addFaulty(const AtomRow& row, const std::string& fault) {
    if (++m_faultyRows == 1) {
        m_faultyLine = m_line;
        m_fault = fault;
    }
    if (m_faultyRows > handful)
        m_report.refuse(m_faultyLine,
                        m_fault + ", and " + std::to_string(handful) +
                            " further lines are in a wrong form, too",
                        m_accepted);
    m_report.remark(FileReport::Kind::Row, m_line, [&] {
        return fault + ": the atom " + inQuotes(row.name) + " has no position; accepted are " +
               wordingOf(m_form).row;
    });
    m_numbers.withoutPosition(m_line);
    m_builder.add(row);
}

void PdbReader::readPdbAtom(std::string_view line) {
    using pdb::columns;
    using pdb::field;
    AtomRow row;
    row.serial = pdb::serialOf(line);
    row.name = field(line, 13, 16);
    row.alternative = field(line, 17, 17);
    const pdb::ResidueColumns::Fields residue = m_residueColumns.read(columns(line, 18, 22));
    row.residue = residue.residue;
    row.chain = residue.chain;
    row.number = residueNumber(pdb::residueNumber(line));
    row.insertion = pdb::insertionCode(line);
    row.segment = field(line, 73, 76);
    row.element = elementOf(field(line, 77, 78));
    if (row.element == unknownElement && field(line, 77, 78) != "X")
        row.element = elementByName(row, columns(line, 13, 16));
    if (const pdb::RowFault fault = pdb::faultOf(line); fault != pdb::RowFault::None) {
        addFaulty(row, describe(fault, line));
        return;
    }
    readPosition(line, row);
    const std::string_view temperature = field(line, 61, 66);
    m_numbers.setTemperature(row, temperature, finiteFloat(temperature), m_line);
    m_builder.add(row);
}

// Where the file has no elements. Some files begin all names in their first column.
Element PdbReader::elementByName(const AtomRow& row, std::string_view columns) {
    if (const Element ion = elementOfIon(row.name, row.residue); ion != unknownElement)
        return ion;
    m_areNamesLeft = m_areNamesLeft || isLeftName(columns);
    const bool inPolymer = residueKind(row.residue) != ResidueKind::Other;
    return m_areNamesLeft && !columns.starts_with(' ') ? elementOfLeftName(row.name, inPolymer)
                                                       : elementOfPdbName(columns, inPolymer);
}

void PdbReader::readPosition(std::string_view line, AtomRow& row) {
    std::array<std::optional<float>, 3> values;
    bool isBlank = true;
    for (const std::size_t axis : {0, 1, 2}) {
        const std::string_view text = pdb::field(line, 31 + 8 * axis, 38 + 8 * axis);
        values[axis] = finiteFloat(text);
        isBlank = isBlank && text.empty();
    }
    m_numbers.setPosition(row, values, isBlank, m_line, [line] {
        return std::string(pdb::columns(line, 31, pdb::coordinateColumns));
    });
}

void PdbReader::readPqrAtom(std::string_view line) {
    pqr::Row words;
    AtomRow row;
    if (!pqr::split(line, words)) {
        row.name = pdb::field(line, 13, 16);
        addFaulty(row, inQuotes(line) + " is no row of a PQR file");
        return;
    }
    row.serial = pdb::packedSerial(words.serial);
    row.name = words.name;
    row.residue = words.residue;
    row.chain = words.chain;
    row.number = words.number;
    row.insertion = words.insertion;
    row.element = pqr::elementOf(words, line);
    const auto& xyz = words.position;
    m_numbers.setPosition(
        row, {finiteFloat(xyz[0]), finiteFloat(xyz[1]), finiteFloat(xyz[2])}, false, m_line,
        [&] { return std::string(xyz[0]).append(" ").append(xyz[1]).append(" ").append(xyz[2]); });
    const std::optional<float> charge = finiteFloat(words.charge);
    const std::optional<float> radius = finiteFloat(words.radius);
    row.partial = {charge.value_or(0.0F), radius.value_or(0.0F), charge && radius};
    if (!row.partial.isKnown)
        m_report.remark(FileReport::Kind::Charge, m_line, [&] {
            return "the charge " + inQuotes(words.charge) + " and the radius " +
                   inQuotes(words.radius) + " of the atom " + inQuotes(row.name) +
                   " are no numbers: it has neither; accepted are numbers";
        });
    m_builder.add(row);
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
    return PdbReader(std::move(bytes), RowForm::Pdb, report).read(stem);
}

StructureTable readPqr(Bytes bytes, const std::string& stem, FileReport& report) {
    return PdbReader(std::move(bytes), RowForm::Pqr, report).read(stem);
}

} // namespace memory_host
