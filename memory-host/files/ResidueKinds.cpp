#include "ResidueKinds.h"

#include "Fields.h"

#include <gemmi/resinfo.hpp>

#include <algorithm>
#include <array>

namespace memory_host {

namespace {

constexpr std::array<const char*, 2> aminoAcidGroups = {"Backbone", "Side chain"};
constexpr std::array<const char*, 3> nucleotideGroups = {"Phosphate", "Sugar", "Base"};
enum AminoAcidGroup : std::uint8_t { Backbone, SideChain };
enum NucleotideGroup : std::uint8_t { Phosphate, Sugar, Base };

// Hydrogens in old files have their number first: "1HB".
std::string_view withoutNumber(std::string_view name) {
    while (!name.empty() && isDigit(name.front()))
        name.remove_prefix(1);
    return name;
}

bool isBackbone(std::string_view name) {
    static constexpr std::array<std::string_view, 9> heavy = {"N",   "CA",  "C",   "O",  "OXT",
                                                              "OT1", "OT2", "OC1", "OC2"};
    return std::ranges::find(heavy, name) != heavy.end();
}

// Backbone hydrogens, for atoms without a bond that shows their heavy atom: H, H1, HN, HT1 at the
// nitrogen, HA, HA2 at the alpha carbon, HXT and HO at the end.
bool isBackboneHydrogen(std::string_view name) {
    name = withoutNumber(name);
    if (name.size() < 2)
        return true;
    const char place = name[1];
    return isDigit(place) || place == 'N' || place == 'A' || name.substr(1).starts_with("XT") ||
           name.substr(1).starts_with("T") || name.substr(1) == "O";
}

bool isPrimed(std::string_view name) {
    return name.find_first_of("'*") != std::string_view::npos;
}

bool isPhosphate(std::string_view name, bool hydrogen) {
    static constexpr std::array<std::string_view, 11> atoms = {
        "P", "O1P", "O2P", "O3P", "OP1", "OP2", "OP3", "S1P", "S2P", "SP1", "SP2"};
    return std::ranges::find(atoms, name) != atoms.end() ||
           (hydrogen && name.find('P') != std::string_view::npos);
}

struct KnownKind {
    ResidueKind kind;
    bool isKnown;
};

KnownKind lookUp(std::string_view name) {
    const gemmi::ResidueInfo info = gemmi::find_tabulated_residue(std::string(name));
    if (info.is_amino_acid())
        return {ResidueKind::AminoAcid, true};
    if (info.is_nucleic_acid())
        return {ResidueKind::Nucleotide, true};
    return {ResidueKind::Other, info.found()};
}

} // namespace

ResidueKind residueKind(std::string_view name) {
    return lookUp(name).kind;
}

std::span<const char* const> groupNames(ResidueKind kind) {
    switch (kind) {
    case ResidueKind::AminoAcid:
        return aminoAcidGroups;
    case ResidueKind::Nucleotide:
        return nucleotideGroups;
    case ResidueKind::Other:
        break;
    }
    return {};
}

AtomGroups::AtomGroups(const ModelTable& model, const FileNames& names,
                       std::vector<NameFacts>& facts)
    : m_model(model), m_names(names), m_facts(facts) {
    m_facts.resize(names.size());
    const auto hydrogen = [&](std::uint32_t atom) { return isHydrogen(model.atoms[atom].element); };
    for (const auto& [first, second] : model.bonds) {
        if (hydrogen(first) == hydrogen(second) ||
            model.atoms[first].residue != model.atoms[second].residue)
            continue;
        const auto [borne, bearer] =
            hydrogen(first) ? std::pair(first, second) : std::pair(second, first);
        if (m_bearer.empty())
            m_bearer.resize(model.atoms.size());
        // The first bond counts. 0 means none, so that indices are stored from 1.
        if (m_bearer[borne] == 0)
            m_bearer[borne] = bearer + 1;
    }
}

ResidueKind AtomGroups::kindOf(std::size_t residue) {
    const ResidueEntry& entry = m_model.residues[residue];
    NameFacts& facts = m_facts[entry.name];
    if (!facts.isAsked) {
        const KnownKind known = lookUp(m_names.text(entry.name));
        facts = {known.kind, known.isKnown, true};
    }
    if (facts.isKnownResidue)
        return facts.kind;
    // A modified residue is recognised by the atoms that all residues of its kind have.
    constexpr std::array<std::string_view, 3> aminoAcid = {"N", "CA", "C"};
    constexpr std::array<std::string_view, 3> sugar = {"C1'", "C3'", "C4'"};
    constexpr std::array<std::string_view, 3> oldSugar = {"C1*", "C3*", "C4*"};
    std::array<bool, 3> hasAmino{};
    std::array<bool, 3> hasSugar{};
    for (std::uint32_t i = entry.firstAtom; i != m_model.atomEnd(residue); ++i) {
        const std::string_view name = m_names.text(m_model.atoms[i].name);
        for (std::size_t k = 0; k != aminoAcid.size(); ++k) {
            hasAmino[k] = hasAmino[k] || name == aminoAcid[k];
            hasSugar[k] = hasSugar[k] || name == sugar[k] || name == oldSugar[k];
        }
    }
    const auto all = [](const std::array<bool, 3>& has) { return has[0] && has[1] && has[2]; };
    return all(hasAmino)   ? ResidueKind::AminoAcid
           : all(hasSugar) ? ResidueKind::Nucleotide
                           : ResidueKind::Other;
}

std::size_t AtomGroups::groupOf(std::uint32_t atom, ResidueKind kind) const {
    bool hydrogen = isHydrogen(m_model.atoms[atom].element);
    if (hydrogen && !m_bearer.empty() && m_bearer[atom] != 0) {
        atom = m_bearer[atom] - 1;
        hydrogen = false;
    }
    const std::string_view name = m_names.text(m_model.atoms[atom].name);
    if (kind == ResidueKind::AminoAcid)
        return (hydrogen ? isBackboneHydrogen(name) : isBackbone(name)) ? Backbone : SideChain;
    if (isPrimed(name))
        return Sugar;
    return isPhosphate(name, hydrogen) ? Phosphate : Base;
}

} // namespace memory_host
