#include "LostBonds.h"

#include <algorithm>

namespace memory_host {

namespace {

// The same in both orders.
std::string keyOf(const std::string& a, const std::string& b) {
    return std::min(a, b) + std::max(a, b);
}

} // namespace

LostBonds::Keys LostBonds::keysOf(const Names& first, const Names& second) {
    Keys keys;
    keys.reserve(first.size() * second.size());
    for (const std::string& name : first)
        for (const std::string& other : second)
            keys.push_back(keyOf(name, other));
    return keys;
}

void LostBonds::lose(const Names& first, const Names& second, bool isFoundAgain) {
    m_bonds.push_back({keysOf(first, second), isFoundAgain});
    for (const std::string& key : m_bonds.back().keys)
        m_fates[key].isKept = false;
}

void LostBonds::keep(const Names& first, const Names& second) {
    const Keys keys = keysOf(first, second);
    for (const std::string& key : keys)
        if (const auto found = m_fates.find(key); found != m_fates.end())
            found->second.isKept = true;
    if (m_fates.contains(keys.front()))
        m_kept.insert(keys.front());
}

// A bond that another model has comes back, too, but not because of alternative locations.
void LostBonds::settle() {
    for (const Bond& bond : m_bonds)
        if (!bond.isFoundAgain && !m_kept.contains(bond.keys.front()))
            for (const std::string& key : bond.keys)
                if (Fate& fate = m_fates[key]; fate.isKept)
                    ++fate.comingBack;
}

LostBonds::Fate LostBonds::of(const std::string& first, const std::string& second) const {
    const auto found = m_fates.find(keyOf(first, second));
    return found == m_fates.end() ? Fate() : found->second;
}

} // namespace memory_host
