#include "MadeBonds.h"

#include "Bonds.h"
#include "Elements.h"

#include <algorithm>

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

} // namespace memory_host
