// Colours of lines and dots that can be told from the background.
#pragma once

#include "render/Scene.h"

#include <unordered_map>

namespace view {

/// Remembers its answers: a scene has few colours.
class LegibleColours {
public:
    explicit LegibleColours(Colour background) : m_background(background) {}

    /// The colour itself, or one of the same hue with enough contrast to the background for text.
    Colour operator()(Colour colour);

private:
    Colour m_background;
    Colour m_asked = 0; ///< the last one
    Colour m_answer = 0;
    bool m_hasAnswer = false;
    std::unordered_map<Colour, Colour> m_answers;
};

} // namespace view
