// The free place of a probe's centre that is nearest to a point, within a small box.
#pragma once

#include "Arcs.h"
#include "Lanes.h"
#include "Mesh.h"
#include "Vectors.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace solid {

/// In single precision and from the box's own corner, so that four balls are calculated with at
/// once.
class ProbeSearch {
public:
    struct Probe {
        Point centre;
        float distance; ///< from the point asked for
    };

    /// Begins a box whose low corner is at `origin`.
    void clear(const Vector& origin);
    /// Takes in all that may decide about a probe for a point of the box.
    void addBall(const Ball& grown, std::uint32_t index);
    /// A ball within the union of the others, which no probe needs to know.
    void addHidden(const Ball& grown, std::uint32_t index);
    void addArc(const Arc& arc);
    void addPlace(const ProbePlace& place);

    /// Whether a probe that is free is nearer than `within` to a point.
    bool isAny(const Point& point, float within);
    /// The nearest one; its distance is `within` if there is none that near.
    Probe nearest(const Point& point, float within);
    /// The ball whose surface is nearest to a point, of several the one taken in first.
    /// There is a ball.
    std::uint32_t nearestBall(const Point& point) const;

private:
    struct Four {
        Lanes x, y, z, radius, square;
        std::array<std::uint32_t, lanes> ball;
    };
    /// Four arcs.
    struct Tracks {
        Lanes x, y, z, axisX, axisY, axisZ, radius;
    };
    /// Where on its circle an arc is.
    struct Track {
        Point afterFirst, beforeLast; ///< what is on the arc is to this side of its ends
        Point middle;                 ///< the sum of the unit vectors to its ends
        bool isClosed, isWide;        ///< wide: more than half a turn
    };

    /// Balls by fours, of which the last lanes may be nowhere.
    struct Fours {
        std::vector<Four> all;
        std::size_t count = 0;

        void clear();
        void add(const Ball& grown, const Vector& origin, std::uint32_t index);
    };
    struct Named {
        float gap;
        std::uint32_t ball;
    };

    static Named nearestOf(const std::vector<Four>& balls, const Point& point);
    bool isFree(const Point& centre);
    static bool isOn(const Track& track, const Point& flat, float far);
    void searchPlaces(const Point& point, Probe& best) const;
    template <bool isFirstEnough> void searchTracks(const Point& point, Probe& best) const;
    template <bool isFirstEnough> void searchBalls(const Point& point, Probe& best);
    template <bool isFirstEnough> Probe search(const Point& point, float within);

    Vector m_origin;
    Fours m_balls;
    Fours m_hidden;
    std::vector<Tracks> m_lanes;
    std::vector<Track> m_tracks;
    std::vector<Point> m_places;
    std::size_t m_lastBlocker = 0;
};

} // namespace solid
