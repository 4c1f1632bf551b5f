#include "LegibleColours.h"

#include "Legible.h"

namespace view {

namespace {

// Beyond it a scene is coloured by numbers, and answers would only fill memory.
constexpr std::size_t mostAnswers = 100'000;

} // namespace

Colour LegibleColours::operator()(Colour colour) {
    if (m_hasAnswer && colour == m_asked)
        return m_answer;
    m_hasAnswer = true;
    m_asked = colour;
    if (const auto found = m_answers.find(colour); found != m_answers.end())
        return m_answer = found->second;
    m_answer = legible::text(QColor::fromRgb(colour), QColor::fromRgb(m_background)).rgb();
    if (m_answers.size() < mostAnswers)
        m_answers[colour] = m_answer;
    return m_answer;
}

} // namespace view
