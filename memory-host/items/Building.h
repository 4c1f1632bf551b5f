// How the in-memory data space is filled: items with their values, built outside of the space and
// attached in one step. File readers, tests and benchmarks all build with these functions.
#pragma once

#include "AtomDetails.h"
#include "Geometry.h"
#include "HostExport.h"
#include "Kinds.h"

#include <string>

namespace memory_host {

/// Makes an item as DataMaker::makeCore does, but outside of the data space; it and what is added
/// to it belong to the caller until attach() or DataMaker::Destroy(). No guard is needed meanwhile.
HOST_EXPORT TAVIK::Compound* makeDetached(const std::string& name, const std::string& kind);
/// Makes a detached item the last child of `parent`. The caller holds an add guard when `parent` is
/// in the data space. An item that cannot stand there (see DataMaker::makeCore) is refused with a
/// warning, and stays detached and owned by the caller.
HOST_EXPORT void attach(TAVIK::Compound* detached, TAVIK::Compound* parent);

/// DataMaker::makeAtom.
HOST_EXPORT TAVIK::Atom* addAtom(TAVIK::Compound* parent, const TAVIK::AtomValues& values);
/// Sets the values of an atom that makeCore made. The name stays, and so does the partial charge
/// that the atom was made with. The colour becomes that of the element.
HOST_EXPORT void setAtom(TAVIK::Compound* atom, const TAVIK::AtomValues& values);
/// Sets the label ids of a residue (see TAVIK::GetLabelIds).
HOST_EXPORT void setLabelIds(TAVIK::Compound* residue, const TAVIK::LabelIds& ids);
/// DataMaker::makeBond.
HOST_EXPORT TAVIK::Bond* addBond(TAVIK::Compound* parent, TAVIK::Compound* a, TAVIK::Compound* b);
/// Sets the values of a grid that makeCore or makeDetached made; all of it is shown. They are not
/// checked.
HOST_EXPORT void setGrid(TAVIK::Compound* grid, TAVIK::GridValues&& values);

/// The active alternative model of a residue, from 1; 0 for a residue that has none.
HOST_EXPORT unsigned int activeModel(TAVIK::Compound* residue);

} // namespace memory_host
