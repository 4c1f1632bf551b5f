// Finds the atoms below an item whose qualified names match a pattern, without asking for every
// name: a common prefix is read once.
#pragma once

#include "names/NamePattern.h"

#include "Compound.h"

#include <vector>

class MatchingAtoms {
public:
    /// Looks for atoms that match, or for those that do not; among all atoms, or the selected ones.
    MatchingAtoms(NamePattern& pattern, bool matching, bool allAtoms)
        : m_pattern(pattern), m_matching(matching), m_allAtoms(allAtoms) {}

    /// The atoms at or below `root`, depth first. The result is meaningless when the pattern is cut
    /// off on the way.
    ///
    /// Relies on the host's qualified names: they have a component for each level, so that all
    /// names below a composite begin with its own, and siblings differ in the last component. This
    /// is checked for one name of each composite, because some composites do not appear in names.
    const std::vector<TAVIK::Compound*>& below(TAVIK::Compound* root);

private:
    void find(TAVIK::Compound* item);
    std::optional<bool> answerForAllBelow(TAVIK::Compound* composite);
    void findOneByOne(TAVIK::Compound* item);
    void readSiblings(TAVIK::Compound* composite);
    bool readFirst(const TAVIK::Compound* atom);
    void take(bool isMatch);

    NamePattern& m_pattern;
    bool m_matching;
    bool m_allAtoms;
    std::vector<TAVIK::Compound*> m_found;

    std::vector<TAVIK::Compound*> m_atoms; ///< below one item, which are read one by one
    std::size_t m_next = 0;                ///< index of the first one that is not read yet
};
