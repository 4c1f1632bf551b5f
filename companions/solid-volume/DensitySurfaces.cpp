#include "DensitySurfaces.h"

#include "mesh/Density.h"

#include <gemmi/it92.hpp>

#include <array>
#include <cstddef>
#include <map>
#include <utility>

namespace solid {

namespace {

// Atoms of the same key have the same profile, which `make` makes.
template <class KeyOf, class Make>
Mesh densitySurface(const EntryAtoms& atoms, double level, double step, const ForEach& forEach,
                    const KeyOf& keyOf, const Make& make) {
    std::map<decltype(keyOf(0)), std::uint32_t> known;
    std::vector<DensityProfile> profiles;
    std::vector<DensityAtom> all;
    all.reserve(atoms.balls.size());
    for (std::size_t i = 0; i != atoms.balls.size(); ++i) {
        const auto key = keyOf(i);
        const auto [found, isNew] =
            known.try_emplace(key, static_cast<std::uint32_t>(profiles.size()));
        if (isNew)
            profiles.push_back(make(key));
        all.push_back({atoms.balls[i], found->second});
    }
    return polygonize(DensitySolid(all, std::move(profiles), level, step), forEach);
}

DensityProfile electronsOf(std::uint8_t element) {
    using Table = gemmi::IT92<double>;
    const auto known = static_cast<gemmi::El>(element);
    const auto& factor = Table::get(Table::has(known) ? known : gemmi::El::X);
    std::array<ScatteringTerm, 4> terms{};
    for (std::size_t i = 0; i != terms.size(); ++i)
        terms[i] = {factor.a(static_cast<int>(i)), factor.b(static_cast<int>(i))};
    constexpr double atRest = 0;
    return electrons(terms, atRest);
}

} // namespace

Mesh gaussianSurface(const EntryAtoms& atoms, double step, const ForEach& forEach) {
    return densitySurface(
        atoms, 1, step, forEach, [&atoms](std::size_t i) { return atoms.balls[i].radius; },
        [](float radius) { return blob(double{radius}); });
}

Mesh electronDensitySurface(const EntryAtoms& atoms, double step, const ForEach& forEach) {
    return densitySurface(
        atoms, molecularDensity, step, forEach,
        [&atoms](std::size_t i) { return atoms.elements[i]; }, electronsOf);
}

} // namespace solid
