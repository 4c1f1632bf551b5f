// The points of a regular grid, as the lattice that they are cut from: which of them is nearest.
#pragma once

#include <array>
#include <cstddef>

namespace memory_host {

/// All points that whole numbers of three steps lead to. The steps may be skewed, of any length,
/// and even lie in one plane or line: finding the nearest point costs the same everywhere.
class Lattice {
public:
    using Triple = std::array<double, 3>;

    Lattice() = default;
    /// steps[axis] is a vector in Å.
    explicit Lattice(const std::array<Triple, 3>& steps);

    /// How many of each step lead to the point nearest to `place`, which is in Å from the point
    /// where the steps begin. Whole numbers of at most `farAway`, to which places far outside and
    /// coordinates that are no numbers are bounded.
    Triple nearest(const Triple& place) const;

    /// Small enough to be calculated with as an int.
    static constexpr double farAway = 1 << 30;

private:
    struct Vector {
        Triple index{}; ///< in steps, whole numbers
        Triple at{};    ///< Å
        double squared = 0.0;
    };

    Vector vectorOf(const Triple& index) const;
    bool isNull(double squared) const { return squared <= m_null; }
    void shorten();
    void makeObtuse();
    void orthogonalize();

    std::array<Triple, 3> m_steps{};
    double m_null = 0.0; ///< squared lengths up to this are rounding errors
    /// Vectors that make the same lattice, as short as they get, and minus their sum.
    std::array<Vector, 4> m_basis;
    /// What each of the first three adds to the plane or line of those before it.
    std::array<Vector, 3> m_orthogonal;
    /// A point is the nearest one when none of its neighbours along these is nearer.
    std::array<Vector, 7> m_neighbours;
};

} // namespace memory_host
