// Distances, angles and torsions between positions, and statistics of numbers.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

namespace workbench {

using Place = std::array<double, 3>; ///< Å

/// Å.
double distanceBetween(const Place& a, const Place& b);
/// The angle at `b`, in degrees from 0 to 180; NaN where two of the places are the same.
double angleAt(const Place& a, const Place& b, const Place& c);
/// The torsion angle about the line from `b` to `c`, in degrees from -180 to 180: positive where,
/// seen along that line, the far bond is turned clockwise from the near one (IUPAC-IUB Commission
/// on Biochemical Nomenclature, 1970). NaN where three places in a row lie in one line.
double torsionAbout(const Place& a, const Place& b, const Place& c, const Place& d);

/// Count, extremes, mean and deviation of numbers that come one by one. What is not finite is left
/// out.
class Statistics {
public:
    void add(double value);
    std::size_t count() const { return m_count; }
    /// These are NaN of no numbers.
    double least() const { return m_least; }
    double greatest() const { return m_greatest; }
    double mean() const;
    /// Of the numbers themselves, and no estimate from a sample: the root of the mean square of the
    /// differences from the mean.
    double deviation() const;

private:
    std::size_t m_count = 0;
    double m_first = 0.0; ///< the sums are of differences from it, which lose less
    double m_sum = 0.0;
    double m_squares = 0.0;
    double m_least = std::numeric_limits<double>::quiet_NaN();
    double m_greatest = std::numeric_limits<double>::quiet_NaN();
};

} // namespace workbench
