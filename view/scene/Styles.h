// What each atom is drawn as: the choice by representation, kind of residue and size of the entry.
#pragma once

#include "Contents.h"
#include "Look.h"

#include <cstdint>
#include <vector>

namespace view {

enum class Style : std::uint8_t { None, Dot, Line, Stick, BallAndStick, Sphere };

struct Styles {
    std::vector<Style> atoms; ///< one an atom; None for those that are hidden
    /// One a residue: whether it is part of a ribbon, wherever its atoms are shown.
    std::vector<bool> ribbon;
};

/// Entries of at most that many atoms, or of which the user has picked out no more and less than
/// half, are balls and sticks in the automatic representation; others are sticks where chains are
/// shown in pieces only, or not at all. What is picked out of a larger entry is seen with its
/// waters.
inline constexpr std::size_t smallEntry = 500;

Styles chooseStyles(const Contents& contents, const Marks& marks, const Look& look);

} // namespace view
