// How the in-memory data space is filled: items with their values, built outside of the space and
// attached in one step. File readers, tests and benchmarks all build with these functions.
#pragma once

#include "HostExport.h"
#include "Kinds.h"
#include "Records.h"

#include <string>
#include <vector>

namespace memory_host {

/// Makes an item as DataMaker::makeCore does, but outside of the data space; it and what is added
/// to it belong to the caller until attach() or DataMaker::Destroy(). No guard is needed meanwhile.
HOST_EXPORT TAVIK::Compound* makeDetached(const std::string& name, const std::string& kind);
/// Makes a detached item the last child of `parent`. The caller holds an add guard when `parent` is
/// in the data space. An item that cannot stand there (see DataMaker::makeCore) is refused with a
/// warning, and stays detached and owned by the caller.
HOST_EXPORT void attach(TAVIK::Compound* detached, TAVIK::Compound* parent);

/// Adds an atom as the last child of `parent`, which must be a composite.
HOST_EXPORT TAVIK::Atom* addAtom(TAVIK::Compound* parent, const AtomRecord& record);
/// Sets the values of an atom that makeCore made. The name stays, and so does the partial charge
/// that the atom was made with.
HOST_EXPORT void setAtom(TAVIK::Compound* atom, const AtomRecord& record);
/// Adds a bond between two atoms as the last child of `parent`; null if either is no atom.
HOST_EXPORT TAVIK::Bond* addBond(TAVIK::Compound* parent, TAVIK::Compound* a, TAVIK::Compound* b);
/// Adds a grid as the last child of `parent`; all of it is shown.
HOST_EXPORT TAVIK::Grid* addGrid(TAVIK::Compound* parent, const std::string& name,
                                 GridRecord&& record);
/// Sets the values of a grid that makeCore made; all of it is shown.
HOST_EXPORT void setGrid(TAVIK::Compound* grid, GridRecord&& record);

/// The active alternative model of a residue, from 1; 0 for a residue that has none.
HOST_EXPORT unsigned int activeModel(TAVIK::Compound* residue);
/// The points of an item that makePolyLine made; empty for any other item.
HOST_EXPORT std::vector<TAVIK::Vertex> polyLinePoints(TAVIK::Compound* item);
/// The values of a grid, x fastest; empty for any other item.
HOST_EXPORT const std::vector<float>& gridValues(TAVIK::Compound* item);
/// The composite that holds `item`; null for the space and for a detached root.
HOST_EXPORT TAVIK::Compound* parentOf(TAVIK::Compound* item);

} // namespace memory_host
