// Centres in a tree of boxes: finds whether one is within a radius of a point, however the centres
// are spread. Knows neither items nor widgets.
#pragma once

#include "Point.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The centres stand in a balanced k-d tree with bounding boxes (Bentley, Commun. ACM 18, 509,
/// 1975). Points are asked in runs: as neighbours in a structure's order are mostly neighbours in
/// space, a run is compared with the tree as one box, and only where centres are near it is it
/// divided.
class CentreTree {
public:
    /// The centres are finite, and at least one.
    CentreTree(std::vector<Point> centres, const Reach& reach);

    /// Sets `near[i]`, which is 0 before, to 1 for each of `points` that lies within the radius of
    /// a centre.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
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
    Reach m_reach;
};
