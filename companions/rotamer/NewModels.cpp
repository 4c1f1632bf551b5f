#include "NewModels.h"

#include "Ancestry.h"
#include "AtomBonds.h"
#include "AtomDetails.h"
#include "DataMaker.h"
#include "Traversal.h"

#include <algorithm>
#include <new>
#include <unordered_map>

namespace rotamer {

namespace {

using TAVIK::Atom;
using TAVIK::Bond;
using TAVIK::Compound;

// Marks and colour, which commands have given to the one or other.
void copyLook(const Compound& from, Compound& to) {
    if (from.GetColor().rgba() != to.GetColor().rgba())
        to.SetColor(from.GetColor());
    if (from.IsSelected())
        to.SetSelected(true);
}

} // namespace

NewModels::NewModels(Compound* residue, const Conformation& conformation,
                     const SideChain& sideChain)
    : m_residue(residue), m_conformation(conformation), m_sideChain(sideChain) {
    readBonds();
}

void NewModels::readBonds() {
    const std::vector<ConformationAtom>& atoms = m_conformation.atoms;
    std::unordered_map<const Compound*, std::size_t> places;
    for (std::size_t i = 0; i != atoms.size(); ++i)
        places.emplace(atoms[i].item, i);
    std::vector<Bond*> bonds;
    for (std::size_t i = 0; i != atoms.size(); ++i) {
        bonds.clear();
        TAVIK::GetBonds(atoms[i].item, bonds);
        for (Bond* bond : bonds) {
            Compound** const ends = bond->PartBegin();
            Compound* const other = ends[ends[0] == atoms[i].item ? 1 : 0];
            const auto found = places.find(other);
            if (found == places.end())
                m_links.push_back({i, none, other, bond});
            else if (found->second > i)
                m_links.push_back({i, found->second, nullptr, bond});
        }
    }
    // In the order in which they were made, which is not that of the lists of atoms.
    std::ranges::sort(m_links, {}, [](const Link& link) { return link.bond->GetId(); });
}

const Compound* NewModels::anchor() const {
    for (const Link& link : m_links) {
        if (link.inner != none || !m_sideChain.isTurned(link.atom))
            continue;
        const Compound* around = link.outer;
        while (around && around != m_residue)
            around = TAVIK::GetParent(around);
        if (!around) // else a later model of this residue
            return link.outer;
    }
    return nullptr;
}

// By the atoms of that name: the one to be copied may be of a model that is not active, and so is
// not to be seen whatever was commanded.
bool NewModels::isShown(const ConformationAtom& atom) const {
    if (atom.item->IsVisible())
        return true;
    bool isAny = false;
    TAVIK::ForAtoms(m_residue, true, [&](Compound* other) {
        isAny = isAny || (other->IsVisible() && other->GetName() == atom.name);
    });
    return isAny;
}

Atom* NewModels::addCopy(std::size_t atom, const Point& place, unsigned int model) {
    const ConformationAtom& old = m_conformation.atoms[atom];
    TAVIK::AtomValues values{.name = old.name,
                             .type = old.element,
                             .position = {static_cast<float>(place[0]),
                                          static_cast<float>(place[1]),
                                          static_cast<float>(place[2]), true},
                             .temperature = old.item->GetTemperature(),
                             .model = model,
                             .partial = TAVIK::GetPartialCharge(old.item),
                             .details = TAVIK::GetAtomDetails(old.item)};
    // No file has it yet.
    values.details.serial = TAVIK::AtomDetails::noSerial;
    values.details.alternative = '\0';
    m_made.reserve(m_made.size() + 1);
    Atom* const made = TAVIK::DataMaker::makeAtom(TAVIK::GetParent(old.item), values);
    m_made.push_back(made);
    copyLook(*old.item, *made);
    if (!m_areShown[atom])
        made->SetVisible(false);
    return made;
}

void NewModels::addBonds(const Atoms& atoms, unsigned int model) {
    for (const Link& link : m_links) {
        Compound* const first = atoms.items[link.atom];
        Compound* const second = link.inner == none ? link.outer : atoms.items[link.inner];
        const bool isNew =
            atoms.areNew[link.atom] || (link.inner != none && atoms.areNew[link.inner]);
        if (!first || !second || !isNew)
            continue;
        if (const auto* const outer = dynamic_cast<const Atom*>(link.outer);
            outer && residueOf(outer) == m_residue && modelOf(*outer) != model)
            continue;
        // Bonds of destroyed atoms go with them: what is made here is not remembered.
        copyLook(*link.bond,
                 *TAVIK::DataMaker::makeBond(TAVIK::GetParent(link.bond), first, second));
    }
}

// Gives a later model its own copies of what it has shared so far and the side chain moves.
void NewModels::partFrom(unsigned int model) {
    Atoms atoms;
    for (std::size_t i = 0; i != m_conformation.atoms.size(); ++i) {
        const ConformationAtom& old = m_conformation.atoms[i];
        const bool isNew = isShared(i) && m_sideChain.isTurned(i);
        atoms.areNew.push_back(isNew);
        atoms.items.push_back(isNew         ? addCopy(i, old.position, model)
                              : isShared(i) ? old.item
                                            : nullptr);
    }
    addBonds(atoms, model);
}

void NewModels::addModel(const Rotamer& rotamer, unsigned int model) {
    const std::vector<Point> points = m_sideChain.turned(rotamer);
    Atoms atoms;
    for (std::size_t i = 0; i != points.size(); ++i) {
        const ConformationAtom& old = m_conformation.atoms[i];
        const bool isNew = !isShared(i) || m_sideChain.isTurned(i);
        atoms.areNew.push_back(isNew);
        atoms.items.push_back(isNew ? addCopy(i, points[i], model) : old.item);
    }
    addBonds(atoms, model);
}

// Takes away what was made so far.
void NewModels::undo() noexcept {
    try {
        for (Compound* atom : m_made)
            TAVIK::DataMaker::Destroy(atom);
        for (const ConformationAtom& atom : m_conformation.atoms)
            if (atom.model == 0)
                TAVIK::SetAtomModel(atom.item, 0);
    } catch (const std::bad_alloc&) { // The host takes the whole change back then.
    }
}

void NewModels::add(std::span<const Rotamer* const> rotamers, unsigned int first) {
    for (const ConformationAtom& atom : m_conformation.atoms)
        m_areShown.push_back(isShown(atom));
    try {
        // First of all: the first model that a residue gets is its active one.
        for (std::size_t i = 0; i != m_conformation.atoms.size(); ++i)
            if (isShared(i) && m_sideChain.isTurned(i))
                TAVIK::SetAtomModel(m_conformation.atoms[i].item, m_conformation.firstModel);
        for (const auto& later : m_conformation.later)
            partFrom(later.first);
        for (const Rotamer* rotamer : rotamers)
            addModel(*rotamer, first++);
    } catch (...) {
        undo();
        throw;
    }
}

} // namespace rotamer
