// The potential of point charges. Knows no items.
#pragma once

#include "Trilinear.h"

#include <cstdint>
#include <span>
#include <vector>

namespace electrostatics {

struct Charge {
    Point position; ///< Å
    float charge;   ///< elementary charges
};

/// kT/e at 298.15 K and 1 Å from one elementary charge without a dielectric: e / (4 pi epsilon0 Å)
/// over kT / e, with the CODATA 2018 values of the constants.
inline constexpr double potentialOfUnitCharge = 560.459;

/// The dielectric constant at a distance of r Å is this times r, which stands for the solvent: as
/// proposed by J. A. McCammon, P. G. Wolynes and M. Karplus, Biochemistry 18 (1979) 927-942.
inline constexpr double dielectricSlope = 4;

/// The potential at a point in kT/e. A charge nearer than 1 Å counts as 1 Å away. Takes time for
/// each charge.
float coulombPotential(const Point& at, std::span<const Charge> charges);

/// The same for many points among many charges, in time that grows with the logarithm of the
/// number of charges: those far away count in groups, by their sum and its first and second moments
/// (J. Barnes and P. Hut, Nature 324 (1986) 446-449, with another law).
class ChargeTree {
public:
    /// Charges at positions that are not finite, or that are themselves not, are left out.
    explicit ChargeTree(std::vector<Charge> charges);

    /// The potential at each of the points in kT/e, `to` having as many places. A group counts as
    /// one from four times its radius on; of some thousand charges together the error stays below
    /// 0.1 % of the range of their potential. Fastest where points that follow one another are
    /// near each other.
    void at(std::span<const Point> points, std::span<float> to) const;

private:
    using Vector = std::array<double, 3>;

    /// A group of charges, in depth-first order.
    struct Node {
        Vector centre{};
        double far = 0; ///< from this distance on the group counts as one
        double sum = 0;
        Vector first{};                 ///< sum of charge times vector from the centre
        std::array<double, 6> second{}; ///< likewise xx, yy, zz, xy, xz, yz
        std::uint32_t begin = 0;        ///< its charges
        std::uint32_t end = 0;
        std::uint32_t next = 0; ///< the node behind all that are within this one
        bool isLeaf = true;
    };

    class Lanes;

    void build(std::uint32_t begin, std::uint32_t end);
    Node summed(std::uint32_t begin, std::uint32_t end) const;

    std::vector<Charge> m_charges;
    std::vector<Node> m_nodes;
};

} // namespace electrostatics
