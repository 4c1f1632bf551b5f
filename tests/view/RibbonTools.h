// Residues in a row, of which tests make ribbons.
#pragma once

#include "ribbon/Ribbon.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

namespace ribbon_tools {

using Residues = std::vector<view::RibbonResidue>;

inline constexpr double spacing = 3.8; // Å

inline view::RibbonStyle plainStyle() {
    view::RibbonStyle style;
    style.subdivisions = 4;
    style.corners = 6;
    return style;
}

/// Residues along the x axis, each with a colour and an id of its own.
inline Residues chain(const QByteArray& structures) {
    Residues residues;
    for (const char letter : structures) {
        view::RibbonResidue residue;
        const auto i = static_cast<std::uint32_t>(residues.size());
        residue.guide = {static_cast<float>(spacing * i), 0, 0};
        residue.direction = {0, 1, 0};
        residue.structure = letter == '-' ? view::SecondaryStructure::Coil
                                          : static_cast<view::SecondaryStructure>(letter);
        residue.colour = 0xFF000000U + i;
        residue.id = 100 + i;
        residues.push_back(residue);
    }
    return residues;
}

inline Residues inOneColour(Residues residues) {
    for (view::RibbonResidue& residue : residues)
        residue.colour = 0xFF123456U;
    return residues;
}

} // namespace ribbon_tools
