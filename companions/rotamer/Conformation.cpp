#include "Conformation.h"

#include "Ancestry.h"
#include "Traversal.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace rotamer {

namespace {

bool isHydrogen(const ConformationAtom& atom) {
    return atom.element == "H" || atom.element == "D";
}

// All atoms of the residue, of whatever models.
std::vector<ConformationAtom> readAtoms(TAVIK::Compound* residue, std::string& fault) {
    std::vector<TAVIK::Compound*> items;
    TAVIK::GetAtoms(residue, items, true);
    std::vector<ConformationAtom> atoms;
    for (TAVIK::Compound* item : items) {
        auto* const atom = dynamic_cast<TAVIK::Atom*>(item);
        const TAVIK::Vertex place = item->GetPosition();
        if (!atom)
            continue;
        if (!place.isValid())
            fault = "the atom " + atom->GetName() + " has no position";
        atoms.push_back({atom,
                         atom->GetName(),
                         atom->GetType(),
                         modelOf(*atom),
                         {place[0], place[1], place[2]}});
    }
    return atoms;
}

} // namespace

unsigned int modelOf(const TAVIK::Atom& atom) {
    const std::string text = atom.GetModelNumber();
    unsigned int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

const TAVIK::Compound* residueOf(const TAVIK::Compound* item) {
    while (item && !dynamic_cast<const TAVIK::Residue*>(item))
        item = TAVIK::GetParent(item);
    return item;
}

Conformation readConformation(TAVIK::Compound* residue) {
    Conformation result;
    const std::string name = residue->GetName();
    result.type = name.substr(0, name.find(' '));
    if (result.type.find(',') != std::string::npos)
        result.fault = "it is several residues in one place";
    std::vector<ConformationAtom> all = readAtoms(residue, result.fault);
    unsigned int first = 0;
    for (const ConformationAtom& atom : all)
        if (atom.model != 0 && (first == 0 || atom.model < first))
            first = atom.model;
    if (first != 0)
        result.firstModel = first;
    std::set<std::string_view> names;
    for (const ConformationAtom& atom : all)
        if (atom.model != 0 && atom.model != first)
            result.later[atom.model].emplace(atom.name, atom.position);
        else if (!names.insert(atom.name).second && result.fault.empty())
            result.fault = "it has several atoms " + atom.name;
    std::erase_if(all, [first](const ConformationAtom& atom) {
        return atom.model != 0 && atom.model != first;
    });
    result.atoms = std::move(all);
    if (result.atoms.empty() && result.fault.empty())
        result.fault = "it has no atoms";
    return result;
}

SideChain sideChainOf(const Conformation& conformation) {
    std::vector<ResidueAtom> atoms;
    for (const ConformationAtom& atom : conformation.atoms)
        atoms.push_back({atom.name, isHydrogen(atom), atom.position});
    return {conformation.type, std::move(atoms)};
}

} // namespace rotamer
