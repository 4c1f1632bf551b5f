#include "RealBalls.h"

#include "GemmiReading.h"

namespace surface_checks {

namespace {

float radiusOf(gemmi::El element) {
    switch (element) {
    case gemmi::El::N:
        return 1.55F;
    case gemmi::El::O:
        return 1.52F;
    case gemmi::El::P:
    case gemmi::El::S:
        return 1.8F;
    default:
        return 1.7F;
    }
}

} // namespace

std::vector<solid::Ball> ballsOf(const std::string& path) {
    std::vector<solid::Ball> balls;
    const gemmi::Structure read = gemmi_reading::readStructure(path);
    for (const gemmi::Chain& chain : read.models.front().chains)
        for (const gemmi::Residue& residue : chain.residues)
            for (const gemmi::Atom& atom : residue.atoms)
                if (!residue.is_water() && !atom.is_hydrogen() &&
                    (atom.altloc == '\0' || atom.altloc == 'A'))
                    balls.push_back(
                        {{static_cast<float>(atom.pos.x), static_cast<float>(atom.pos.y),
                          static_cast<float>(atom.pos.z)},
                         radiusOf(atom.element.elem)});
    return balls;
}

} // namespace surface_checks
