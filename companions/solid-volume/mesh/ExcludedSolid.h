// The inside of a solvent-excluded surface: what a probe that rolls over the balls never reaches.
//
// Source: F. M. Richards, Annu. Rev. Biophys. Bioeng. 6 (1977) 151-176.
#pragma once

#include "Arcs.h"
#include "BallLists.h"
#include "BallUnion.h"
#include "Polygonizer.h"
#include "ProbeSearch.h"
#include "Reaching.h"

namespace solid {

class ExcludedSolid : public Solid {
public:
    /// On a lattice of `step`, with a probe of radius `probe`; both in Å. Balls that are not usable
    /// with the probe's radius added count as nothing. Throws std::invalid_argument if the step is
    /// less than 0.1 Å or more than the probe's diameter, or the probe's radius not 0.1 to 10 Å.
    ExcludedSolid(std::span<const Ball> balls, double step, double probe, const ForEach& forEach);

    CellSteps steps() const override { return m_reach.steps(); }
    /// Of atoms by themselves. The lattice lines through one of them are few, and where coordinates
    /// are round, the same ones for all.
    double knownArea() const override;
    std::span<const BlockPlace> blocks() const override { return m_reach.lists().blocks(); }
    void findInside(std::size_t block, OwnSigns& signs) const override;
    void findCrossings(std::size_t block, const BlockEdges& edges,
                       std::vector<Crossing>& crossings) const override;

private:
    /// What may matter in one block, from its origin.
    struct Surroundings {
        Vector origin;
        Reaching balls;
        Reaching hidden; ///< that only name vertices
        Reaching arcs;
        Reaching places;
    };

    Surroundings surroundings(std::size_t block) const;
    /// Whether no other ball takes part in the surface around one.
    bool isAlone(std::uint32_t ball) const;
    Box boxAt(const Point& low) const;
    /// Takes in what may matter in a box of a block, which begins at `low`, in Å from its origin.
    void gather(const Surroundings& around, const Point& low, ProbeSearch& near) const;
    Crossing crossing(Point inside, Point outside, const Vector& origin, ProbeSearch& near) const;
    float step() const { return static_cast<float>(m_around.step()); }

    std::vector<Ball> m_grown;
    std::vector<Ball> m_kept; // without those of a crowd that no probe touches
    double m_probe;
    BallUnion m_balls;
    BallUnion m_reach;  // of the grown balls
    BallLists m_around; // those near a corner
    ProbeTracks m_tracks;
    std::vector<std::vector<std::uint32_t>> m_arcsOf;   // by block
    std::vector<std::vector<std::uint32_t>> m_placesOf; // by block
};

} // namespace solid
