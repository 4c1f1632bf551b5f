#include "MadeBonds.h"

#include "BondAtoms.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace memory_host {

namespace {

double square(double x) {
    return x * x;
}

bool isFoundByDistance(const SavedAtom& a, const SavedAtom& b,
                       const std::vector<std::string>& names) {
    if (!a.hasPosition || !b.hasPosition || (a.model != b.model && a.model != 0 && b.model != 0))
        return false;
    const Element first = elementOf(names[a.element]);
    const Element second = elementOf(names[b.element]);
    // A metal's bonds depend on what else is near.
    if (isMetal(first) || isMetal(second) || (isHydrogen(first) && isHydrogen(second)))
        return false;
    const double longest = static_cast<double>(covalentRadius(first)) +
                           static_cast<double>(covalentRadius(second)) + bondTolerance;
    double squared = 0.0;
    for (std::size_t axis = 0; axis != a.position.size(); ++axis)
        squared +=
            square(static_cast<double>(a.position[axis]) - static_cast<double>(b.position[axis]));
    return squared >= square(shortestBond) && squared <= square(longest);
}

// The alternative location, of which residues have each their own models; 0 for none. Those of
// models that were made have no letter yet.
std::uint16_t alternativeOf(const SavedAtom& atom) {
    constexpr std::uint16_t letters = 256;
    const auto letter = static_cast<unsigned char>(atom.details.alternative);
    return letter != 0 || atom.model == 0 ? letter
                                          : static_cast<std::uint16_t>(letters + atom.model);
}

} // namespace

bool isToBeListed(const SavedModel& model, const SavedBond& bond,
                  const std::vector<std::string>& names) {
    return !bond.isListed &&
           !isFoundByDistance(model.atoms[bond.first], model.atoms[bond.second], names);
}

std::size_t countBondsToList(const SavedModel& model, const std::vector<std::string>& names) {
    return static_cast<std::size_t>(std::ranges::count_if(
        model.bonds, [&](const SavedBond& bond) { return isToBeListed(model, bond, names); }));
}

std::size_t countBondsComingBack(const SavedModel& model, const std::vector<std::string>& names) {
    if (!model.lacksBonds)
        return 0;
    std::vector<BondAtom> atoms(model.atoms.size());
    const BondAtoms make;
    std::uint16_t alternatives = 0;
    for (std::size_t i = 0; i != model.residues.size(); ++i) {
        const bool canBond = names[model.residues[i].name] != membraneMarker;
        for (std::uint32_t k = model.residues[i].firstAtom; k != model.atomEnd(i); ++k) {
            const SavedAtom& atom = model.atoms[k];
            atoms[k] = make.of(elementOf(names[atom.element]), atom.position,
                               canBond && atom.hasPosition, alternativeOf(atom));
            alternatives = std::max(alternatives, atom.model);
        }
    }
    std::vector<BondPair> there = model.foundBonds;
    for (const SavedBond& bond : model.bonds) {
        there.emplace_back(bond.first, bond.second);
        if (bond.isListed)
            BondAtoms::join(atoms[bond.first], atoms[bond.second]);
    }
    std::ranges::sort(there);
    std::vector<BondPair> back;
    std::ranges::set_difference(findBonds(atoms, alternatives).pairs, there,
                                std::back_inserter(back));
    return back.size();
}

} // namespace memory_host
