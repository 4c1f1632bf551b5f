#include "AtomDetails.h"

#include "DataVersion.h"
#include "Holder.h"
#include "Items.h"

namespace TAVIK {

using namespace memory_host;

AtomDetails GetAtomDetails(const Atom* atom) {
    const auto* const item = dynamic_cast<const AtomItem*>(atom);
    return item ? item->details() : AtomDetails();
}

LabelIds GetLabelIds(const Compound* item) {
    if (!item)
        return {};
    const HostItem& record = HostItem::of(item);
    const HostItem* const around = record.kind == Kind::Residue ? &record
                                   : record.kind == Kind::Atom  ? residueAround(record)
                                                                : nullptr;
    if (!around)
        return {};
    const auto& residue =
        static_cast<const ResidueItem&>(*static_cast<const Holder&>(*around).self);
    return {residue.m_labelChain.text(), residue.m_labelNumber.text()};
}

void SetAtomPosition(Atom* atom, const Vertex& position) {
    auto* const item = dynamic_cast<AtomItem*>(atom);
    if (!item)
        return;
    item->setPosition(position);
    noteDataChange(HostItem::of(item));
}

void SetAtomModel(Atom* atom, unsigned int model) {
    auto* const item = dynamic_cast<AtomItem*>(atom);
    if (!item)
        return;
    Holder* const residue = leaveModels(*item);
    item->setModel(model);
    HostItem::of(item).set(HostItem::OtherModel, false);
    joinModels(*item);
    settleModel(residue);
    item->updateShown();
    noteDataChange(HostItem::of(item));
}

} // namespace TAVIK
