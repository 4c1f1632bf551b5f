// The residue names of water, which differ from one program that writes files to the next.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace TAVIK {

/// In coordinate files: water and heavy water. In those of simulations: the models of three, four
/// and five sites, whose names may be cut to three or four letters.
inline constexpr std::array<std::string_view, 18> waterNames = {
    "HOH", "WAT", "H2O", "OH2", "DOD",  "D2O",  "SOL",  "SPC",   "SPCE",
    "TIP", "TP3", "TP4", "TP5", "TIP3", "TIP4", "TIP5", "TIP3P", "TIP4P"};

namespace detail {

/// Names are compared as numbers, as there is one for each of many residues: a 1 and
/// their bytes, if there are at most seven; else 0, which is no name.
constexpr std::uint64_t bytesOf(std::string_view name) {
    if (name.size() >= sizeof(std::uint64_t))
        return 0;
    std::uint64_t bytes = 1;
    for (const char c : name)
        bytes = bytes << 8U | static_cast<unsigned char>(c);
    return bytes;
}

inline constexpr auto waterBytes = [] {
    std::array<std::uint64_t, waterNames.size()> all{};
    std::transform(waterNames.begin(), waterNames.end(), all.begin(), bytesOf);
    return all;
}();

} // namespace detail

/// Whether a residue of this name, without a number, is a water.
constexpr bool isWater(std::string_view residueName) {
    return std::find(detail::waterBytes.begin(), detail::waterBytes.end(),
                     detail::bytesOf(residueName)) != detail::waterBytes.end();
}

} // namespace TAVIK
