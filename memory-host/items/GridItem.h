// Grids: values at regular points.
#pragma once

#include "Geometry.h"
#include "ItemClass.h"
#include "Kinds.h"
#include "Lattice.h"
#include "MapCrystal.h"

#include <array>
#include <cstdint>
#include <vector>

namespace memory_host {

class GridItem : public LeafItem<TAVIK::Grid, Kind::Grid> {
public:
    explicit GridItem(Name name);
    ~GridItem() override;
    /// All grids that exist, in or outside of the space, in the order in which they were made.
    static const std::vector<GridItem*>& all();

    bool GetNearest(const TAVIK::Vertex& point, int* ijk) const override;
    struct Contents {
        TAVIK::GridValues values;
        MapCrystal crystal;
        std::uint32_t version = 0;
        std::array<int, 6> bounds{};
    };
    /// All of it is shown. Throws std::bad_alloc when there is no memory for recording it.
    void setValues(TAVIK::GridValues&& values);
    void swapContents(Contents& other) noexcept;

    /// m_lower and m_upper.
    std::array<int, 6> bounds() const;
    void setBounds(const std::array<int, 6>& bounds);

    TAVIK::GridValues m_values;
    MapCrystal m_crystal;
    std::uint32_t m_valuesVersion = 0; ///< 0: the first values; else unlike that of any other grid
    std::array<int, 6> m_keptBounds{}; ///< when the change in progress began, or since it is there
    static inline std::uint64_t valuesChanges = 0; ///< of all grids

private:
    Lattice m_lattice;
};

} // namespace memory_host
