// Grids: values at regular points.
#pragma once

#include "ItemClass.h"
#include "Kinds.h"
#include "Lattice.h"
#include "Records.h"

namespace memory_host {

class GridItem : public LeafItem<TAVIK::Grid, Kind::Grid> {
public:
    using LeafItem::LeafItem;
    bool GetNearest(const TAVIK::Vertex& point, int* ijk) const override;
    void setValues(GridRecord&& values);

    GridRecord m_values;

private:
    Lattice m_lattice;
};

} // namespace memory_host
