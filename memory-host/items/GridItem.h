// Grids: values at regular points.
#pragma once

#include "Geometry.h"
#include "ItemClass.h"
#include "Kinds.h"
#include "Lattice.h"
#include "MapCrystal.h"

namespace memory_host {

class GridItem : public LeafItem<TAVIK::Grid, Kind::Grid> {
public:
    using LeafItem::LeafItem;
    bool GetNearest(const TAVIK::Vertex& point, int* ijk) const override;
    void setValues(TAVIK::GridValues&& values);

    TAVIK::GridValues m_values;
    MapCrystal m_crystal;

private:
    Lattice m_lattice;
};

} // namespace memory_host
