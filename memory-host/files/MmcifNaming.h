// Which categories of mmCIF name atoms and residues, and by which columns; which rows belong to
// rows of other categories. The names are those of the PDBx/mmCIF dictionary.
#pragma once

#include "CifText.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace memory_host::mmcif {

/// The parts by which a row names an atom or a residue.
enum Part : std::uint8_t {
    PartAuthorChain,
    PartAuthorNumber,
    PartInsertion,
    PartAuthorResidue,
    PartAuthorAtom,
    PartLabelChain,
    PartLabelNumber,
    PartLabelResidue,
    PartLabelAtom,
    PartLetter,
    PartModel,
    PartCount
};

/// The column of each part; that of a part which is not there is the number of columns.
using PartColumns = std::array<std::size_t, PartCount>;

/// What a row that names something is without it.
enum class Loss {
    Meaning,    ///< nothing: it goes
    Range,      ///< likewise, although other residues of its range may still be there
    Observation ///< a residue of the sequence that is not observed
};

struct Naming {
    Loss loss;
    std::vector<PartColumns> partners; ///< what a row names
};

/// How the rows of a category name atoms and residues; nullopt for a category that does not, or
/// that says what was in the crystal, whatever is seen of it.
std::optional<Naming> namingOf(const cif::Category& category);
/// The same for the atoms themselves.
PartColumns atomColumns(const cif::Category& atoms);

/// The columns that say "not observed" in a row of Loss::Observation.
inline constexpr std::array<std::string_view, 3> observationColumns = {"auth_seq_num", "pdb_mon_id",
                                                                       "auth_mon_id"};

/// Rows of one category that belong to a row of another, by up to two columns.
struct RowLink {
    using Columns = std::array<std::string_view, 2>; ///< the second may be empty
    std::string_view child;
    Columns childColumns;
    std::string_view parent;
    Columns parentColumns;
};
std::span<const RowLink> rowLinks();

/// Rows that count the rows of another category, and mean nothing without them.
struct RowCount {
    std::string_view category;
    std::string_view id;
    std::string_view count;
    std::string_view counted;
    std::string_view countedId;
};
std::span<const RowCount> rowCounts();

} // namespace memory_host::mmcif
