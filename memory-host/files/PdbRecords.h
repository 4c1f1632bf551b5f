// The records that PDB and PQR files share: models, ends of molecules, the identifier, listed
// bonds. The two differ in the rows of atoms, which are for the reader of each.
//
// gemmi's reader is not used, because it reads blank coordinates as 0, stops at the first END, and
// takes line numbers of old files for invalid charges.
#pragma once

#include "AtomNumbers.h"
#include "PdbColumns.h"
#include "Readers.h"
#include "TableBuilder.h"

namespace memory_host::pdb {

/// Reads one entry, named after the file if it has no identifier. A model ends with ENDMDL or END,
/// and another one may follow. A few malformed rows become atoms without a position; more of them
/// are refused.
class RecordReader {
public:
    /// What a format's messages say that it accepts.
    struct Accepted {
        std::string file; ///< as the end of a message
        std::string rows; ///< after "accepted are"
        AtomNumbers::Accepted numbers;
    };

    RecordReader(Bytes bytes, const Accepted& accepted, FileReport& report)
        : m_report(report), m_builder(report), m_numbers(report, accepted.numbers),
          m_bytes(std::move(bytes)), m_acceptedFile(accepted.file), m_acceptedRows(accepted.rows) {}
    virtual ~RecordReader() = default;
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    StructureTable read(const std::string& stem);

protected:
    /// Adds the atom of an ATOM or HETATM record.
    virtual void readAtom(std::string_view line) = 0;
    /// Checks a last record without a line end, because the file may be truncated.
    virtual void checkLastAtom(std::string_view line) = 0;

    [[noreturn]] void refuseCut(std::string_view line) const;
    /// Adds the atom of a malformed row, without a position, because its numbers cannot be trusted.
    void addFaulty(const AtomRow& row, const std::string& fault);
    std::size_t line() const { return m_line; } ///< number of the current line

    FileReport& m_report;
    TableBuilder m_builder;
    AtomNumbers m_numbers;
    ResidueColumns m_residueColumns; ///< from the rows of atoms; needed for the bonds

private:
    void readLines();
    void readLine(std::string_view line);
    void readOtherRecord(std::string_view line);
    void readIdentifier(std::string_view line);
    void readWronglyWritten(std::string_view name, std::string_view line);
    void startModel(std::string_view number);
    void checkEnd(std::string_view line);
    bool isCutRecord(std::string_view line) const;
    [[noreturn]] void refuseEmpty() const;

    Bytes m_bytes;
    std::string m_acceptedFile;
    std::string m_acceptedRows;
    /// With line numbers. Read after the atoms, which tell the chains.
    std::vector<std::pair<std::string_view, std::size_t>> m_links;
    std::size_t m_line = 0;
    std::size_t m_faultyRows = 0;
    std::size_t m_faultyLine = 0; ///< the first one
    std::string m_fault;          ///< of the first one
    std::size_t m_wronglyWrittenLine = 0;
    std::string m_wronglyWritten; ///< the name of a record there
    std::size_t m_modelLine = 0;  ///< of the MODEL record without an ENDMDL so far
    std::size_t m_shortestOther = std::string_view::npos; ///< of ANISOU and the like
    bool m_isInModel = false;
    std::string m_identifier;
};

} // namespace memory_host::pdb
