#include "EntryNames.h"

#include "Space.h"

#include <algorithm>

namespace memory_host {

EntryNames::EntryNames() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    for (TAVIK::Compound** item = space->ChildBegin(); item != space->ChildEnd(); ++item)
        if (*item)
            m_taken.insert((*item)->GetName());
}

std::vector<std::string> EntryNames::take(const std::string& name,
                                          const std::vector<std::string>& endings) {
    const auto isTaken = [this](const std::string& item) { return m_taken.contains(item); };
    std::vector<std::string> names;
    for (std::size_t number = 1; names.empty() || std::ranges::any_of(names, isTaken); ++number) {
        const std::string stem = number == 1 ? name : name + '-' + std::to_string(number);
        names.clear();
        for (const std::string& ending : endings)
            names.push_back(stem + ending);
    }
    m_taken.insert(names.begin(), names.end());
    return names;
}

} // namespace memory_host
