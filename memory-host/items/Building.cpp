#include "Building.h"

#include "Holder.h"
#include "Items.h"
#include "Making.h"
#include "Models.h"

#include <QtGlobal>

namespace memory_host {

Compound* makeDetached(const std::string& name, const std::string& className) {
    Kind kind{};
    return findKind(className, name, kind) ? newItem(kind, name) : nullptr;
}

void attach(Compound* detached, Compound* parent) {
    Holder* holder = detached ? holderOf(parent, "attach", detached->GetName()) : nullptr;
    if (!holder)
        return;
    const HostItem& record = HostItem::of(detached);
    const HostItem* root = holder;
    while (root->parent)
        root = root->parent;
    if (record.parent || record.kind == Kind::Space || root == &record) {
        qWarning("attach: \"%s\" is not detached from \"%s\"", detached->GetName().c_str(),
                 parent->GetName().c_str());
        return;
    }
    if (isNested(record, *holder, "attach"))
        return;
    struct Shrink {
        static void all(Holder& of) {
            of.shrink();
            for (std::uint32_t slot = of.begin; slot != of.end; ++slot) {
                HostItem& child = HostItem::of(of.children[slot]);
                if (child.isHolder())
                    all(child.asHolder());
            }
        }
    };
    if (HostItem::of(detached).isHolder())
        Shrink::all(HostItem::of(detached).asHolder());
    attachTo(detached, *holder);
}

TAVIK::Atom* addAtom(Compound* parent, const AtomRecord& values) {
    Holder* holder = holderOf(parent, "addAtom", std::string(values.name));
    if (!holder)
        return nullptr;
    Name name = Name::component(values.name);
    const TAVIK::PartialCharge& partial = values.partial;
    std::unique_ptr<AtomItem> atom =
        partial.isKnown
            ? std::make_unique<ChargedAtomItem>(std::move(name), partial.charge, partial.radius)
            : std::make_unique<AtomItem>(std::move(name));
    atom->setValues(values);
    return attachNew(std::move(atom), *holder);
}

void setAtom(Compound* item, const AtomRecord& values) {
    auto* const atom = dynamic_cast<AtomItem*>(item);
    if (!atom)
        return;
    // What can fail comes before the first change.
    const Name type(values.type);
    Holder* const residue = leaveModels(*atom);
    atom->setValues(values);
    HostItem::of(atom).set(HostItem::OtherModel, false);
    joinModels(*atom);
    settleModel(residue);
    atom->updateShown();
}

TAVIK::Bond* addBond(Compound* parent, Compound* a, Compound* b) {
    Holder* holder = holderOf(parent, "addBond", "bond");
    auto* const first = dynamic_cast<AtomItem*>(a);
    auto* const second = dynamic_cast<AtomItem*>(b);
    if (!holder || !first || !second || first == second)
        return nullptr;
    auto bond = std::make_unique<BondItem>(Name());
    BondItem* const made = bond.get();
    attachNew(std::move(bond), *holder);
    made->connect(first, second);
    return made;
}

TAVIK::Grid* addGrid(Compound* parent, const std::string& name, GridRecord&& values) {
    Holder* holder = holderOf(parent, "addGrid", name);
    if (!holder)
        return nullptr;
    auto grid = std::make_unique<GridItem>(Name::component(name));
    grid->setValues(std::move(values));
    return attachNew(std::move(grid), *holder);
}

void setGrid(Compound* item, GridRecord&& values) {
    if (auto* const grid = dynamic_cast<GridItem*>(item))
        grid->setValues(std::move(values));
}

unsigned int activeModel(Compound* residue) {
    const HostItem& record = HostItem::of(residue);
    return record.kind == Kind::Residue ? record.model : 0;
}

std::vector<TAVIK::Vertex> polyLinePoints(Compound* item) {
    const auto* const line = dynamic_cast<PolyLineItem*>(item);
    return line ? line->m_points : std::vector<TAVIK::Vertex>();
}

const std::vector<float>& gridValues(Compound* item) {
    static const std::vector<float> none;
    const auto* const grid = dynamic_cast<GridItem*>(item);
    return grid ? grid->m_values.values : none;
}

Compound* parentOf(Compound* item) {
    const Holder* parent = HostItem::of(item).parent;
    return parent ? parent->self : nullptr;
}

} // namespace memory_host
