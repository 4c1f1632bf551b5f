#include "AtomDetails.h"

#include "DataVersion.h"
#include "Holder.h"
#include "Items.h"
#include "Recording.h"

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
    if (!item || item->isAt(position))
        return;
    if (Step* const step = stepFor(item->record()); step && !step->recordPlace(*item))
        return;
    item->setPosition(position);
    item->record().set(HostItem::Edited, true);
    noteDataChange(HostItem::of(item));
}

void SetAtomModel(Atom* atom, unsigned int model) {
    auto* const item = dynamic_cast<AtomItem*>(atom);
    if (!item || item->isInModel(model))
        return;
    Step* const step = stepFor(item->record());
    if (step &&
        !step->record(Step::Write::Join, static_cast<Compound*>(item), item->record().model))
        return;
    changeModel(*item, model);
    item->record().set(HostItem::Edited, true);
    noteDataChange(HostItem::of(item));
}

} // namespace TAVIK
