#include "Contest.h"
#include "Peer.h"
#include "RealStructures.h"
#include "Space.h"
#include "Works.h"
#include "files/Files.h"
#include "render/Renderer.h"
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"

#include <algorithm>
#include <array>
#include <memory>
#include <sstream>

namespace benchmarks {

namespace {

using view::Representation;

/// A kind of picture, and what the competitor calls it.
struct Kind {
    Representation representation;
    std::string name;
};
const std::array<Kind, 4> kinds = {{{Representation::Points, "points"},
                                    {Representation::Spheres, "spheres"},
                                    {Representation::Sticks, "sticks"},
                                    {Representation::Ribbon, "ribbons"}}};

/// A way in which the competitor draws.
struct Way {
    std::string command;
    std::string name;
    std::string beside; ///< in the name of the work
    bool isJudged;
};
const std::array<Way, 3> ways = {
    {{"draw", "PyMOL's draw", "", true},
     {"redraw", "PyMOL's redraw of its window", ", beside a window's redraw", false},
     {"ray", "PyMOL's ray, no shadows", ", beside a ray tracer", false}}};

std::string workOf(const Kind& kind, const Way& way) {
    return "picture of " + kind.name + ", 1280 x 800" + way.beside;
}

// The ray tracer stands beside the kind of picture that it was made for.
bool isThere(const Kind& kind, const Way& way) {
    return (way.command != "ray" || kind.name == "spheres") && isWanted(workOf(kind, way));
}

class Pictures {
public:
    Pictures(const std::string& path, int turns) : m_turns(turns), m_path(path) {
        memory_host::openFile(path);
        view::DataReader reader;
        reader.read();
        m_snapshot = reader.snapshot();
        emptySpace();
        // Both look from the same distance, from which all atoms are seen at any rotation.
        m_camera.fit(m_snapshot.contents->positions, 1.6, 2);
    }

    void compare(const Kind& kind) {
        view::SceneMaker maker;
        m_scene =
            maker.scene(m_snapshot, {.representation = kind.representation,
                                     .showWaters = kind.representation != Representation::Ribbon});
        bool isShown = false;
        for (const Way& way : ways) {
            if (!isThere(kind, way))
                continue;
            if (!isShown)
                askPeer("show " + kind.name);
            isShown = true;
            compare(kind, way);
        }
    }

private:
    void compare(const Kind& kind, const Way& way) {
        std::ostringstream camera;
        camera << "camera " << m_camera.height << ' ' << m_camera.centre[0] << ' '
               << m_camera.centre[1] << ' ' << m_camera.centre[2];
        askPeer(camera.str());
        view::Camera turned = m_camera;
        const std::size_t atoms = m_snapshot.contents->atomCount();
        run({.work = workOf(kind, way),
             .size = atoms,
             .items = atoms,
             .itemName = "atom",
             .peer = m_peer ? way.name : "",
             .target = way.isJudged ? targetOf(kind, atoms) : "",
             .theirBytes = theirBytes(),
             .isProcessorTime = true,
             .ours = {[&] { turned.turn(3 * degree, 0); },
                      [&] {
                          m_picture =
                              m_renderer.draw(*m_scene, turned, settings, {}, std::move(m_picture));
                      },
                      {}},
             .theirs = {{},
                        [&] { setTime(static_cast<double>(askPeer(way.command)) * 1e-9); },
                        {}}},
            way.command == "ray" ? m_turns : std::max(m_turns, 5));
    }

    static std::string targetOf(const Kind& kind, std::size_t atoms) {
        std::string target = "ratio at least 10";
        if (kind.representation == Representation::Spheres && atoms < 2'000'000)
            target += atoms > 500'000  ? ", at most 115 ms"
                      : atoms > 50'000 ? ", at most 40 ms"
                                       : ", at most 10 ms";
        return target;
    }

    // About what the competitor needs for everything that it draws.
    double theirBytes() const {
        return static_cast<double>(m_snapshot.contents->atomCount()) * 7000;
    }

    /// The first question starts the competitor.
    std::size_t askPeer(const std::string& line) {
        if (!m_isPeerAsked && hasMemory(theirBytes())) {
            m_peer = std::make_unique<Peer>("picture-peer.py", m_path);
            if (!m_peer->isThere())
                m_peer = nullptr;
        }
        m_isPeerAsked = true;
        return m_peer ? m_peer->ask(line) : 0;
    }

    static constexpr double degree = 0.017453292519943295;
    static inline const view::Settings settings = {.width = 1280, .height = 800};

    int m_turns;
    std::string m_path;
    view::Snapshot m_snapshot;
    view::Camera m_camera;
    std::shared_ptr<const view::Scene> m_scene;
    view::Renderer m_renderer{1};
    view::Picture m_picture;
    std::unique_ptr<Peer> m_peer;
    bool m_isPeerAsked = false;
};

} // namespace

// Ours on one thread, so that no time is spent on handing out work.
void benchmarkPictures(const std::string& path, int turns) {
    std::unique_ptr<Pictures> pictures;
    for (const Kind& kind : kinds) {
        if (std::none_of(ways.begin(), ways.end(),
                         [&](const Way& way) { return isThere(kind, way); }))
            continue;
        if (!pictures)
            pictures = std::make_unique<Pictures>(path, turns);
        pictures->compare(kind);
    }
}

} // namespace benchmarks
