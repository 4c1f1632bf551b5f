#include "Attaching.h"

#include "Counters.h"
#include "Holder.h"
#include "Models.h"
#include "Selection.h"

namespace memory_host {

void attachTo(Compound* child, Holder& parent) {
    HostItem& record = HostItem::of(child);
    ++selectionChanges;
    parent.appendChild(child);
    record.parent = &parent;
    addContribution(&parent, contributionOf(record));
    joinModels(*child);
}

void detach(Compound* child) {
    HostItem& record = HostItem::of(child);
    Holder* parent = record.parent;
    if (!parent)
        return;
    Holder* const residue = leaveModels(*child);
    parent->removeChild(record.position);
    record.parent = nullptr;
    addContribution(parent, -contributionOf(record));
    settleModel(residue);
}

} // namespace memory_host
