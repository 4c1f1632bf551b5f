// Alternative models: which atoms of a residue belong to the active one. Atoms of model 0 belong to
// all models, and are skipped here.
#pragma once

#include "HostItem.h"

#include <cstdint>

namespace memory_host {

class AtomItem;

/// Makes a model the active one of its residue: marks and counts its atoms.
void activateModel(Holder& residue, std::uint16_t model);
/// The same below a guard; nothing happens where no atom of the residue is of that model, or where
/// there is no memory to record the change.
void chooseModel(Holder& residue, std::uint16_t model);
/// Gives an atom another model.
void changeModel(AtomItem& atom, unsigned int model);

/// Which model of a residue is to be shown: the first one that it has, or the one after or before.
enum class ModelStep { First, Next, Previous };
void switchModel(Holder& residue, ModelStep step);
/// Counts and marks the atoms at or in a newly attached item for the models of its residue. The
/// first model in a residue without any becomes active.
void joinModels(Compound& item);
/// Removes these atoms from the count before the item is destroyed. Returns the residue, on which
/// to call settleModel() afterwards, or null.
Holder* leaveModels(Compound& item);
/// If the active model has no atoms any more, makes the first model of the residue active.
/// `residue` may be null.
void settleModel(Holder* residue);

} // namespace memory_host
