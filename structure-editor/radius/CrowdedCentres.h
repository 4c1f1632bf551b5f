// Centres in a k-d tree: finds whether one is within a radius of a point, however many of them
// crowd together. Knows neither items nor widgets.
#pragma once

#include "Point.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// The tree is nanoflann's (Bentley, Commun. ACM 18, 509, 1975). It finds candidates in double
/// precision, with a margin; isWithin() decides.
///
/// Points are searched in runs: neighbours in a structure's order are mostly neighbours in space,
/// so that one search for the centre nearest to the middle of a run mostly answers for all its
/// points.
class CrowdedCentres {
public:
    /// The centres are finite, and at least one.
    CrowdedCentres(std::vector<Point> centres, const Reach& reach);
    ~CrowdedCentres();
    CrowdedCentres(const CrowdedCentres&) = delete;
    CrowdedCentres& operator=(const CrowdedCentres&) = delete;

    /// Sets `near[i]`, which is 0 before, to 1 for each of `points` that lies within the radius of
    /// a centre.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
    struct Tree;

    bool isNear(const Point& point) const;
    void searchRun(const Point* points, std::size_t count, std::uint8_t* near) const;

    std::unique_ptr<Tree> m_tree;
    Reach m_reach;
    double m_surelyWithin; ///< any pair no further apart than this passes isWithin()
};
