// What a residue is by its name and atoms, and which group each of its atoms belongs to.
#pragma once

#include "AtomTable.h"

#include <span>

namespace memory_host {

enum class ResidueKind : std::uint8_t { Other, AminoAcid, Nucleotide };

/// The kind that a residue name is known for.
ResidueKind residueKind(std::string_view name);
/// Whether a residue of this name is a water.
bool isWater(std::string_view name);
/// The names of a kind's groups, in their order; none for other residues.
std::span<const char* const> groupNames(ResidueKind kind);

/// What is known of a name, as of a residue or of an atom.
struct NameFacts {
    ResidueKind kind = ResidueKind::Other;
    bool isKnownResidue = false;
    bool isAsked = false;
};

/// Says of the atoms of one model which group they belong to.
class AtomGroups {
public:
    /// `facts` are by name; the models of an entry share them, in whatever order they come.
    AtomGroups(const ModelTable& model, const FileNames& names, std::vector<NameFacts>& facts);

    /// The kind of a residue: by its name or, where nobody knows the name, by its atoms.
    ResidueKind kindOf(std::size_t residue);
    /// The group of an atom of a residue of this kind, as an index of groupNames(). A hydrogen goes
    /// with the atom that it is bonded to.
    std::size_t groupOf(std::uint32_t atom, ResidueKind kind) const;

private:
    const ModelTable& m_model;
    const FileNames& m_names;
    std::vector<NameFacts>& m_facts;
    std::vector<std::uint32_t> m_bearer; ///< by atom, for models with hydrogens: who bears it
};

} // namespace memory_host
