// Which points lie within a radius of any of a set of centres. Knows neither items nor widgets.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Coordinates in Å, single precision.
using Point = std::array<float, 3>;

/// Whether `point` lies within the radius of `centre` by the plain definition: the differences,
/// squares and their sum (x first) are single precision, the sum is widened, and the comparison
/// with the square of the radius is inclusive. What is not a number is never near.
inline bool isWithin(double radiusSquared, const Point& point, const Point& centre) {
    const float dx = point[0] - centre[0];
    const float dy = point[1] - centre[1];
    const float dz = point[2] - centre[2];
    const float squared = dx * dx + dy * dy + dz * dz;
    return radiusSquared >= static_cast<double>(squared);
}

/// Finds the points near any centre, with the same answer, to the bit, as isWithin() on every pair.
///
/// The centres stand in a balanced k-d tree with bounding boxes (Bentley, Commun. ACM 18, 509,
/// 1975). Points are asked in runs: as neighbours in a structure's order are mostly neighbours in
/// space, a run is compared with the tree as one box, and only where centres are near it is it
/// divided. Boxes are compared with a margin that covers the rounding and the underflow of the
/// single-precision test.
class RadiusSearch {
public:
    /// `radius` in Å, not negative. Centres that are not finite are near nothing, and left out.
    RadiusSearch(std::vector<Point> centres, double radius);

    /// Sets `near[i]` for each of `points`: 1 when it lies within the radius of a centre, else 0.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
    // Four floats that the processor handles at once.
    using Lanes [[gnu::vector_size(16)]] = float;

    struct Box {
        Lanes low; ///< the fourth lane is zero
        Lanes high;
    };
    static constexpr std::size_t leafSize = 16;
    /// The centres of a leaf, coordinate by coordinate, filled up with what is near nothing.
    struct Leaf {
        std::array<std::array<Lanes, leafSize / 4>, 3> coordinates;
    };
    using Node = std::uint32_t; ///< the children of node i are 2 i + 1 and 2 i + 2

    void build(Node node, Point* first, Point* last);
    bool isLeaf(Node node) const { return node >= m_firstLeaf; }
    bool apart(const Box& a, const Box& b) const;
    bool isNearLeaf(const Point& point, const Leaf& leaf) const;
    bool isNear(const Point& point, const Node* among, std::size_t count) const;
    void searchRun(const Point* points, std::size_t count, const Node* among,
                   std::size_t amongCount, std::uint8_t* near) const;

    std::vector<Box> m_boxes;
    std::vector<Leaf> m_leaves;
    Node m_firstLeaf = 0;
    float m_squaredLimit; ///< the largest single-precision square that passes the test
    float m_squaredReach; ///< boxes that are further apart hold no pair that passes
};
