#include "Styles.h"

#include <algorithm>

namespace view {

namespace {

// Of so many linked residues on average, as of a turn of a helix, a ribbon can be made.
constexpr std::size_t shortestChain = 4;

struct EntryFacts {
    std::size_t atoms = 0;       ///< without waters
    std::size_t shown = 0;       ///< of these
    std::size_t shownWaters = 0; ///< atoms
    std::size_t residues = 0;    ///< of polymers, shown
    std::size_t pieces = 0;      ///< in which these are linked
    bool isOnlyWater = true;

    bool hasChains() const { return residues > 0 && residues >= shortestChain * pieces; }
    /// What is left is so little that alternative models, of which one is shown, do not explain it.
    bool isFew() const { return shown + shownWaters <= smallEntry && 2 * shown < atoms; }
    bool isSmall() const { return atoms <= smallEntry || isFew(); }
    bool isPickedOut() const {
        return atoms > smallEntry && (isFew() || (residues > 0 && !hasChains()));
    }
};

EntryFacts factsOf(const Contents& contents, const Marks& marks, std::size_t entry) {
    EntryFacts facts;
    bool isInPiece = false;
    const std::uint32_t end = contents.residueEnd(entry);
    for (std::uint32_t i = contents.entries[entry].firstResidue; i != end; ++i) {
        const ResidueEntry& residue = contents.residues[i];
        const auto begin = marks.shown.begin() + residue.firstAtom;
        const auto atomEnd = marks.shown.begin() + contents.atomEnd(i);
        const auto shown = static_cast<std::size_t>(std::count(begin, atomEnd, 1));
        const bool isChain = residue.isPolymer && shown > 0;
        facts.residues += isChain ? 1 : 0;
        facts.pieces += isChain && !(isInPiece && residue.isLinkedToPrevious) ? 1 : 0;
        isInPiece = isChain;
        if (residue.kind == ResidueKind::Water) {
            facts.shownWaters += shown;
            continue;
        }
        facts.isOnlyWater = false;
        facts.atoms += contents.atomEnd(i) - residue.firstAtom;
        facts.shown += shown;
    }
    return facts;
}

Representation representationOf(Representation wanted, const EntryFacts& facts) {
    if (wanted != Representation::Automatic)
        return wanted;
    if (facts.isSmall())
        return Representation::BallAndStick;
    return facts.hasChains() ? Representation::Ribbon : Representation::Sticks;
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
        const EntryFacts facts = factsOf(contents, marks, entry);
        const Representation representation = representationOf(look.representation, facts);
        const bool skipsWater = !look.showWaters && !facts.isOnlyWater && !facts.isPickedOut();
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
    const std::size_t focusEnd = std::min<std::size_t>(look.focusEnd, contents.atomCount());
    for (std::size_t atom = look.focusBegin; atom < focusEnd; ++atom)
        if (marks.shown[atom] && styles.atoms[atom] == Style::None)
            styles.atoms[atom] = Style::Stick;
    return styles;
}

} // namespace view
