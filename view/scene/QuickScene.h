// A coarse scene that stands for another while it moves.
#pragma once

#include "Contents.h"
#include "Styles.h"
#include "render/Scene.h"

#include <cstddef>

namespace view {

/// As many dots, and as many lines, a quick scene has at most.
inline constexpr std::size_t dotsWhileMoving = 200'000;
inline constexpr std::size_t linesWhileMoving = 200'000;

/// Atoms, and the vertices of meshes, as dots; ribbons as lines from one atom that they pass to the
/// next. Of what is too many for a quick picture an even part is there: every second or third atom,
/// residue or line, and so on.
Scene makeQuickScene(const Contents& contents, const Marks& marks, const Styles& styles,
                     Colour background);

} // namespace view
