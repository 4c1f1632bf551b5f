// The rows of an _atom_site category of mmCIF, and the atoms that they describe.
#pragma once

#include "AtomNumbers.h"
#include "Fields.h"
#include "TableBuilder.h"

#include <array>

namespace memory_host::mmcif {

inline const std::string acceptedSyntax = "accepted are mmCIF files with an _atom_site category";

/// The columns that the reader uses.
enum Column : std::uint8_t {
    X,
    Y,
    Z,
    Temperature,
    Symbol,
    Alternative,
    Insertion,
    ModelNumber,
    AuthAtom,
    LabelAtom,
    AuthResidue,
    LabelResidue,
    AuthChain,
    LabelChain,
    AuthNumber,
    LabelNumber,
    Id,
    Group,
    Occupancy,
    FormalCharge,
    ColumnCount,
    Ignored = ColumnCount
};

/// The values of a row as they are written, with quotes; empty for missing columns.
using Row = std::array<std::string_view, ColumnCount + 1>;

inline bool isAtomTag(std::string_view tag) {
    return startsWith(tag, "_atom_site.");
}
/// The column of a tag for which isAtomTag() holds.
Column columnOf(std::string_view tag);
/// The text of a value without its quotes; empty for "." and "?".
std::string_view contentOf(std::string_view value);
/// A value as a number, which may be followed by its uncertainty in brackets.
std::optional<float> numberOf(std::string_view value);

/// Makes tables of rows, an entry for each data block.
class Atoms {
public:
    explicit Atoms(FileReport& report)
        : m_report(report), m_numbers(report, {"numbers as Cartn_x, Cartn_y and Cartn_z",
                                               "numbers as B_iso_or_equiv"}) {}

    /// Refuses the file if a column that every atom needs is missing.
    void checkColumns(const Row& row, std::size_t line) const;
    void add(const Row& values, std::size_t line);
    /// The bonds that the entry lists, before or behind its atoms.
    ListedBonds& listedBonds() { return builder().listedBonds(); }
    bool isEntryEmpty() const { return !m_builder || m_builder->atomCount() == 0; }
    /// Ends the current entry, which is kept unless it is empty.
    void finishEntry(std::string name);
    /// The entries; refuses files whose atoms have no numbers as coordinates.
    std::vector<StructureTable> take();

private:
    TableBuilder& builder();

    FileReport& m_report;
    AtomNumbers m_numbers;
    std::vector<StructureTable> m_structures;
    std::unique_ptr<TableBuilder> m_builder;
    std::size_t m_finishedAtoms = 0;
    std::string_view m_model; ///< number of the model that the last atom belongs to
};

} // namespace memory_host::mmcif
