#include "Balls.h"

#include "GemmiReading.h"
#include "VanDerWaals.h"

#include <cstdint>

namespace benchmarks {

std::vector<solid::Ball> ballsOf(const std::string& path) {
    std::vector<solid::Ball> balls;
    const gemmi::Structure structure = gemmi_reading::readStructure(path);
    for (const gemmi::Chain& chain : structure.models.front().chains)
        for (const gemmi::Residue& residue : chain.residues)
            for (const gemmi::Atom& atom : residue.atoms)
                if (!residue.is_water() && !atom.is_hydrogen() &&
                    (atom.altloc == '\0' || atom.altloc == 'A'))
                    balls.push_back(
                        {{static_cast<float>(atom.pos.x), static_cast<float>(atom.pos.y),
                          static_cast<float>(atom.pos.z)},
                         vanDerWaalsRadius(static_cast<std::uint8_t>(atom.element.ordinal()))});
    return balls;
}

solid::ForEach inTurn() {
    return [](std::size_t count, const std::function<void(std::size_t)>& part) {
        for (std::size_t i = 0; i != count; ++i)
            part(i);
    };
}

std::string counted(std::size_t count, const std::string& what) {
    std::string digits = std::to_string(count);
    for (std::size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, 1, ',');
    return digits + ' ' + what;
}

} // namespace benchmarks
