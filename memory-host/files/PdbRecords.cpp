#include "PdbRecords.h"

#include "Fields.h"
#include "PdbBonds.h"

#include <algorithm>
#include <iterator>

namespace memory_host::pdb {

namespace {

// With more malformed lines than these, the file is no PDB or PQR file.
constexpr std::size_t handful = 10;

} // namespace

StructureTable RecordReader::read(const std::string& stem) {
    readLines();
    for (const auto& [line, number] : m_links)
        readLink(line, number, m_residueColumns, m_builder.listedBonds());
    m_links = {};
    m_bytes = {};
    if (m_builder.atomCount() == 0)
        refuseEmpty();
    if (!m_numbers.hasPositions() && m_faultyRows != 0)
        m_report.refuse(m_faultyLine, m_fault + ", and no atom of the file has a position",
                        m_acceptedFile);
    m_numbers.check(m_acceptedFile);
    if (m_modelLine != 0)
        m_report.remark(FileReport::Kind::Cut, m_modelLine,
                        "this model has no ENDMDL record: the file may have been cut");
    return m_builder.finish(m_identifier.empty() ? stem : m_identifier);
}

void RecordReader::refuseEmpty() const {
    if (m_wronglyWrittenLine != 0)
        m_report.refuse(m_wronglyWrittenLine,
                        "is no structure: " + inQuotes(m_wronglyWritten) +
                            " is no record, as their names are in capital letters",
                        acceptedFiles());
    m_report.refuse(0, "is no structure: it has no ATOM or HETATM record", acceptedFiles());
}

void RecordReader::readLines() {
    for (std::string_view text = m_bytes.text(); !text.empty();) {
        ++m_line;
        const char* const end = text.data() + text.size();
        const std::string_view line = takeLine(text);
        if (line.data() + line.size() == end)
            checkEnd(line);
        readLine(line);
    }
}

// Whether the last line of the file is a truncated record.
bool RecordReader::isCutRecord(std::string_view line) const {
    constexpr std::array<std::string_view, 8> records = {"ATOM",   "HETATM", "ANISOU", "SIGATM",
                                                         "SIGUIJ", "MODEL",  "ENDMDL", "TER"};
    if (line.starts_with("ANISOU") || line.starts_with("SIG"))
        return m_shortestOther != std::string_view::npos && line.size() < m_shortestOther;
    const std::string_view word = trimmed(line);
    return !word.empty() && word != "END" && word != "TER" && word != "ENDMDL" &&
           std::ranges::any_of(
               records, [word](std::string_view record) { return record.starts_with(word); });
}

// Checks the last line if it has no line end. It may be complete; but a truncated file must not be
// read as one with fewer atoms.
void RecordReader::checkEnd(std::string_view line) {
    if (isAtomRecord(line))
        checkLastAtom(line);
    else if (isCutRecord(line))
        refuseCut(line);
}

void RecordReader::refuseCut(std::string_view line) const {
    m_report.refuse(m_line,
                    "the file is cut: this last line ends in column " + std::to_string(line.size()),
                    m_acceptedFile);
}

void RecordReader::readLine(std::string_view line) {
    if (!isAtomRecord(line)) {
        readOtherRecord(line);
        return;
    }
    if (!m_isInModel)
        startModel({});
    readAtom(line);
}

void RecordReader::readOtherRecord(std::string_view line) {
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
        readIdentifier(line);
    } else if (const std::string_view name = wronglyWrittenRecord(line); !name.empty()) {
        readWronglyWritten(name, line);
    } else if (isLink(line)) {
        m_links.emplace_back(line, m_line);
    } else {
        readConnections(line, m_line, m_builder.listedBonds());
    }
}

void RecordReader::readIdentifier(std::string_view line) {
    const std::string_view identifier = field(line, 63, 66);
    const bool isIdentifier =
        identifier.size() == 4 && isDigit(identifier[0]) &&
        std::ranges::all_of(identifier, [](char c) { return isLetter(c) || isDigit(c); });
    if (isIdentifier && m_identifier.empty())
        std::ranges::transform(identifier, std::back_inserter(m_identifier), lowerCase);
}

void RecordReader::readWronglyWritten(std::string_view name, std::string_view line) {
    if (m_wronglyWrittenLine == 0) {
        m_wronglyWrittenLine = m_line;
        m_wronglyWritten = name;
    }
    // Between other atoms, this line would be a lost atom.
    if (m_builder.atomCount() != 0 && fitsColumns(line))
        m_report.remark(FileReport::Kind::Row, m_line, [&] {
            return inQuotes(name) +
                   " is no record, as their names are in capital letters: this line was not "
                   "read; accepted are " +
                   m_acceptedRows;
        });
}

void RecordReader::startModel(std::string_view number) {
    m_builder.startModel(number, false);
    m_isInModel = true;
}

void RecordReader::addFaulty(const AtomRow& row, const std::string& fault) {
    if (++m_faultyRows == 1) {
        m_faultyLine = m_line;
        m_fault = fault;
    }
    if (m_faultyRows > handful)
        m_report.refuse(m_faultyLine,
                        m_fault + ", and " + std::to_string(handful) +
                            " further lines are in a wrong form, too",
                        m_acceptedFile);
    m_report.remark(FileReport::Kind::Row, m_line, [&] {
        return fault + ": the atom " + inQuotes(row.name) + " has no position; accepted are " +
               m_acceptedRows;
    });
    m_numbers.withoutPosition(m_line);
    m_builder.add(row);
}

} // namespace memory_host::pdb
