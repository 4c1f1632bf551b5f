// The factory: the only way to create and destroy items of the data space.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <string>
#include <vector>

namespace TAVIK {

/// Creates and destroys items. The caller holds a good change guard of the add or delete kind.
///
/// A "/" or a control character in a name is replaced by "_": neither can stand in a qualified
/// name.
class HOST_EXPORT DataMaker {
public:
    /// Makes an empty item of the class named by `kind` ("Composite", "Molecule", "Residue",
    /// "Group", "Atom", "Bond", "Surface", "Grid") as the last child of `parent`, and returns it.
    /// A null parent, a parent that is no composite, or an unknown kind gives null and a warning;
    /// so does a residue in a residue or a group in a group, at any depth.
    static Compound* makeCore(Compound* parent, const std::string& name, const std::string& kind);
    /// Makes a line through `points` (in Å) as the last child of `parent`; refuses as makeCore.
    static Compound* makePolyLine(Compound* parent, const std::string& name,
                                  const std::vector<Vertex>& points);
    /// Makes a set, as the last child of `parent`, that lists `members`; null and repeated ones are
    /// left out. A member that is destroyed later leaves the set. Refuses as makeCore.
    static Compound* makeSet(Compound* parent, const std::string& name,
                             const std::vector<Compound*>& members);
    /// Takes `item` and all that it holds out of the data space and frees it; bonds of destroyed
    /// atoms are destroyed too. Null does nothing; the space itself is refused with a warning.
    static void Destroy(Compound* item);
};

} // namespace TAVIK
