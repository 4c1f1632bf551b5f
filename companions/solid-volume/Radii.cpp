#include "Radii.h"

#include <algorithm>
#include <array>
#include <utility>

namespace solid {

namespace {

// Kinds of atoms by what is bonded to them: carbon of three bonds without and with a hydrogen, of
// four; oxygen of a double bond and of two bonds.
constexpr float bareCarbon = 1.61F;
constexpr float flatCarbon = 1.76F;
constexpr float roundCarbon = 1.88F;
constexpr float nitrogen = 1.64F;
constexpr float carbonyl = 1.42F;
constexpr float hydroxyl = 1.46F;
constexpr float sulfur = 1.77F;
constexpr float selenium = 1.90F;
constexpr float phosphorus = 1.80F;

// The atoms of a residue that are not the most common kind of their element.
struct Residue {
    std::string_view name;
    std::string_view bare;     ///< bareCarbon, beside the backbone's C
    std::string_view flat;     ///< flatCarbon
    std::string_view hydroxyl; ///< beside the end's OXT
};
constexpr std::array<Residue, 27> aminoAcids = {{
    {"ACE", "", "", ""},
    {"ALA", "", "", ""},
    {"ARG", "CZ", "", ""},
    {"ASN", "CG", "", ""},
    {"ASP", "CG", "", "OD2"},
    {"ASX", "CG", "", ""},
    {"CYS", "", "", ""},
    {"GLN", "CD", "", ""},
    {"GLU", "CD", "", "OE2"},
    {"GLX", "CD", "", ""},
    {"GLY", "", "", ""},
    {"HIS", "CG", "CD2 CE1", ""},
    {"ILE", "", "", ""},
    {"LEU", "", "", ""},
    {"LYS", "", "", ""},
    {"MET", "", "", ""},
    {"MSE", "", "", ""},
    {"NH2", "", "", ""},
    {"PHE", "CG", "CD1 CD2 CE1 CE2 CZ", ""},
    {"PRO", "", "", ""},
    {"PYL", "C2", "CE2", ""},
    {"SEC", "", "", ""},
    {"SER", "", "", "OG"},
    {"THR", "", "", "OG1"},
    {"TRP", "CG CD2 CE2", "CD1 CE3 CZ2 CZ3 CH2", ""},
    {"TYR", "CG CZ", "CD1 CD2 CE1 CE2", "OH"},
    {"VAL", "", "", ""},
}};
constexpr std::array<Residue, 12> nucleotides = {{
    {"A", "C4 C5 C6", "C2 C8", ""},
    {"C", "C2 C4", "C5 C6", ""},
    {"DA", "C4 C5 C6", "C2 C8", ""},
    {"DC", "C2 C4", "C5 C6", ""},
    {"DG", "C2 C4 C5 C6", "C8", ""},
    {"DI", "C4 C5 C6", "C2 C8", ""},
    {"DT", "C2 C4 C5", "C6", ""},
    {"DU", "C2 C4", "C5 C6", ""},
    {"G", "C2 C4 C5 C6", "C8", ""},
    {"I", "C4 C5 C6", "C2 C8", ""},
    {"T", "C2 C4 C5", "C6", ""},
    {"U", "C2 C4", "C5 C6", ""},
}};

template <class Table> const Residue* find(const Table& table, std::string_view name) {
    const auto found = std::ranges::lower_bound(table, name, {}, &Residue::name);
    return found != table.end() && found->name == name ? &*found : nullptr;
}

// Whether one of the words of `list` is `name`.
bool lists(std::string_view list, std::string_view name) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        if (list.substr(0, end) == name)
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

float radiusOf(const Residue& residue, std::string_view atom, bool isBare, bool isHydroxyl) {
    switch (atom.front()) {
    case 'C':
        return isBare || lists(residue.bare, atom) ? bareCarbon
               : lists(residue.flat, atom)         ? flatCarbon
                                                   : roundCarbon;
    case 'N':
        return nitrogen;
    case 'O':
        return isHydroxyl || lists(residue.hydroxyl, atom) ? hydroxyl : carbonyl;
    case 'P':
        return phosphorus;
    case 'S':
        return atom.starts_with("SE") ? selenium : sulfur;
    default:
        return 0;
    }
}

} // namespace

bool hasUnitedAtoms(std::string_view residue) {
    return find(aminoAcids, residue) || find(nucleotides, residue);
}

float unitedAtomRadius(std::string_view residue, std::string_view atom) {
    if (atom.empty())
        return 0;
    if (const Residue* const found = find(aminoAcids, residue))
        return radiusOf(*found, atom, atom == "C", atom == "OXT");
    const Residue* const found = find(nucleotides, residue);
    if (!found)
        return 0;
    // Of the sugar and the phosphate all carbons are round, and all oxygens but one have two bonds.
    // Older files write O1P for OP1, and C5* for C5'.
    const bool isSugar = atom.back() == '\'' || atom.back() == '*';
    const bool isPhosphate = atom.starts_with("OP") || atom.back() == 'P';
    const bool hasOneBond = atom == "OP1" || atom == "O1P";
    return radiusOf(*found, atom, false, (isSugar || isPhosphate) && !hasOneBond);
}

} // namespace solid
