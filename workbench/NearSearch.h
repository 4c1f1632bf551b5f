// Which points are within a distance of others.
#pragma once

#include "Bits.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
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

    /// Of the points of `before`, as many, of which those with the numbers `moved`, rising, may be
    /// elsewhere: at a fraction of the time where these are few.
    static std::shared_ptr<const NearSearch> moved(const NearSearch& before,
                                                   const std::vector<Point>& points,
                                                   std::span<const std::uint32_t> moved);
    /// How many of so many points may be moved, in all since they were prepared as a whole: those
    /// that are moved stay with the neighbours that they had.
    static std::size_t mostMoved(std::size_t points) { return points / 64; }

    /// The points that are at most `radius` (Å, above 0) away from a point of `from`, those
    /// themselves included. Points that are not finite are near nothing but themselves. When `stop`
    /// is requested, the answer is not complete.
    Bits near(const Bits& from, double radius, const std::stop_token& stop = {}) const;

private:
    struct Prepared;
    explicit NearSearch(std::unique_ptr<const Prepared> prepared);

    std::unique_ptr<const Prepared> m_prepared;
};

} // namespace workbench
