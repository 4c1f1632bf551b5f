// Densities that are sums of Gaussian functions around atoms, and the inside of their surfaces of
// one level.
#pragma once

#include "BallLists.h"
#include "Polygonizer.h"
#include "Vectors.h"

#include <array>
#include <span>
#include <vector>

namespace solid {

/// amplitude * exp(-exponent * distance^2); the exponent in 1 / Å².
struct GaussianTerm {
    double amplitude;
    double exponent;
};

/// Of the terms that one kind of atom has around itself; none for one that counts as nothing.
using DensityProfile = std::vector<GaussianTerm>;

/// Where an atom is, and by its number in a list of profiles, of which kind.
struct DensityAtom {
    Ball ball; ///< a vertex is next to the ball whose surface is nearest
    std::uint32_t profile;
};

/// One term that is 1 at the radius (Å), so that an atom by itself has the surface of its ball, and
/// near ones melt into one another at level 1.
///
/// Source: J. F. Blinn, ACM Trans. Graph. 1 (1982) 235-256; how fast it falls, 2.3, is from
/// Y. Zhang, G. Xu and C. Bajaj, Comput. Aided Geom. Des. 23 (2006) 510-530.
DensityProfile blob(double radius);

/// A part of an atom's scattering factor: amplitude * exp(-width * (sin(theta) / lambda)^2), with
/// the width in Å².
struct ScatteringTerm {
    double amplitude; ///< electrons
    double width;
};

/// The electrons around an atom in e / Å³, from its scattering factor and its isotropic temperature
/// factor (Å²). A term whose width is 0 or less with the temperature factor added is left out.
///
/// Source: D. T. Cromer and J. B. Mann, Acta Cryst. A24 (1968) 321-324: a sum of Gaussian
/// functions, whose Fourier transforms are Gaussian functions, too. A constant is a term of width
/// 0.
DensityProfile electrons(std::span<const ScatteringTerm> factor, double temperatureFactor);

/// Where the sum of all atoms' densities is at least a level. What of an atom is below a thousandth
/// of the level is left out.
class DensitySolid : public Solid {
public:
    /// On a lattice of `step` (Å). Atoms whose ball is not usable, and parts of profiles that are
    /// not finite or do not fall, count as nothing; of an atom, what is farther than 20 Å. Throws
    /// std::invalid_argument if the level is not positive and finite, if a profile's number is not
    /// in the list, or if the step is not 0.1 to 100 Å.
    DensitySolid(std::span<const DensityAtom> atoms, std::vector<DensityProfile> profiles,
                 double level, double step);

    CellSteps steps() const override { return cubicSteps(m_lists.step()); }
    std::span<const BlockPlace> blocks() const override { return m_lists.blocks(); }
    void findInside(std::size_t block, OwnSigns& signs) const override;
    /// By Newton's method along the edges; normals are exact.
    void findCrossings(std::size_t block, const BlockEdges& edges,
                       std::vector<Crossing>& crossings) const override;

private:
    /// At the corners of a block, those on its upper faces included, x fastest.
    using Values = std::array<double, blockRows * blockCorners>;
    struct Sample {
        double value;
        Vector gradient;
        std::uint32_t ball;
    };

    void sumUp(std::size_t block, Values& values) const;
    void add(const GaussianTerm& term, const LatticeBall& ball, const BlockPlace& place,
             Values& values) const;
    Sample sampleAt(std::size_t block, const Vector& point) const;
    Crossing crossing(std::size_t block, const Vector& inside, const Vector& outside, double in,
                      double out) const;

    std::vector<DensityProfile> m_profiles;
    std::vector<std::uint32_t> m_profileOf; ///< of each atom
    std::vector<Ball> m_balls;
    double m_level;
    BallLists m_lists; ///< of how far atoms count
};

} // namespace solid
