#include "Building.h"

#include "ActiveModel.h"
#include "DataMaker.h"
#include "DataVersion.h"
#include "Holder.h"
#include "Items.h"
#include "Making.h"
#include "Models.h"
#include "Recording.h"

#include <QtGlobal>

#include <utility>

namespace memory_host {

Compound* makeDetached(const std::string& name, const std::string& className) {
    Kind kind{};
    if (!findKind(className, name, kind))
        return nullptr;
    Compound* const item = newItem(kind, name);
    ++recording.detachedCount;
    return item;
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
    --recording.detachedCount;
}

TAVIK::Atom* addAtom(Compound* parent, const TAVIK::AtomValues& values) {
    return TAVIK::DataMaker::makeAtom(parent, values);
}

void setAtom(Compound* item, const TAVIK::AtomValues& values) {
    auto* const atom = dynamic_cast<AtomItem*>(item);
    if (!atom)
        return;
    // What can fail comes before the first change.
    const Name type(values.type);
    if (atom->hasValues(values)) {
        atom->RestoreColor();
        return;
    }
    if (Step* const step = stepFor(atom->record()); step && !step->recordValues(*atom))
        return;
    Holder* const residue = leaveModels(*atom);
    atom->setValues(values);
    HostItem::of(atom).set(HostItem::OtherModel, false);
    joinModels(*atom);
    settleModel(residue);
    atom->updateShown();
    HostItem::of(atom).set(HostItem::Edited, true);
    noteDataChange(HostItem::of(atom));
}

void setLabelIds(Compound* residue, const TAVIK::LabelIds& ids) {
    auto* const item = dynamic_cast<ResidueItem*>(residue);
    if (!item)
        return;
    // What can fail comes before the first change.
    Name chain(ids.chain);
    item->m_labelNumber = Name(ids.number);
    item->m_labelChain = std::move(chain);
}

TAVIK::Bond* addBond(Compound* parent, Compound* a, Compound* b) {
    return TAVIK::DataMaker::makeBond(parent, a, b);
}

void setGrid(Compound* item, TAVIK::GridValues&& values) {
    if (auto* const grid = dynamic_cast<GridItem*>(item))
        grid->setValues(std::move(values));
}

unsigned int activeModel(Compound* residue) {
    return TAVIK::GetActiveModel(residue);
}

} // namespace memory_host
