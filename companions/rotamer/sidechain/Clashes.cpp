#include "Clashes.h"

#include <cmath>

namespace rotamer {

namespace {

double allowedOverlap(BondRole a, BondRole b) {
    if (a == BondRole::None || b == BondRole::None)
        return clashOverlap;
    if (a == BondRole::Heavy && b == BondRole::Heavy)
        return clashOverlap + heavyAllowance;
    return a == b ? clashOverlap : clashOverlap + hydrogenAllowance;
}

double squaredDistance(const Point& a, const Point& b) {
    const double x = a[0] - b[0];
    const double y = a[1] - b[1];
    const double z = a[2] - b[2];
    return x * x + y * y + z * z;
}

} // namespace

Clashes findClashes(std::span<const Ball> atoms, std::span<const Ball> others) {
    Clashes found;
    for (std::size_t i = 0; i != atoms.size(); ++i)
        for (std::size_t j = 0; j != others.size(); ++j) {
            const Ball& a = atoms[i];
            const Ball& b = others[j];
            // Most are far apart, and need no root.
            if (const double reach = a.radius + b.radius;
                !(squaredDistance(a.position, b.position) <= reach * reach))
                continue;
            const double overlap =
                a.radius + b.radius - std::sqrt(squaredDistance(a.position, b.position));
            if (!(overlap >= allowedOverlap(a.role, b.role)))
                continue;
            ++found.count;
            if (overlap > found.worst) {
                found.worst = overlap;
                found.atom = i;
                found.other = j;
            }
        }
    return found;
}

} // namespace rotamer
