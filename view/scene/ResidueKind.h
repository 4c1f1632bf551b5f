// What a residue is to the view, from its name and from the atoms that it has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace view {

/// What an atom is in its residue: those that make up the backbone of a polymer.
enum class Role : std::uint8_t {
    None,
    N,
    CA,
    C,
    O,
    P,
    C1Sugar, ///< C1'
    C3Sugar, ///< C3'
    C4Sugar, ///< C4'
    O3Sugar, ///< O3'
    // Of the base: purines are bound to the sugar by N9, pyrimidines by N1.
    N9Base,
    N1Base,
    N3Base
};
inline constexpr std::size_t roleCount = std::size_t(Role::N3Base) + 1;

/// The role of an atom by its name, as "CA" or "C4'" ("C4*" in old files), and its atomic number:
/// a calcium is no alpha carbon.
Role roleOf(std::string_view name, std::uint8_t atomicNumber);

enum class ResidueKind : std::uint8_t {
    AminoAcid,
    Nucleotide,
    Water,
    Ion,    ///< a single atom
    Marker, ///< a dummy atom that stands for no matter, as a membrane's boundary
    Other
};

/// What is counted of a residue's atoms.
struct ResidueAtoms {
    std::uint16_t roles = 0; ///< a bit for each role that there is
    std::size_t heavy = 0;   ///< atoms that are no hydrogen
    std::size_t oxygens = 0;

    void add(Role role, std::uint8_t atomicNumber);
    bool has(Role role) const { return (roles >> static_cast<unsigned>(role) & 1U) != 0; }
};

/// The kind of a residue by its name without a number, as "MET". A trace has amino acids of their
/// alpha carbon, and nucleotides of their phosphorus, alone.
ResidueKind residueKind(std::string_view name, const ResidueAtoms& atoms);

/// Whether a residue is one of the common twenty amino acids or of the nucleotides of DNA and RNA;
/// of alternative ones, as "PRO,SER", whether each is.
bool isStandard(std::string_view names);

} // namespace view
