#include "Models.h"

#include "AtomItem.h"
#include "Holder.h"
#include "Recording.h"

#include <algorithm>

namespace memory_host {

namespace {

// Runs `function` on the atoms at or in an item that belong to some model.
template <class Function> void forModelAtoms(Compound& item, const Function& function) {
    HostItem& record = HostItem::of(&item);
    if (record.kind == Kind::Atom) {
        if (record.model != 0)
            function(static_cast<AtomItem&>(item), record);
        return;
    }
    if (!record.isHolder() || record.asHolder().sum.atoms == 0)
        return;
    Holder& holder = record.asHolder();
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child)
        forModelAtoms(**child, function);
}

// The residue to whose models the atoms at or in an item belong; null when there is none.
Holder* residueOfAtomsIn(const HostItem& item) {
    const bool any = item.kind == Kind::Atom
                         ? item.model != 0
                         : item.isHolder() && static_cast<const Holder&>(item).sum.atoms > 0;
    return any ? residueAround(item) : nullptr;
}

void mark(AtomItem& atom, HostItem& record, bool otherModel) {
    record.set(HostItem::OtherModel, otherModel);
    atom.updateShown();
}

// Whether a residue may get another active model: only if that is recorded, where it must be.
bool mayActivate(Holder& residue) {
    Step* const step = stepFor(residue);
    return !step || step->record(Step::Write::Activate, residue.self, residue.model);
}

} // namespace

void activateModel(Holder& residue, std::uint16_t model) {
    residue.model = model;
    residue.modelAtoms = 0;
    forModelAtoms(*residue.self, [&](AtomItem& atom, HostItem& record) {
        residue.modelAtoms += record.model == model ? 1 : 0;
        mark(atom, record, record.model != model);
    });
}

void chooseModel(Holder& residue, std::uint16_t model) {
    bool isThere = false;
    forModelAtoms(*residue.self, [&](const AtomItem&, const HostItem& atom) {
        isThere = isThere || atom.model == model;
    });
    if (isThere && residue.model != model && mayActivate(residue))
        activateModel(residue, model);
}

void changeModel(AtomItem& atom, unsigned int model) {
    Holder* const residue = leaveModels(atom);
    atom.setModel(model);
    atom.record().set(HostItem::OtherModel, false);
    joinModels(atom);
    settleModel(residue);
    atom.updateShown();
}

void switchModel(Holder& residue, ModelStep step) {
    // 0 stands for "none": models count from 1.
    std::uint16_t first = 0, last = 0, next = 0, previous = 0;
    forModelAtoms(*residue.self, [&](const AtomItem&, const HostItem& atom) {
        const std::uint16_t model = atom.model;
        if (first == 0 || model < first)
            first = model;
        last = std::max(last, model);
        if (model > residue.model && (next == 0 || model < next))
            next = model;
        if (model < residue.model)
            previous = std::max(previous, model);
    });
    const std::uint16_t chosen = step == ModelStep::First  ? first
                                 : step == ModelStep::Next ? (next ? next : first)
                                                           : (previous ? previous : last);
    if (chosen != residue.model && mayActivate(residue))
        activateModel(residue, chosen);
}

void joinModels(Compound& item) {
    Holder* const residue = residueOfAtomsIn(HostItem::of(&item));
    if (!residue)
        return;
    forModelAtoms(item, [&](AtomItem& atom, HostItem& record) {
        if (residue->model == 0 && !recording.isReplaying && mayActivate(*residue))
            residue->model = record.model;
        residue->modelAtoms += record.model == residue->model ? 1 : 0;
        mark(atom, record, record.model != residue->model);
    });
}

Holder* leaveModels(Compound& item) {
    Holder* const residue = residueOfAtomsIn(HostItem::of(&item));
    if (residue)
        forModelAtoms(item, [&](AtomItem&, const HostItem& record) {
            residue->modelAtoms -= record.model == residue->model ? 1 : 0;
        });
    return residue;
}

void settleModel(Holder* residue) {
    // A step that is taken back says itself what becomes of models.
    if (!recording.isReplaying && residue && residue->model != 0 && residue->modelAtoms == 0)
        switchModel(*residue, ModelStep::First);
}

} // namespace memory_host
