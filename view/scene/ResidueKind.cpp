#include "ResidueKind.h"

#include "Waters.h"

#include <algorithm>
#include <array>

namespace view {

namespace {

// Names are compared as numbers, as there is one for each of a million atoms: their bytes, if there
// are at most four; else 0, which is the name of nothing here.
constexpr std::uint32_t packed(std::string_view name) {
    if (name.size() > sizeof(std::uint32_t))
        return 0;
    std::uint32_t bytes = 0;
    for (const char c : name)
        bytes = bytes << 8U | static_cast<unsigned char>(c);
    return bytes;
}

template <std::size_t size>
constexpr std::array<std::uint32_t, size> packed(const std::string_view (&names)[size]) {
    std::array<std::uint32_t, size> all{};
    for (std::size_t i = 0; i != size; ++i)
        all[i] = packed(names[i]);
    return all;
}

template <std::size_t size>
bool isOneOf(const std::array<std::uint32_t, size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), packed(name)) != names.end();
}

constexpr auto aminoAcids =
    packed({"ALA", "ARG", "ASN", "ASP", "CYS", "GLN", "GLU", "GLY", "HIS", "ILE",
            "LEU", "LYS", "MET", "PHE", "PRO", "SER", "THR", "TRP", "TYR", "VAL"});
constexpr auto nucleotides = packed({"A", "C", "G", "U", "T", "DA", "DC", "DG", "DT", "DU"});

} // namespace

Role roleOf(std::string_view name, std::uint8_t number) {
    enum : std::uint8_t { Carbon = 6, Nitrogen = 7, Oxygen = 8, Phosphorus = 15 };
    const std::uint32_t bytes = packed(name);
    switch (number) {
    case Carbon:
        switch (bytes) {
        case packed("CA"):
            return Role::CA;
        case packed("C"):
            return Role::C;
        case packed("C1'"):
        case packed("C1*"):
            return Role::C1Sugar;
        case packed("C3'"):
        case packed("C3*"):
            return Role::C3Sugar;
        case packed("C4'"):
        case packed("C4*"):
            return Role::C4Sugar;
        default:
            return Role::None;
        }
    case Nitrogen:
        switch (bytes) {
        case packed("N"):
            return Role::N;
        case packed("N9"):
            return Role::N9Base;
        case packed("N1"):
            return Role::N1Base;
        case packed("N3"):
            return Role::N3Base;
        default:
            return Role::None;
        }
    case Oxygen:
        if (bytes == packed("O"))
            return Role::O;
        return bytes == packed("O3'") || bytes == packed("O3*") ? Role::O3Sugar : Role::None;
    case Phosphorus:
        return bytes == packed("P") ? Role::P : Role::None;
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
    if (TAVIK::isWater(name) && atoms.heavy == atoms.oxygens)
        return ResidueKind::Water;
    if (atoms.has(Role::CA) && (atoms.heavy == 1 || (atoms.has(Role::N) && atoms.has(Role::C))))
        return ResidueKind::AminoAcid;
    const bool isSugar =
        atoms.has(Role::C1Sugar) && atoms.has(Role::C3Sugar) && atoms.has(Role::C4Sugar);
    // Sugars and ligands such as ATP have the same atoms: what is not linked in a chain is told
    // apart later.
    const bool isBase =
        atoms.has(Role::N9Base) || atoms.has(Role::N1Base) || atoms.has(Role::N3Base);
    if (isSugar && (isBase || atoms.has(Role::P)))
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
