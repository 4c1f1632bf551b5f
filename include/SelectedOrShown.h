// Which item of a kind a command is about.
#pragma once

#include "Space.h"
#include "Traversal.h"

#include <vector>

/// The first selected item of a kind for which `isUsable` is true, else the first such one that is
/// shown; else null.
template <class Kind, class IsUsable> Kind* selectedOrShown(const IsUsable& isUsable) {
    std::vector<TAVIK::Compound*> items;
    const Kind* const tag = nullptr;
    TAVIK::GetItems<Kind>(TAVIK::Space::instance(), items, true, tag, true);
    Kind* shown = nullptr;
    for (TAVIK::Compound* item : items) {
        auto* const one = dynamic_cast<Kind*>(item);
        if (!one || !isUsable(*one))
            continue;
        if (one->IsSelected())
            return one;
        if (!shown && one->IsVisible())
            shown = one;
    }
    return shown;
}
