#include "AtomCharges.h"

#include "ActiveModel.h"
#include "AtomDetails.h"
#include "ManyAtoms.h"
#include "PartialCharge.h"
#include "ResidueStates.h"
#include "ResidueWalk.h"
#include "Space.h"
#include "Traversal.h"
#include "Waters.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace electrostatics {

namespace {

using TAVIK::Atom;
using TAVIK::Compound;

class ChargeReader {
public:
    explicit ChargeReader(bool onlyShown) : m_onlyShown(onlyShown) {}

    void read(Compound* entry) {
        m_walk(entry, [this](const ResidueAtoms& group) {
            if (std::exchange(m_chain, group.chain) != group.chain)
                m_isInChain = false;
            if (!TAVIK::isWater(group.name))
                takeAtoms(group);
        });
    }
    AtomCharges result() { return std::move(m_result); }

private:
    void takeAtoms(const ResidueAtoms& group);
    void choose(const ResidueAtoms& group);
    bool takeGiven();
    void takeAssigned(std::string_view residue);
    void add(std::size_t atom, double charge, bool isGiven);

    bool m_onlyShown;
    bool m_isInChain = false; ///< an amino acid of the chain has been seen
    AtomCharges m_result;
    ResidueWalk m_walk;
    const Compound* m_chain = nullptr;
    std::vector<TAVIK::ItemLook> m_looks;
    // The atoms that count, and where they are.
    std::vector<const Atom*> m_atoms;
    std::vector<Point> m_positions;
};

void ChargeReader::takeAtoms(const ResidueAtoms& group) {
    m_looks.resize(group.atoms.size());
    TAVIK::GetLooks(group.atoms, m_looks);
    choose(group);
    if (!takeGiven())
        takeAssigned(group.name);
    m_isInChain = m_isInChain || isAminoAcid(m_atoms);
}

// The atoms that can be shown, and of these all, or those that are.
void ChargeReader::choose(const ResidueAtoms& group) {
    const std::string active = std::to_string(TAVIK::GetActiveModel(group.residue));
    m_atoms.clear();
    m_positions.clear();
    for (std::size_t i = 0; i != group.atoms.size(); ++i) {
        const TAVIK::ItemLook& look = m_looks[i];
        if (!look.place.isValid || (m_onlyShown && !look.isVisible))
            continue;
        const auto* const atom = static_cast<const Atom*>(group.atoms[i]);
        const std::string model = atom->GetModelNumber();
        if (model == "0" || model == active) {
            m_atoms.push_back(atom);
            m_positions.push_back(look.place.position);
        }
    }
}

// Takes what the file says, and returns whether it says something.
bool ChargeReader::takeGiven() {
    bool hasPartial = false;
    bool hasFormal = false;
    std::vector<double> partial;
    std::vector<double> formal;
    for (const Atom* const atom : m_atoms) {
        const TAVIK::PartialCharge given = TAVIK::GetPartialCharge(atom);
        partial.push_back(given.isKnown ? double(given.charge) : 0.0);
        formal.push_back(TAVIK::GetAtomDetails(atom).formalCharge);
        hasPartial = hasPartial || given.isKnown;
        hasFormal = hasFormal || formal.back() != 0;
    }
    for (std::size_t i = 0; i != m_atoms.size() && (hasPartial || hasFormal); ++i)
        add(i, hasPartial ? partial[i] : formal[i], true);
    return hasPartial || hasFormal;
}

void ChargeReader::takeAssigned(std::string_view residue) {
    const std::vector<double> charges = chargesAtPh7(residue, m_atoms, !m_isInChain);
    for (std::size_t i = 0; i != charges.size(); ++i)
        add(i, charges[i], false);
}

void ChargeReader::add(std::size_t atom, double charge, bool isGiven) {
    if (charge == 0)
        return;
    m_result.charges.push_back({m_positions[atom], static_cast<float>(charge)});
    m_result.fromFile += isGiven;
    m_result.total += charge;
}

// The first entry that has one of these atoms; null if they are all gone.
Compound* entryOf(std::vector<unsigned int> atoms) {
    std::ranges::sort(atoms);
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::vector<Compound*> items;
    for (Compound** entry = space->ChildBegin(); entry != space->ChildEnd(); ++entry) {
        items.clear();
        if (*entry && dynamic_cast<TAVIK::Composite*>(*entry))
            TAVIK::GetAtoms(*entry, items, true);
        if (std::ranges::any_of(items, [&atoms](const Compound* atom) {
                return std::ranges::binary_search(atoms, atom->GetId());
            }))
            return *entry;
    }
    return nullptr;
}

} // namespace

AtomCharges readCharges(const TAVIK::SurfaceMesh& surface) {
    Compound* const entry = surface.atoms.empty() ? nullptr : entryOf(surface.atoms);
    ChargeReader reader(!entry);
    reader.read(entry ? entry : TAVIK::Space::instance());
    AtomCharges charges = reader.result();
    if (entry)
        charges.entry = entry->GetName();
    return charges;
}

} // namespace electrostatics
