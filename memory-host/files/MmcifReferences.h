// What an mmCIF file says of atoms and residues outside of _atom_site, and what of it no longer
// holds when atoms are gone.
#pragma once

#include "CifEdit.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace memory_host::mmcif {

/// What becomes of the rows of a category.
struct RowFate {
    struct Update {
        std::size_t row;
        cif::Change change;
    };

    std::vector<bool> isDropped; ///< by row; empty: none
    std::vector<Update> updates; ///< ascending by row
    std::size_t dropCount = 0;
    std::size_t cutRanges = 0; ///< how many of them were ranges with another end still there
    /// Of rows of _struct_conn that list the bonds of several alternative locations: lost bonds
    /// that they bring back, and bonds of new atoms.
    std::size_t comingBack = 0;
    std::size_t joined = 0;
    /// Bonds that are left and that no row of _struct_conn lists any more: as rows do not tell
    /// their atoms from others, and as the rows are of other alternative locations.
    std::size_t ambiguous = 0;
    std::size_t unlisted = 0;

    bool drops(std::size_t row) const { return !isDropped.empty() && isDropped[row]; }
    void drop(std::size_t row, std::size_t rowCount);
};

/// The references in a data block. It is told of each row of the atoms, and then knows which rows
/// name an atom or a residue that the file had and that is gone. What the file never had, as
/// unobserved residues, stays. Time and memory are linear.
class References {
public:
    /// Reads the references. The text and the categories, which are of one block, must outlive
    /// this.
    References(std::string_view text, std::span<const cif::Category> categories);
    /// Takes the rows of the atoms; `isKept` says of each whether it is still there.
    void readAtoms(const cif::Category& atoms, const std::vector<bool>& isKept);
    /// What becomes of the rows, by category.
    std::vector<RowFate> fates() const;

private:
    // An atom or a residue that some row names, with as much as the row says of it.
    struct Target {
        bool wasThere = false;
        bool isThere = false;
    };
    // A place in a chain that some row names.
    struct Site {
        std::uint32_t number;
        std::uint16_t forms = 0; ///< a bit for each combination of parts by which it is named
    };
    // Each row of a category names this many targets, or none.
    struct Named {
        std::size_t category;
        std::size_t targetsOfARow;
        std::vector<std::uint32_t> targets; ///< by row
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    template <class Value>
    using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;
    static constexpr std::uint32_t noTarget = std::numeric_limits<std::uint32_t>::max();

    class Namer;
    class AtomWalk;
    void readCategory(std::size_t category);
    void markNamed(std::vector<RowFate>& fates) const;

    std::string_view m_text;
    std::span<const cif::Category> m_categories;
    ByText<Site> m_sites;
    ByText<std::uint32_t> m_targetNumbers;
    std::vector<Target> m_targets;
    std::vector<Named> m_named;
};

} // namespace memory_host::mmcif
