#include "EntryNames.h"

#include "Space.h"

#include <algorithm>

namespace memory_host {

EntryNames::EntryNames() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    for (TAVIK::Compound** item = space->ChildBegin(); item != space->ChildEnd(); ++item)
        if (*item)
            setTaken((*item)->GetName());
}

EntryNames::EntryNames(const std::unordered_set<std::string>& names) {
    for (const std::string& name : names)
        setTaken(name);
}

void EntryNames::setTaken(const std::string& name) {
    m_taken.insert(name);
    if (const std::size_t point = name.rfind('.'); point != std::string::npos)
        m_takenStems.insert(name.substr(0, point));
}

std::vector<std::string> EntryNames::take(const std::string& name,
                                          const std::vector<std::string>& endings) {
    std::string stem = name;
    if (std::ranges::any_of(
            endings, [&](const std::string& ending) { return isTaken(m_taken, name + ending); })) {
        // One look-up for each number; with each ending, the cost would be the product of both.
        const bool hasPoints = !endings.front().empty();
        std::size_t& next = m_next.try_emplace(name, 2).first->second;
        do
            stem = name + '-' + std::to_string(next++);
        while (isTaken(hasPoints ? m_takenStems : m_taken, stem));
    }
    std::vector<std::string> names;
    names.reserve(endings.size());
    for (const std::string& ending : endings)
        setTaken(names.emplace_back(stem + ending));
    return names;
}

} // namespace memory_host
