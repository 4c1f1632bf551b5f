// The factory: the only way to create and destroy items of the data space.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <string>
#include <vector>

namespace TAVIK {

class Atom;
class Bond;
class Grid;
class Surface;
struct AtomValues;
struct GridValues;
struct SurfaceMesh;

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
    /// Makes an atom as the last child of `parent`; refuses as makeCore. A position that is not
    /// finite counts as none.
    static Atom* makeAtom(Compound* parent, const AtomValues& values);
    /// Makes a bond between two atoms as the last child of `parent`. Null, with a warning, where
    /// makeCore refuses, and if `a` and `b` are not two different atoms.
    static Bond* makeBond(Compound* parent, Compound* a, Compound* b);
    /// Makes a surface with a mesh as the last child of `parent`. Null, with a warning, where
    /// makeCore or SetSurfaceMesh refuses.
    static Surface* makeSurface(Compound* parent, const std::string& name, SurfaceMesh mesh);
    /// Makes a grid as the last child of `parent`; all of it is shown. Null, with a warning, where
    /// makeCore refuses, and if there are not as many values as points, a number of points is below
    /// 1, or the origin or a step is not finite.
    static Grid* makeGrid(Compound* parent, const std::string& name, GridValues values);
    /// Makes a set, as the last child of `parent`, that lists `members`; null and repeated ones are
    /// left out. A member that is destroyed later leaves the set. Refuses as makeCore.
    static Compound* makeSet(Compound* parent, const std::string& name,
                             const std::vector<Compound*>& members);
    /// Takes `item` and all that it holds out of the data space and frees it; bonds of destroyed
    /// atoms are destroyed too. Null does nothing; the space itself is refused with a warning.
    /// Throws std::bad_alloc when there is no memory to keep what can be taken back; the change is
    /// then taken back when its guard ends.
    static void Destroy(Compound* item);
};

} // namespace TAVIK
