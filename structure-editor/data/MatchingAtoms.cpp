#include "MatchingAtoms.h"

#include "Traversal.h"

#include <algorithm>

namespace {

bool isLeaf(TAVIK::Compound* item) {
    return item && item->ChildBegin() == item->ChildEnd();
}

} // namespace

const std::vector<TAVIK::Compound*>& MatchingAtoms::below(TAVIK::Compound* root) {
    m_found.clear();
    if (root)
        find(root);
    return m_found;
}

void MatchingAtoms::find(TAVIK::Compound* item) {
    if (!m_pattern.cutOff().isEmpty() || (!m_allAtoms && !item->HasSelected()))
        return;
    TAVIK::Compound** const begin = item->ChildBegin();
    TAVIK::Compound** const end = item->ChildEnd();
    if (begin == end || std::any_of(begin, end, isLeaf)) {
        findOneByOne(item);
    } else if (const std::optional<bool> all = answerForAllBelow(item)) {
        if (*all == m_matching)
            TAVIK::GetAtoms(item, m_found, m_allAtoms);
    } else {
        for (TAVIK::Compound** it = begin; it != end; ++it)
            if (*it)
                find(*it);
    }
}

/// The answer for all atoms below a composite that holds composites, if its own name decides it.
std::optional<bool> MatchingAtoms::answerForAllBelow(TAVIK::Compound* composite) {
    const std::string beginning = composite->GetFQName() + '/';
    m_pattern.setBeginning(beginning);
    const std::optional<bool> all = m_pattern.answerForAll();
    if (!all)
        return all;
    TAVIK::Compound* first = composite;
    while (first && first->ChildBegin() != first->ChildEnd())
        first = *first->ChildBegin();
    return first && first->GetFQName().starts_with(beginning) ? all : std::nullopt;
}

void MatchingAtoms::findOneByOne(TAVIK::Compound* item) {
    m_atoms.clear();
    m_next = 0;
    TAVIK::GetAtoms(item, m_atoms, m_allAtoms);
    if (m_next < m_atoms.size())
        readSiblings(item);
    while (m_next < m_atoms.size())
        take(m_pattern.matches(m_atoms[m_next]->GetFQName()));
}

/// Reads the atoms that are children of a composite, and those below it, in their order.
void MatchingAtoms::readSiblings(TAVIK::Compound* composite) {
    bool isBegun = false;
    TAVIK::Compound** const end = composite->ChildEnd();
    for (TAVIK::Compound** it = composite->ChildBegin(); it != end; ++it) {
        TAVIK::Compound* child = *it;
        if (!child)
            continue;
        if (m_next == m_atoms.size())
            return;
        if (child != m_atoms[m_next]) {
            if (!isLeaf(child)) {
                readSiblings(child);
                isBegun = false;
            }
        } else if (!isBegun) {
            isBegun = readFirst(child);
        } else if (const std::optional<bool> all = m_pattern.answerForAll()) {
            take(*all);
        } else {
            take(m_pattern.matchesRest(child->GetName()));
        }
    }
}

/// Matches the first of several siblings. Returns whether its name gives their common prefix.
bool MatchingAtoms::readFirst(const TAVIK::Compound* atom) {
    const std::string own = atom->GetName();
    std::string name = atom->GetFQName();
    if (!name.ends_with('/' + own)) {
        take(m_pattern.matches(name));
        return false;
    }
    name.resize(name.size() - own.size());
    m_pattern.setBeginning(name);
    take(m_pattern.matchesRest(own));
    return true;
}

void MatchingAtoms::take(bool isMatch) {
    if (isMatch == m_matching)
        m_found.push_back(m_atoms[m_next]);
    ++m_next;
}
