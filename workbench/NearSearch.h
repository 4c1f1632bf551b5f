// Which points are within a distance of others.
#pragma once

#include "Bits.h"

#include <array>
#include <memory>
#include <stop_token>
#include <vector>

namespace workbench {

/// Points that are prepared once for any number of searches, which may run on several threads.
class NearSearch {
public:
    using Point = std::array<float, 3>; ///< Å

    explicit NearSearch(const std::vector<Point>& points);
    ~NearSearch();
    NearSearch(const NearSearch&) = delete;
    NearSearch& operator=(const NearSearch&) = delete;

    /// The points that are at most `radius` (Å, above 0) away from a point of `from`, those
    /// themselves included. Points that are not finite are near nothing but themselves. When `stop`
    /// is requested, the answer is not complete.
    Bits near(const Bits& from, double radius, const std::stop_token& stop = {}) const;

private:
    struct Prepared;
    std::unique_ptr<const Prepared> m_prepared;
};

} // namespace workbench
