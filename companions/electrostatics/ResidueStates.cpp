#include "ResidueStates.h"

#include "AtomBonds.h"
#include "AtomDetails.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace electrostatics {

namespace {

using TAVIK::Atom;
using TAVIK::Compound;
using Atoms = std::vector<const Atom*>;

struct Ion {
    std::string_view name;
    int charge;
};
// Ordered by name: those of the Chemical Component Dictionary, and some of simulation programs.
constexpr auto ions = std::to_array<Ion>({
    {"3CO", 3}, {"AG", 1},   {"AL", 3},  {"BA", 2},   {"BR", -1}, {"CA", 2},  {"CAL", 2},
    {"CD", 2},  {"CES", 1},  {"CL", -1}, {"CLA", -1}, {"CO", 2},  {"CS", 1},  {"CU", 2},
    {"CU1", 1}, {"EU3", 3},  {"F", -1},  {"FE", 3},   {"FE2", 2}, {"GD3", 3}, {"HG", 2},
    {"HO3", 3}, {"IOD", -1}, {"K", 1},   {"LA", 3},   {"LI", 1},  {"LU", 3},  {"MG", 2},
    {"MN", 2},  {"MN3", 3},  {"NA", 1},  {"NI", 2},   {"PB", 2},  {"POT", 1}, {"RB", 1},
    {"SM", 3},  {"SOD", 1},  {"SR", 2},  {"TB", 3},   {"TL", 1},  {"YB", 3},  {"YT3", 3},
    {"ZN", 2},  {"ZN2", 2},
});
static_assert(std::ranges::is_sorted(ions, {}, &Ion::name));

// Metals are no neighbours: to be coordinated leaves an oxygen its charge.
bool isNonMetal(std::string_view element) {
    constexpr auto nonMetals = std::to_array<std::string_view>(
        {"As", "B", "Br", "C", "Cl", "D", "F", "H", "I", "N", "O", "P", "S", "Se", "Si"});
    return std::ranges::binary_search(nonMetals, element);
}

class Residue {
public:
    Residue(std::string_view name, const Atoms& atoms)
        : m_name(name), m_atoms(atoms), m_charges(atoms.size()) {
        m_names.reserve(atoms.size());
        for (const Atom* const atom : atoms)
            m_names.push_back(atom->GetName());
    }

    void chargeIon();
    void chargeAcids();
    void chargeBases();
    void chargeFirst();
    std::vector<double> charges() { return std::move(m_charges); }

private:
    std::size_t find(std::string_view name) const {
        return static_cast<std::size_t>(std::ranges::find(m_names, name) - m_names.begin());
    }
    bool has(std::string_view name) const { return find(name) != m_names.size(); }
    // The non-metals that an atom is bonded to, of its own model.
    std::vector<const Atom*> neighbours(const Atom* atom) const;
    // Shares a charge among those of two atoms that are there.
    void share(double charge, std::string_view a, std::string_view b);

