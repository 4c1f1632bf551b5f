// The kind of a residue by its name and atoms, and the group of each of its atoms.
#pragma once

#include "AtomTable.h"

#include <span>

namespace memory_host {

enum class ResidueKind : std::uint8_t { Other, AminoAcid, Nucleotide };

/// The kind that a residue name is known for.
ResidueKind residueKind(std::string_view name);
/// The names of a kind's groups, in their order; none for other residues.
std::span<const char* const> groupNames(ResidueKind kind);

/// Facts about a name, as that of a residue or of an atom.
struct NameFacts {
    ResidueKind kind = ResidueKind::Other;
    bool isKnownResidue = false;
    bool isAsked = false;
};

/// Finds the group of each atom of one model.
class AtomGroups {
public:
    /// `facts` are indexed by name; the models of an entry share them, in any order.
    AtomGroups(const ModelTable& model, const FileNames& names, std::vector<NameFacts>& facts);

    /// The kind of a residue: by its name or, if the name is unknown, by its atoms.
    ResidueKind kindOf(std::size_t residue);
    /// The group of an atom of a residue of this kind, as an index of groupNames(). A hydrogen goes
    /// with the atom that it is bonded to.
    std::size_t groupOf(std::uint32_t atom, ResidueKind kind) const;

private:
    const ModelTable& m_model;
    const FileNames& m_names;
    std::vector<NameFacts>& m_facts;
    std::vector<std::uint32_t> m_bearer; ///< by atom, for models with hydrogens: the heavy atom
};

} // namespace memory_host
