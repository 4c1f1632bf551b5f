// Finds the atoms below an item whose qualified names match a pattern; what names have in common is
// read once.
#pragma once

#include "names/NamePattern.h"

#include "Traversal.h"

#include <vector>

class MatchingAtoms : private TAVIK::AtomNameVisitor {
public:
    /// Looks for atoms that match, or for those that do not; among all atoms, or the selected ones.
    MatchingAtoms(NamePattern& pattern, bool matching, bool allAtoms)
        : m_pattern(pattern), m_matching(matching), m_allAtoms(allAtoms) {}

    /// The atoms at or below `root`, depth first. The result is meaningless when the pattern is cut
    /// off on the way.
    const std::vector<TAVIK::Compound*>& below(TAVIK::Compound* root);

private:
    bool Enter(TAVIK::Compound* composite, std::string_view part) override;
    void Leave() override { m_pattern.removePart(); }
    void Visit(TAVIK::Compound* atom, std::string_view name) override;

    NamePattern& m_pattern;
    bool m_matching;
    bool m_allAtoms;
    std::vector<TAVIK::Compound*> m_found;
};
