// What is drawn of items that are neither atoms nor bonds: surfaces, lines, and the boxes of grids.
#pragma once

#include "Compound.h"
#include "Contents.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace view {

/// Of a mesh, what takes about as long as another item.
inline constexpr std::size_t bytesOfItem = 64;

/// Reads what there is to draw of an item: in pieces, as a mesh may be large. Of a grid the box is
/// drawn whose edges its shown points span.
///
/// A mesh may be replaced between two pieces: then what is read may be parts of both, and is to be
/// read again.
class ShapeReading {
public:
    /// Of an item whose index among the items is `index`.
    ShapeReading(TAVIK::Compound* item, std::size_t index);

    /// Copies about so many bytes of a mesh more; returns whether there are others.
    bool advance(std::size_t bytes);
    /// All of it, once advance() has returned false; nothing for a kind of which nothing is ever
    /// drawn.
    std::optional<Shape> take() { return std::move(m_shape); }

private:
    TAVIK::Compound* m_item;
    std::optional<Shape> m_shape;
    std::shared_ptr<Mesh> m_mesh; ///< that of the shape
};

/// Finds out in pieces whether a shape that was read would be the same again.
class ShapeCheck {
public:
    enum class State : std::uint8_t { Due, Same, Other };

    /// Compares about so many bytes of a mesh more, and everything else. With the same arguments in
    /// each piece.
    State advance(const Shape& shape, TAVIK::Compound* item, std::size_t bytes);

private:
    std::size_t m_done = 0; ///< bytes of the mesh
};

/// The colour of a vertex of a mesh: its own, if the mesh has any and shows them, else the item's.
inline Colour shownColour(const Mesh& mesh, std::size_t vertex, bool hasOwnColours, Colour ofItem) {
    if (!hasOwnColours || mesh.colours.empty())
        return ofItem;
    return mesh.colours[mesh.colours.size() == 1 ? 0 : vertex];
}

/// Whether the mesh of an item shows its own colours, as long as it has any.
bool showsOwnColours(const TAVIK::Compound* item);

/// Appends all points of a shape, as a camera is fitted to them.
void addPoints(const Shape& shape, std::vector<Point>& points);

} // namespace view
