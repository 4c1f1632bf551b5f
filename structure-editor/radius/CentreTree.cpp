#include "CentreTree.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

// A run of points, and how it is divided near the centres.
constexpr std::size_t runLength = 128;
constexpr std::size_t runDivision = 4;
constexpr std::size_t shortestRun = 8;
// How many nodes of the tree a run is compared with before it is divided.
constexpr std::size_t mostNodes = 32;

} // namespace

CentreTree::CentreTree(std::vector<Point> centres, const Reach& reach) : m_reach(reach) {
    const std::size_t leaves = std::bit_ceil((centres.size() + leafSize - 1) / leafSize);
    m_firstLeaf = static_cast<Node>(leaves - 1);
    m_boxes.resize(2 * leaves - 1);
    m_leaves.resize(leaves);
    build(0, centres.data(), centres.data() + centres.size());
}

void CentreTree::build(Node node, Point* first, Point* last) {
    const auto [low, high] = boundsOf({first, last});
    m_boxes[node] = Box{{low[0], low[1], low[2], 0.0F}, {high[0], high[1], high[2], 0.0F}};
    if (isLeaf(node)) {
        for (const std::size_t axis : {0, 1, 2})
            for (std::size_t i = 0; i != leafSize; ++i)
                m_leaves[node - m_firstLeaf].coordinates[axis][i / 4][i % 4] =
                    first + i < last ? first[i][axis] : infinity;
        return;
    }
    std::size_t widest = 0;
    for (const std::size_t axis : {1, 2})
        if (high[axis] - low[axis] > high[widest] - low[widest])
            widest = axis;
    Point* const middle = first + (last - first) / 2;
    std::nth_element(first, middle, last,
                     [widest](const Point& a, const Point& b) { return a[widest] < b[widest]; });
    build(2 * node + 1, first, middle);
    build(2 * node + 2, middle, last);
}

bool CentreTree::apart(const Box& a, const Box& b) const {
    const Lanes above = a.low - b.high;
    const Lanes below = b.low - a.high;
    const Lanes zero{};
    const Lanes larger = above > below ? above : below;
    const Lanes gap = larger > zero ? larger : zero;
    const Lanes squared = gap * gap;
    return squared[0] + squared[1] + squared[2] > m_reach.squaredReach;
}

bool CentreTree::isNearLeaf(const Point& point, const Leaf& leaf) const {
    const auto& [x, y, z] = leaf.coordinates;
    for (std::size_t four = 0; four != leafSize / 4; ++four)
        if (anyOf(areWithin(m_reach.squaredLimit, point, x[four], y[four], z[four])))
            return true;
    return false;
}

bool CentreTree::isNear(const Point& point, const Node* among, std::size_t count) const {
    const Lanes at{point[0], point[1], point[2], 0.0F};
    const Box box{at, at};
    // A way down the tree leaves one node a level behind, and a level halves the centres.
    std::array<Node, 64> open;
    for (std::size_t i = 0; i != count; ++i) {
        std::size_t opened = 0;
        open[opened++] = among[i];
        while (opened > 0) {
            const Node node = open[--opened];
            if (apart(box, m_boxes[node]))
                continue;
            if (isLeaf(node)) {
                if (isNearLeaf(point, m_leaves[node - m_firstLeaf]))
                    return true;
            } else {
                open[opened++] = 2 * node + 2;
                open[opened++] = 2 * node + 1;
            }
        }
    }
    return false;
}

void CentreTree::searchRun(const Point* points, std::size_t count, const Node* among,
                           std::size_t amongCount, std::uint8_t* near) const {
    Box box{{infinity, infinity, infinity, 0.0F}, {-infinity, -infinity, -infinity, 0.0F}};
    for (std::size_t i = 0; i != count; ++i) {
        const Lanes at{points[i][0], points[i][1], points[i][2], 0.0F};
        if (!isFinite(points[i]))
            continue;
        box.low = at < box.low ? at : box.low;
        box.high = at > box.high ? at : box.high;
    }
    if (box.low[0] > box.high[0])
        return;

    // Look at the tree level by level, as long as that leaves few enough nodes.
    std::array<std::array<Node, mostNodes>, 2> levels;
    std::array<Node, mostNodes>* nodes = &levels[0];
    std::array<Node, mostNodes>* finer = &levels[1];
    std::size_t nodeCount = 0;
    for (std::size_t i = 0; i != amongCount; ++i)
        if (!apart(box, m_boxes[among[i]]))
            (*nodes)[nodeCount++] = among[i];
    for (bool divided = true; divided && 2 * nodeCount <= mostNodes;) {
        divided = false;
        std::size_t finerCount = 0;
        for (std::size_t i = 0; i != nodeCount; ++i) {
            const Node node = (*nodes)[i];
            if (isLeaf(node)) {
                (*finer)[finerCount++] = node;
                continue;
            }
            divided = true;
            for (const Node half : {2 * node + 1, 2 * node + 2})
                if (!apart(box, m_boxes[half]))
                    (*finer)[finerCount++] = half;
        }
        std::swap(nodes, finer);
        nodeCount = finerCount;
    }
    if (nodeCount == 0)
        return;
    if (count > shortestRun) {
        const std::size_t part = std::max(count / runDivision, shortestRun);
        for (std::size_t first = 0; first < count; first += part)
            searchRun(points + first, std::min(part, count - first), nodes->data(), nodeCount,
                      near + first);
        return;
    }
    for (std::size_t i = 0; i != count; ++i)
        near[i] = isFinite(points[i]) && isNear(points[i], nodes->data(), nodeCount) ? 1 : 0;
}

void CentreTree::search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const {
    constexpr Node root = 0;
    for (std::size_t first = 0; first < points.size(); first += runLength)
        searchRun(points.data() + first, std::min(runLength, points.size() - first), &root, 1,
                  near.data() + first);
}
