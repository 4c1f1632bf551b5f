// What the selection commands do to the data. Knows no widget; the caller holds a change guard.
#pragma once

#include "Changed.h"
#include "Compound.h"

#include <string>
#include <vector>

/// Selects a group that is partly selected; leaves one without any selection alone. Returns whether
/// there was any.
bool FullGroup(TAVIK::Compound* group);

/// Selects the atoms of one type among those that it is called with. select() does it once all have
/// been looked at, so that an error on the way has changed nothing.
class SelectType {
public:
    /// `type` is compared byte by byte with what an atom's GetType() says.
    explicit SelectType(std::string type) : m_type(std::move(type)) {}
    void operator()(TAVIK::Compound* atom);
    /// Returns what was selected.
    TAVIK::Changed select() const;

private:
    std::string m_type;
    std::vector<TAVIK::Compound*> m_found;
};

/// Selects the atoms below `root` that lie within `radius` (Å, inclusive) of one that was selected
/// before. Atoms selected here are no centres. Atoms without a position are not selected, but as
/// centres they count with whatever coordinates they hold. Returns what was selected.
TAVIK::Changed selectAround(TAVIK::Compound* root, double radius);

/// Fits the shown index range of every grid below `root` to the selected atoms that have a
/// position. Grids away from these atoms keep their range, and so do all grids when nothing is
/// selected. Returns the grids that were fitted.
TAVIK::Changed boundGrids(TAVIK::Compound* root);
