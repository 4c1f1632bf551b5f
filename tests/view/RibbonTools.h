// Residues in a row, of which tests make ribbons.
#pragma once

#include "Backbones.h"
#include "ribbon/Ribbon.h"
#include "ribbon/Vectors.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <span>
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

/// The mesh of the ribbon alone.
inline view::Mesh meshOf(std::span<const view::RibbonResidue> residues,
                         const view::RibbonStyle& style) {
    return view::makeRibbon(residues, style).mesh;
}

/// Residues along the x axis, each with an id of its own.
inline Residues chain(const QByteArray& structures) {
    Residues residues;
    for (const char letter : structures) {
        view::RibbonResidue residue;
        const auto i = static_cast<std::uint32_t>(residues.size());
        residue.guide = {static_cast<float>(spacing * i), 0, 0};
        residue.direction = {0, 1, 0};
        residue.structure = letter == '-' ? view::SecondaryStructure::Coil
                                          : static_cast<view::SecondaryStructure>(letter);
        residue.isLinkedToPrevious = i != 0;
        residue.id = 100 + i;
        residues.push_back(residue);
    }
    return residues;
}

/// The residues of a protein in a file.
inline Residues protein(const QString& path) {
    const view_testing::Proteins read = view_testing::proteins(path.toStdString());
    const auto structures = view::secondaryStructure(read.residues);
    Residues residues;
    for (std::size_t i = 0; i < structures.size(); ++i) {
        const view::BackboneResidue& backbone = read.residues[i];
        view::RibbonResidue residue;
        residue.guide = backbone.ca;
        residue.direction = view::pointOf(view::vectorOf(backbone.o) - view::vectorOf(backbone.c));
        residue.structure = structures[i];
        residue.isLinkedToPrevious = backbone.isLinkedToPrevious;
        residue.id = static_cast<view::Id>(i + 1);
        residues.push_back(residue);
    }
    return residues;
}

} // namespace ribbon_tools
