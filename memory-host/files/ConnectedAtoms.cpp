#include "ConnectedAtoms.h"

#include "Relettering.h"
#include "ResidueKey.h"

#include <bitset>
#include <limits>

namespace memory_host {

ConnectedAtoms::ConnectedAtoms(const gemmi::Structure& structure, const SavedModel& model)
    : m_model(model) {
    for (const gemmi::Connection& connection : structure.connections)
        for (const gemmi::AtomAddress* address : {&connection.partner1, &connection.partner2})
            m_residues.emplace(residueKey(address->chain_name, address->res_id), nullptr);
    if (m_residues.empty())
        return;
    for (const gemmi::Chain& chain : structure.models.front().chains)
        for (const gemmi::Residue& residue : chain.residues)
            if (const auto found = m_residues.find(residueKey(chain.name, residue));
                found != m_residues.end() && !found->second)
                found->second = &residue;
}

// The atoms that the file has by this name, but for those that no name tells from the ones before
// them: of the same letter now, or behind one without a letter.
std::vector<std::uint32_t> ConnectedAtoms::named(const gemmi::AtomAddress& address) const {
    std::vector<std::uint32_t> atoms;
    const auto found = m_residues.find(residueKey(address.chain_name, address.res_id));
    if (found == m_residues.end() || !found->second)
        return atoms;
    std::bitset<std::numeric_limits<unsigned char>::max() + 1> taken; // letters
    for (const gemmi::Atom& atom : found->second->atoms) {
        const auto letter = static_cast<unsigned char>(atom.altloc);
        if (atom.name != address.atom_name || taken[0] || taken[letter])
            continue;
        taken.set(letter);
        const auto index = static_cast<std::uint32_t>(atom.serial - 1);
        if (m_model.atoms[index].row != SavedAtom::newRow &&
            !areApart(letterInFile(index), address.altloc))
            atoms.push_back(index);
    }
    return atoms;
}

std::vector<std::pair<std::uint32_t, std::uint32_t>>
ConnectedAtoms::pairsOf(const gemmi::Connection& connection) const {
    const bool haveLetters =
        connection.partner1.altloc != '\0' && connection.partner2.altloc != '\0';
    const std::vector<std::uint32_t> others = named(connection.partner2);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    for (const std::uint32_t first : named(connection.partner1))
        for (const std::uint32_t second : others)
            if (haveLetters || !areApart(letterInFile(first), letterInFile(second)))
                pairs.emplace_back(first, second);
    return pairs;
}

} // namespace memory_host
