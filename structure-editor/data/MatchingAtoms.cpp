#include "MatchingAtoms.h"

const std::vector<TAVIK::Compound*>& MatchingAtoms::below(TAVIK::Compound* root) {
    m_found.clear();
    TAVIK::VisitAtomNames(root, m_allAtoms, *this);
    return m_found;
}

bool MatchingAtoms::Enter(TAVIK::Compound* composite, std::string_view part) {
    m_pattern.addPart(part);
    const std::optional<bool> all = m_pattern.answerForAll();
    if (!all)
        return true;
    m_pattern.removePart();
    if (*all == m_matching)
        TAVIK::GetAtoms(composite, m_found, m_allAtoms);
    return false;
}

void MatchingAtoms::Visit(TAVIK::Compound* atom, std::string_view name) {
    if (m_pattern.matchesRest(name) == m_matching)
        m_found.push_back(atom);
}
