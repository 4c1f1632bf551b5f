#include "ResidueKind.h"

#include <algorithm>
#include <array>

namespace view {

namespace {

template <std::size_t size>
bool isOneOf(const std::array<std::string_view, size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 9> waters = {"HOH", "DOD",  "WAT",  "H2O", "TIP",
                                                    "SOL", "TIP3", "TIP4", "OH2"};
constexpr std::array<std::string_view, 20> aminoAcids = {
    "ALA", "ARG", "ASN", "ASP", "CYS", "GLN", "GLU", "GLY", "HIS", "ILE",
    "LEU", "LYS", "MET", "PHE", "PRO", "SER", "THR", "TRP", "TYR", "VAL"};
constexpr std::array<std::string_view, 10> nucleotides = {"A",  "C",  "G",  "U",  "T",
                                                          "DA", "DC", "DG", "DT", "DU"};

} // namespace

Role roleOf(std::string_view name, std::uint8_t number) {
    enum : std::uint8_t { Carbon = 6, Nitrogen = 7, Oxygen = 8, Phosphorus = 15 };
    switch (number) {
    case Carbon:
        if (name == "CA")
            return Role::CA;
        if (name == "C")
            return Role::C;
        if (name.size() == 3 && name[0] == 'C' && (name[2] == '\'' || name[2] == '*'))
            return name[1] == '1'   ? Role::C1Sugar
                   : name[1] == '3' ? Role::C3Sugar
                   : name[1] == '4' ? Role::C4Sugar
                                    : Role::None;
        return Role::None;
    case Nitrogen:
        if (name == "N")
            return Role::N;
        return name == "N1" || name == "N3" || name == "N9" ? Role::Base : Role::None;
    case Oxygen:
        if (name == "O")
            return Role::O;
        return name == "O3'" || name == "O3*" ? Role::O3Sugar : Role::None;
    case Phosphorus:
        return name == "P" ? Role::P : Role::None;
    default:
        return Role::None;
    }
}

void ResidueAtoms::add(Role role, std::uint8_t number) {
    if (role != Role::None)
        roles = static_cast<std::uint16_t>(roles | 1U << static_cast<unsigned>(role));
    heavy += number == 1 ? 0 : 1;
    oxygens += number == 8 ? 1 : 0;
}

ResidueKind residueKind(std::string_view name, const ResidueAtoms& atoms) {
    if (name == "DUM")
        return ResidueKind::Marker;
    if (isOneOf(waters, name) && atoms.heavy == atoms.oxygens)
        return ResidueKind::Water;
    if (atoms.has(Role::CA) && (atoms.heavy == 1 || (atoms.has(Role::N) && atoms.has(Role::C))))
        return ResidueKind::AminoAcid;
    const bool isSugar =
        atoms.has(Role::C1Sugar) && atoms.has(Role::C3Sugar) && atoms.has(Role::C4Sugar);
    // Sugars and ligands such as ATP have the same atoms: what is not linked in a chain is told
    // apart later.
    if (isSugar && (atoms.has(Role::Base) || atoms.has(Role::P)))
        return ResidueKind::Nucleotide;
    if (atoms.has(Role::P) && atoms.heavy == 1)
        return ResidueKind::Nucleotide;
    return atoms.heavy == 1 ? ResidueKind::Ion : ResidueKind::Other;
}

bool isStandard(std::string_view names) {
    while (true) {
        const std::string_view name = names.substr(0, names.find(','));
        if (!isOneOf(aminoAcids, name) && !isOneOf(nucleotides, name))
            return false;
        if (name.size() == names.size())
            return true;
        names.remove_prefix(name.size() + 1);
    }
}

} // namespace view
