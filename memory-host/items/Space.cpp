#include "Space.h"

#include "Items.h"

namespace TAVIK {

namespace {
bool showSelection = true;
}

Space::~Space() = default;

Space* Space::instance() {
    // Never destroyed: plug-ins and static objects may look at it until the process ends.
    static auto* const space = new memory_host::SpaceItem(memory_host::Name());
    return space;
}

bool Space::GetShowSelection() {
    return showSelection;
}

void Space::SetShowSelection(bool on) {
    showSelection = on;
}

} // namespace TAVIK
