#include "Attaching.h"

#include "Arrivals.h"
#include "Counters.h"
#include "Holder.h"
#include "Models.h"
#include "Parking.h"
#include "Recording.h"
#include "Selection.h"

#include <new>

namespace memory_host {

void attachTo(Compound* child, Holder& parent) {
    HostItem& record = HostItem::of(child);
    Step* const step = stepForComing(parent);
    if (step && !step->reserveMove())
        throw std::bad_alloc();
    if (parent.kind == Kind::Space)
        noteArrival(record);
    parent.appendChild(child);
    ++selectionChanges;
    if (step)
        step->addMove(Step::Write::Attach, child, &parent);
    record.parent = &parent;
    addContribution(&parent, contributionOf(record));
    joinModels(*child);
    // If that fails, so does the change: the item is there until it is taken back.
    if (step && record.isHolder())
        static_cast<void>(recordLinks(*child, *step));
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
