#include "ItemRef.h"

#include "Space.h"

#include <algorithm>
#include <iterator>
#include <vector>

ItemRef::ItemRef(TAVIK::Compound* item) : m_item(item), m_id(item ? item->GetId() : 0) {}

bool ItemRef::is(TAVIK::Compound* candidate) const {
    return candidate && candidate == m_item && candidate->GetId() == m_id;
}

TAVIK::Compound* ItemRef::among(TAVIK::Compound* parent) const {
    TAVIK::Compound** const end = parent->ChildEnd();
    TAVIK::Compound** const found = std::find_if(
        parent->ChildBegin(), end, [this](TAVIK::Compound* child) { return is(child); });
    return found == end ? nullptr : *found;
}

TAVIK::Compound* ItemRef::inSpace() const {
    TAVIK::Compound* const space = TAVIK::Space::instance();
    return is(space) ? space : among(space);
}

TAVIK::Compound* ItemRef::below(TAVIK::Compound* root) const {
    std::vector<TAVIK::Compound*> open{root};
    while (!open.empty()) {
        TAVIK::Compound* const parent = open.back();
        open.pop_back();
        if (TAVIK::Compound* found = among(parent))
            return found;
        std::copy_if(parent->ChildBegin(), parent->ChildEnd(), std::back_inserter(open),
                     [](TAVIK::Compound* child) { return child && child->HasChildren(); });
    }
    return nullptr;
}
