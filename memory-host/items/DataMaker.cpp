#include "DataMaker.h"

#include "Attaching.h"
#include "Destroying.h"
#include "FocusedItem.h"
#include "GeometryFaults.h"
#include "Items.h"
#include "Making.h"
#include "Parking.h"
#include "Recording.h"
#include "Selection.h"
#include "Sets.h"

#include <QtGlobal>

#include <memory>
#include <new>
#include <unordered_set>
#include <utility>

namespace TAVIK {

using namespace memory_host;

Compound* DataMaker::makeCore(Compound* parent, const std::string& name, const std::string& kind) {
    Holder* holder = holderOf(parent, "makeCore", name);
    Kind wanted{};
    if (!holder || !findKind(kind, name, wanted))
        return nullptr;
    if (isNested(wanted, name, *holder, "makeCore"))
        return nullptr;
    return attachNew(std::unique_ptr<Compound>(newItem(wanted, name)), *holder);
}

Compound* DataMaker::makePolyLine(Compound* parent, const std::string& name,
                                  const std::vector<Vertex>& points) {
    Holder* holder = holderOf(parent, "makePolyLine", name);
    if (!holder)
        return nullptr;
    auto line = std::make_unique<PolyLineItem>(Name::component(name));
    line->m_points = points;
    return attachNew(std::move(line), *holder);
}

Compound* DataMaker::makeSet(Compound* parent, const std::string& name,
                             const std::vector<Compound*>& members) {
    Holder* holder = holderOf(parent, "makeSet", name);
    if (!holder)
        return nullptr;
    std::vector<Compound*> listed;
    std::unordered_set<Compound*> seen;
    listed.reserve(members.size());
    for (Compound* member : members)
        if (member && seen.insert(member).second)
            listed.push_back(member);
    auto set = std::make_unique<SetItem>(Name::component(name));
    listMembers(static_cast<SetRecord&>(HostItem::of(set.get())), listed);
    return attachNew(std::move(set), *holder);
}

Atom* DataMaker::makeAtom(Compound* parent, const AtomValues& values) {
    Holder* holder = holderOf(parent, "makeAtom", std::string(values.name));
    if (!holder)
        return nullptr;
    Name name = Name::component(values.name);
    const PartialCharge& partial = values.partial;
    std::unique_ptr<AtomItem> atom =
        partial.isKnown
            ? std::make_unique<ChargedAtomItem>(std::move(name), partial.charge, partial.radius)
            : std::make_unique<AtomItem>(std::move(name));
    atom->setValues(values);
    return attachNew(std::move(atom), *holder);
}

Bond* DataMaker::makeBond(Compound* parent, Compound* a, Compound* b) {
    Holder* holder = holderOf(parent, "makeBond", "bond");
    if (!holder)
        return nullptr;
    auto* const first = dynamic_cast<AtomItem*>(a);
    auto* const second = dynamic_cast<AtomItem*>(b);
    if (!first || !second || first == second) {
        qWarning("makeBond: a bond is between two atoms");
        return nullptr;
    }
    auto bond = std::make_unique<BondItem>(Name());
    BondItem* const made = bond.get();
    attachNew(std::move(bond), *holder);
    if (Step* const step = stepFor(HostItem::of(made));
        step && !step->record(Step::Write::Link, static_cast<Compound*>(made)))
        throw std::bad_alloc();
    made->connect(first, second);
    return made;
}

Surface* DataMaker::makeSurface(Compound* parent, const std::string& name, SurfaceMesh mesh) {
    Holder* holder = holderOf(parent, "makeSurface", name);
    if (!holder || isRefused(mesh, "makeSurface", name))
        return nullptr;
    auto surface = std::make_unique<SurfaceItem>(Name::component(name));
    surface->m_mesh = std::make_unique<SurfaceMesh>(std::move(mesh));
    surface->noteMesh();
    return attachNew(std::move(surface), *holder);
}

Grid* DataMaker::makeGrid(Compound* parent, const std::string& name, GridValues values) {
    Holder* holder = holderOf(parent, "makeGrid", name);
    if (!holder || isRefused(values, "makeGrid", name))
        return nullptr;
    auto grid = std::make_unique<GridItem>(Name::component(name));
    grid->setValues(std::move(values));
    return attachNew(std::move(grid), *holder);
}

void DataMaker::Destroy(Compound* item) {
    if (!item)
        return;
    if (HostItem::of(item).kind == Kind::Space) {
        qWarning("Destroy: the data space itself stays");
        return;
    }
    const FocusKeptAway away(item);
    tellBeforeDestroying(item);
    ++selectionChanges;
    if (Step* const step = stepForGoing(*item)) {
        // Who destroys all there is, one after the other, must not go on for ever.
        if (!destroyRecorded(*item, *step))
            throw std::bad_alloc();
        return;
    }
    recording.detachedCount -= HostItem::of(item).parent ? 0 : 1;
    detach(item);
    freeDetached(item);
}

} // namespace TAVIK
