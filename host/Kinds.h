// The kinds of items that the data space holds beside plain composites. An item's kind is its
// class: test with dynamic_cast.
#pragma once

#include "Compound.h"

namespace TAVIK {

/// A chain.
class HOST_EXPORT Molecule : public Composite {
public:
    ~Molecule() override;
};

/// A residue: holds groups or atoms, and may carry alternative models of which one is active.
class HOST_EXPORT Residue : public Composite {
public:
    ~Residue() override;
};

/// A group of atoms inside a residue. It does not appear in the qualified names of its atoms.
class HOST_EXPORT Group : public Composite {
public:
    ~Group() override;
};

class HOST_EXPORT Atom : public Compound {
public:
    ~Atom() override;

    /// The alternative model that the atom belongs to, as text: "0" for an atom that all models
    /// share, else "1", "2", ...
    virtual std::string GetModelNumber() const = 0;
    /// Temperature factor (isotropic B) in Å².
    virtual float GetTemperature() const = 0;
};

/// A bond; its parts are its two atoms.
class HOST_EXPORT Bond : public Compound {
public:
    ~Bond() override;
};

/// A molecular surface.
class HOST_EXPORT Surface : public Compound {
public:
    ~Surface() override;
};

/// Values on a regular 3-D grid, of which the part between two index triples is shown.
class HOST_EXPORT Grid : public Compound {
public:
    ~Grid() override;

    /// Number of grid points along x, y and z: set by the host, read by plug-ins.
    int m_points[3] = {0, 0, 0};
    /// First shown index along each axis: 0 up to, not including, the number of points.
    int m_lower[3] = {0, 0, 0};
    /// One past the last shown index along each axis: at most the number of points.
    int m_upper[3] = {0, 0, 0};

    /// Writes the indices of the grid point nearest to `point` (in Å) to `ijk[0..2]`. They lie
    /// outside the grid when the point does; NaN, and coordinates too large for an index, give an
    /// index far outside. Returns whether the indices lie in the grid.
    virtual bool GetNearest(const Vertex& point, int* ijk) const = 0;
};

} // namespace TAVIK
