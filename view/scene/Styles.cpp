#include "Styles.h"

#include <algorithm>

namespace view {

namespace {

struct EntryFacts {
    std::size_t atoms = 0;
    bool hasPolymer = false;
    bool isOnlyWater = true;
};

EntryFacts factsOf(const Contents& contents, std::size_t entry) {
    EntryFacts facts;
    const std::uint32_t end = contents.residueEnd(entry);
    for (std::uint32_t i = contents.entries[entry].firstResidue; i != end; ++i) {
        const ResidueEntry& residue = contents.residues[i];
        facts.hasPolymer = facts.hasPolymer || residue.isPolymer;
        if (residue.kind == ResidueKind::Water)
            continue;
        facts.isOnlyWater = false;
        facts.atoms += contents.atomEnd(i) - residue.firstAtom;
    }
    return facts;
}

Representation representationOf(Representation wanted, const EntryFacts& facts) {
    if (wanted != Representation::Automatic)
        return wanted;
    if (facts.atoms <= smallEntry)
        return Representation::BallAndStick;
    return facts.hasPolymer ? Representation::Ribbon : Representation::Sticks;
}

// The style of a residue's atoms; those of a ribbon have none of their own.
Style styleOf(const ResidueEntry& residue, Representation representation) {
    if (residue.kind == ResidueKind::Marker)
        return Style::Dot;
    switch (representation) {
    case Representation::Points:
        return Style::Dot;
    case Representation::Lines:
        return Style::Line;
    case Representation::Sticks:
        return Style::Stick;
    case Representation::BallAndStick:
        return Style::BallAndStick;
    case Representation::Spheres:
        return Style::Sphere;
    case Representation::Automatic:
    case Representation::Ribbon:
        break;
    }
    if (residue.isPolymer)
        return residue.isStandard ? Style::None : Style::Stick;
    return residue.kind == ResidueKind::Ion ? Style::Sphere : Style::Stick;
}

// Residues of a ribbon that hold a ligand by a bond are sticks, too, so that the bond has two ends.
void showLinksToLigands(const Contents& contents, const Marks& marks, Styles& styles) {
    std::vector<std::uint32_t> residueOf;
    const auto find = [&](std::uint32_t atom) {
        const auto next = std::upper_bound(contents.residues.begin(), contents.residues.end(), atom,
                                           [](std::uint32_t value, const ResidueEntry& residue) {
                                               return value < residue.firstAtom;
                                           });
        return static_cast<std::size_t>(next - contents.residues.begin()) - 1;
    };
    for (std::size_t i = 0; i != contents.bonds.size(); ++i) {
        const Segment& bond = contents.bonds[i];
        if (!marks.bonds[i] ||
            (styles.atoms[bond.from] == Style::Stick) == (styles.atoms[bond.to] == Style::Stick))
            continue;
        const bool isFrom = styles.atoms[bond.from] == Style::Stick;
        const std::size_t ligand = find(isFrom ? bond.from : bond.to);
        const std::size_t holder = find(isFrom ? bond.to : bond.from);
        if (contents.residues[ligand].kind == ResidueKind::Other &&
            !contents.residues[ligand].isPolymer && styles.ribbon[holder])
            residueOf.push_back(static_cast<std::uint32_t>(holder));
    }
    for (const std::uint32_t residue : residueOf)
        for (std::uint32_t i = contents.residues[residue].firstAtom; i != contents.atomEnd(residue);
             ++i)
            styles.atoms[i] = marks.shown[i] ? Style::Stick : Style::None;
}

} // namespace

Styles chooseStyles(const Contents& contents, const Marks& marks, const Look& look) {
    Styles styles;
    styles.atoms.resize(contents.atomCount());
    styles.ribbon.resize(contents.residues.size());
    bool anyRibbon = false;
    for (std::size_t entry = 0; entry != contents.entries.size(); ++entry) {
        const EntryFacts facts = factsOf(contents, entry);
        const Representation representation = representationOf(look.representation, facts);
        const bool skipsWater = !look.showWaters && !facts.isOnlyWater;
        const std::uint32_t end = contents.residueEnd(entry);
        for (std::uint32_t i = contents.entries[entry].firstResidue; i != end; ++i) {
            const ResidueEntry& residue = contents.residues[i];
            if (skipsWater && residue.kind == ResidueKind::Water)
                continue;
            if (representation == Representation::Ribbon && residue.isPolymer)
                anyRibbon = styles.ribbon[i] = true;
            const Style style = styleOf(residue, representation);
            const std::uint32_t atomEnd = contents.atomEnd(i);
            for (std::uint32_t atom = residue.firstAtom; atom != atomEnd; ++atom)
                styles.atoms[atom] = marks.shown[atom] ? style : Style::None;
        }
    }
    if (anyRibbon)
        showLinksToLigands(contents, marks, styles);
    return styles;
}

} // namespace view
