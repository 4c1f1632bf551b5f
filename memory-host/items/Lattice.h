// The lattice that a regular grid is cut from: finds the lattice point nearest to a position.
#pragma once

#include <array>
#include <cstddef>

namespace memory_host {

/// All integer combinations of three step vectors. The steps may be skewed, of any length, and even
/// lie in one plane or line: finding the nearest point costs the same everywhere.
class Lattice {
public:
    using Triple = std::array<double, 3>;

    Lattice() = default;
    /// steps[axis] is a vector in Å.
    explicit Lattice(const std::array<Triple, 3>& steps);

    /// The numbers of steps to the lattice point nearest to `place`, which is in Å from the
    /// lattice's origin: integers from -`farAway` to `farAway`. Positions far outside are clamped;
    /// NaN gives -`farAway`.
    Triple nearest(const Triple& place) const;

    /// Small enough for int arithmetic without overflow.
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
    /// A basis of the lattice of short vectors, and minus their sum.
    std::array<Vector, 4> m_basis;
    /// The first three of the basis, orthogonalized (Gram-Schmidt).
    std::array<Vector, 3> m_orthogonal;
    /// A point is the nearest one when none of its neighbours along these is nearer.
    std::array<Vector, 7> m_neighbours;
};

} // namespace memory_host
