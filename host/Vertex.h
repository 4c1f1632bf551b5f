// Geometry of the data model: a small fixed-size vector and the position of an item.
#pragma once

#include "HostExport.h"

#include <array>
#include <cstddef>

namespace TAVIK {

/// `N` coordinates of type `T`. Lengths are in Å wherever the host hands a vector out.
template <class T, std::size_t N> class HOST_EXPORT Vector {
public:
    /// All coordinates zero.
    Vector() = default;
    explicit Vector(const std::array<T, N>& values) : m_values(values) {}
    Vector(const Vector&) = default;
    Vector& operator=(const Vector&) = default;
    virtual ~Vector() = default;

    /// Coordinate `axis`, which must be below `N`: it is not checked.
    const T& operator[](std::size_t axis) const { return m_values[axis]; }
    T& operator[](std::size_t axis) { return m_values[axis]; }

private:
    std::array<T, N> m_values{};
};

/// A position in Å, single precision, with a validity flag. For an item without a position the flag
/// is false and the coordinates are meaningless.
class HOST_EXPORT Vertex : public Vector<float, 3> {
public:
    /// The origin, not valid.
    Vertex() = default;
    Vertex(float x, float y, float z, bool valid) : Vector({x, y, z}), m_valid(valid) {}

    /// Whether the position is set.
    bool isValid() const { return m_valid; }

private:
    bool m_valid = false;
};

} // namespace TAVIK
