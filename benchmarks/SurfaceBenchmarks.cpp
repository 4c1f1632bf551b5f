#include "Balls.h"
#include "Contest.h"
#include "Peer.h"
#include "Works.h"
#include "mesh/BallSurfaces.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include <malloc.h>

namespace benchmarks {

namespace {

// Å; coarser for many atoms.
constexpr double fineStep = 0.5;
constexpr double coarseStep = 1.0;
constexpr std::size_t manyAtoms = 50'000;

/// A kind of surface, and what the competitor calls it.
struct Kind {
    std::string name;
    std::string theirName;
    /// The competitor's finest that has no more triangles than ours, of few atoms and of many.
    std::string fineQuality;
    std::string coarseQuality;
    solid::Mesh (*make)(const std::vector<solid::Ball>& balls, double step);
};
const std::array<Kind, 3> kinds = {{
    {"solvent-excluded surface", "excluded", "1", "0",
     [](const auto& balls, double step) {
         return solid::excludedSurface(balls, probe, step, inTurn());
     }},
    {"solvent-accessible surface", "accessible", "3", "0",
     [](const auto& balls, double step) {
         return solid::unionSurface(balls, probe, step, inTurn());
     }},
    {"van der Waals surface", "waals", "1", "0",
     [](const auto& balls, double step) { return solid::unionSurface(balls, 0, step, inTurn()); }},
}};

class Surfaces {
public:
    Surfaces(const std::string& path, int turns)
        : m_turns(turns), m_path(path), m_balls(ballsOf(path)),
          m_isCoarse(m_balls.size() > manyAtoms) {}

    void compare(const Kind& kind) {
        const std::string& quality = m_isCoarse ? kind.coarseQuality : kind.fineQuality;
        const bool isExcluded = kind.theirName == "excluded";
        if (!isAlone())
            startPeer();
        solid::Mesh mesh;
        std::size_t ours = 0;
        std::size_t theirs = 0;
        malloc_trim(0); // so that the first turn's peak is all that the work takes
        run({.work = workOf(kind, m_isCoarse),
             .size = m_balls.size(),
             .items = m_balls.size(),
             .itemName = "atom",
             .peer = m_peer ? "PyMOL's surface, quality " + quality : "",
             .target = isAlone() ? (isExcluded ? "an atom's time and memory as at 165 k" : "")
                                 : "ratio at least 5" + (isExcluded ? limit() : ""),
             .isProcessorTime = true,
             .takeTheyMinutes = m_isCoarse && !isExcluded,
             .ours = {[&] { mesh = {}; },
                      [&] { mesh = kind.make(m_balls, m_isCoarse ? coarseStep : fineStep); },
                      {},
                      [&] { return counted(ours = mesh.triangles.size(), "triangles"); }},
             .theirs = {{},
                        [&] {
                            setTime(static_cast<double>(
                                        m_peer->ask("surface " + kind.theirName + ' ' + quality)) *
                                    1e-9);
                        },
                        {},
                        [&] { return counted(theirs = m_peer->ask("triangles"), "triangles"); }}},
            m_isCoarse ? 1 : m_turns);
        if (theirs > ours)
            throw std::runtime_error("the competitor's " + kind.name + " of " + m_path +
                                     " has more triangles");
    }

    static std::string workOf(const Kind& kind, bool isCoarse) {
        return kind.name + (isCoarse ? ", 1 Å" : ", 0.5 Å");
    }

private:
    // Of a million atoms, the competitor would take many minutes.
    bool isAlone() const { return m_balls.size() > 500'000; }

    std::string limit() const {
        return m_isCoarse              ? ", at most 10 s and 250 MB"
               : m_balls.size() < 1000 ? ", at most 0.2 s"
                                       : "";
    }

    void startPeer() {
        if (m_isPeerAsked || !hasMemory(static_cast<double>(m_balls.size()) * 30'000))
            return;
        m_isPeerAsked = true;
        m_peer = std::make_unique<Peer>("surface-peer.py", m_path);
        if (!m_peer->isThere())
            m_peer = nullptr;
        else if (m_peer->atoms() != m_balls.size())
            throw std::runtime_error("the competitor has other atoms of " + m_path);
    }

    int m_turns;
    std::string m_path;
    std::vector<solid::Ball> m_balls;
    bool m_isCoarse;
    std::unique_ptr<Peer> m_peer;
    bool m_isPeerAsked = false;
};

} // namespace

// Ours on one thread, from the balls to the mesh with its area.
void benchmarkSurfaces(const std::string& path, int turns) {
    std::unique_ptr<Surfaces> surfaces;
    for (const Kind& kind : kinds) {
        if (!isWanted(Surfaces::workOf(kind, false)) && !isWanted(Surfaces::workOf(kind, true)))
            continue;
        if (!surfaces)
            surfaces = std::make_unique<Surfaces>(path, turns);
        surfaces->compare(kind);
    }
}

} // namespace benchmarks
