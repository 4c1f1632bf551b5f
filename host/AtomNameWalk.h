// The qualified names of atoms, read in pieces.
#pragma once

#include "HostExport.h"
#include "Traversal.h"

#include <cstddef>
#include <memory>

namespace TAVIK {

/// VisitAtomNames() in pieces, between which other work is done.
///
/// Items may be changed and made between two pieces: some of those may be left out then. After an
/// item was destroyed, a walk may only be destroyed, too.
class HOST_EXPORT AtomNameWalk {
public:
    /// The visitor must outlive the walk. A null root has no atoms.
    AtomNameWalk(Compound* root, bool all, AtomNameVisitor& visitor);
    AtomNameWalk(const AtomNameWalk&) = delete;
    AtomNameWalk& operator=(const AtomNameWalk&) = delete;
    ~AtomNameWalk();

    /// Goes over about so many items more. Returns whether there may be others; once there are
    /// none, each composite that was entered was left. What the visitor throws passes through, and
    /// the walk may only be destroyed then.
    bool advance(std::size_t items);

private:
    class Walk;
    std::unique_ptr<Walk> m_walk;
};

} // namespace TAVIK
