#include "BondReferences.h"

#include <algorithm>

namespace memory_host {

void BondReferences::Letters::add(const std::string& letter) {
    areSeveral = areSeveral || (first && *first != letter);
    if (!first)
        first = letter;
}

// The same in both orders.
BondReferences::Key BondReferences::keyOf(const std::string& first, const std::string& second) {
    const bool isSwapped = second < first;
    return {isSwapped ? second + first : first + second, isSwapped};
}

std::vector<BondReferences::Key> BondReferences::keysOf(const Atom& first, const Atom& second) {
    std::vector<Key> keys;
    keys.reserve(first.names.size() * second.names.size());
    for (const std::string& name : first.names)
        for (const std::string& other : second.names)
            keys.push_back(keyOf(name, other));
    return keys;
}

void BondReferences::lose(const Atom& first, const Atom& second, bool isFoundAgain) {
    m_lost.push_back({keysOf(first, second), {first.letter, second.letter}, isFoundAgain});
    for (const Key& key : m_lost.back().keys)
        m_known[key.text].isLost = true;
}

void BondReferences::reletter(const Atom& first, const Atom& second, const SavedBond& bond) {
    const bool isNeeded = !bond.isFoundAgain && !bond.isUnread;
    for (const Key& key : keysOf(first, second)) {
        Known& known = m_known[key.text];
        known.fate.joined = std::max<std::size_t>(known.fate.joined, bond.joined);
        if (isNeeded)
            known.needed.push_back({m_needed.size(), key.isSwapped});
    }
    if (isNeeded)
        m_needed.push_back({&bond, {first.letter, second.letter}});
}

void BondReferences::keep(const Atom& first, const Atom& second) {
    const std::vector<Key> keys = keysOf(first, second);
    for (const Key& key : keys)
        if (const auto found = m_known.find(key.text); found != m_known.end()) {
            found->second.isKept = true;
            found->second.letters[key.isSwapped ? 1 : 0].add(first.letter);
            found->second.letters[key.isSwapped ? 0 : 1].add(second.letter);
        }
    if (m_known.contains(keys.front().text))
        m_kept.insert(keys.front().text);
}

// Whether the letters of the bonds that are left tell them from one that is lost.
bool BondReferences::excludes(const Known& known, const Lost& bond, bool isSwapped) {
    for (const std::size_t i : {0, 1})
        if (known.letters[i].areOne() &&
            *known.letters[i].first != bond.letters[isSwapped ? 1 - i : i])
            return true;
    return false;
}

void BondReferences::settle() {
    for (auto& [key, known] : m_known) {
        Fate& fate = known.fate;
        fate.isKept = known.isKept || !known.isLost;
        for (const std::size_t i : {0, 1})
            if (known.letters[i].areOne())
                fate.letters[i] = known.letters[i].first;
        fate.joinedToo = fate.letters[0] && fate.letters[1] ? 0 : fate.joined;
    }
    // A bond that another model has comes back, too, but not because of alternative locations.
    for (const Lost& bond : m_lost)
        if (!bond.isFoundAgain && !m_kept.contains(bond.keys.front().text))
            for (const Key& key : bond.keys)
                if (Known& known = m_known[key.text]; known.isKept) {
                    ++known.fate.comingBack;
                    known.fate.comingBackToo += excludes(known, bond, key.isSwapped) ? 0 : 1;
                }
}

BondReferences::Fate BondReferences::of(const std::string& first, const std::string& second) const {
    const Key key = keyOf(first, second);
    const auto found = m_known.find(key.text);
    if (found == m_known.end())
        return {};
    Fate fate = found->second.fate;
    if (key.isSwapped)
        std::swap(fate.letters[0], fate.letters[1]);
    return fate;
}

void BondReferences::list(const std::string& first, const std::string& second,
                          const std::array<std::string_view, 2>& letters) {
    const Key key = keyOf(first, second);
    const auto found = m_known.find(key.text);
    if (found == m_known.end())
        return;
    for (const auto& [index, isSwapped] : found->second.needed) {
        Needed& needed = m_needed[index];
        const std::size_t one = isSwapped == key.isSwapped ? 0 : 1;
        needed.isListed =
            needed.isListed || (!needed.bond->isAmbiguous && needed.isNamed(0, letters[one]) &&
                                needed.isNamed(1, letters[1 - one]));
    }
}

std::vector<const SavedBond*> BondReferences::unlisted() const {
    std::vector<const SavedBond*> bonds;
    for (const Needed& needed : m_needed)
        if (!needed.isListed)
            bonds.push_back(needed.bond);
    return bonds;
}

} // namespace memory_host