    std::string_view m_name;
    const Atoms& m_atoms;
    std::vector<std::string> m_names;
    std::vector<double> m_charges;
    mutable std::vector<TAVIK::Bond*> m_bonds;
};

std::vector<const Atom*> Residue::neighbours(const Atom* atom) const {
    m_bonds.clear();
    TAVIK::GetBonds(atom, m_bonds);
    std::vector<const Atom*> all;
    const std::string model = atom->GetModelNumber();
    for (TAVIK::Bond* const bond : m_bonds)
        for (Compound** part = bond->PartBegin(); part != bond->PartEnd(); ++part) {
            const auto* const other = dynamic_cast<const Atom*>(*part);
            if (!other || other == atom || !isNonMetal(other->GetType()))
                continue;
            // Of a group in two places one counts.
            const std::string its = other->GetModelNumber();
            if (its == "0" || its == model || std::ranges::find(m_atoms, other) != m_atoms.end())
                all.push_back(other);
        }
    return all;
}

void Residue::share(double charge, std::string_view a, std::string_view b) {
    std::vector<std::size_t> there;
    for (const std::string_view name : {a, b})
        if (const std::size_t at = find(name); at != m_names.size())
            there.push_back(at);
    for (const std::size_t at : there)
        m_charges[at] += charge / static_cast<double>(there.size());
}

void Residue::chargeIon() {
    const auto isHydrogen = [](const Atom* atom) {
        const std::string element = atom->GetType();
        return element == "H" || element == "D";
    };
    if (std::ranges::count_if(m_atoms, isHydrogen) + 1 != std::ssize(m_atoms))
        return;
    const auto heavy = std::ranges::find_if_not(m_atoms, isHydrogen) - m_atoms.begin();
    if (m_name == "NH4")
        m_charges[static_cast<std::size_t>(heavy)] = 1;
    const auto* const ion = std::ranges::lower_bound(ions, m_name, {}, &Ion::name);
    if (ion != ions.end() && ion->name == m_name && m_atoms.size() == 1)
        m_charges.front() = ion->charge;
}

// Of an acid's oxygens that have no other neighbour, and no hydrogen.
void Residue::chargeAcids() {
    std::vector<std::pair<const Atom*, std::size_t>> ends;
    for (std::size_t i = 0; i != m_atoms.size(); ++i) {
        if (m_atoms[i]->GetType() != "O")
            continue;
        const std::vector<const Atom*> around = neighbours(m_atoms[i]);
        if (around.size() == 1)
            ends.emplace_back(around.front(), i);
    }
    std::ranges::stable_sort(ends, {}, [](const auto& end) { return end.first->GetId(); });
    for (auto first = ends.begin(); first != ends.end();) {
        const Atom* const centre = first->first;
        const auto last = std::find_if(first, ends.end(),
                                       [centre](const auto& end) { return end.first != centre; });
        const auto count = static_cast<int>(last - first);
        const std::string element = centre->GetType();
        int charge = 0;
        if (element == "C")
            charge = count == 2 && neighbours(centre).size() == 3 ? -1 : 0;
        else if (element == "P")
            charge = -std::min(count - 1, 2);
        else if (element == "S")
            charge = -std::max(count - 2, 0);
        for (; first != last; ++first)
            m_charges[first->second] += double(charge) / count;
    }
}

void Residue::chargeBases() {
    const auto isCarbon = [](const Atom* atom) { return atom->GetType() == "C"; };
    if (m_name == "LYS" && has("NZ") &&
        std::ranges::count_if(neighbours(m_atoms[find("NZ")]), isCarbon) < 2)
        share(1, "NZ", {});
    const bool hasBoth = (has("HD1") || has("DD1")) && (has("HE2") || has("DE2"));
    if (m_name == "HIP" || m_name == "HSP" || (m_name == "HIS" && hasBoth))
        share(1, "ND1", "NE2");
    if (m_name == "ARG")
        share(1, "NH1", "NH2");
}

void Residue::chargeFirst() {
    if (!isAminoAcid(m_atoms) || m_name == "PCA")
        return;
    const std::size_t at = find("N");
    const auto isBeforeIt = [this](const Atom* atom) {
        return atom->GetName() == "C" && std::ranges::find(m_atoms, atom) == m_atoms.end();
    };
    if (std::ranges::none_of(neighbours(m_atoms[at]), isBeforeIt))
        m_charges[at] += 1;
}

} // namespace

bool isAminoAcid(const std::vector<const Atom*>& atoms) {
    bool hasNitrogen = false;
    bool hasAlpha = false;
    for (const Atom* const atom : atoms) {
        const std::string name = atom->GetName();
        if (name == "N")
            hasNitrogen = !TAVIK::GetAtomDetails(atom).isHetero;
        hasAlpha = hasAlpha || name == "CA";
    }
    return hasNitrogen && hasAlpha;
}

std::vector<double> chargesAtPh7(std::string_view residue, const std::vector<const Atom*>& atoms,
                                 bool isFirst) {
    Residue one(residue, atoms);
    one.chargeIon();
    one.chargeAcids();
    one.chargeBases();
    if (isFirst)
        one.chargeFirst();
    return one.charges();
}

} // namespace electrostatics
