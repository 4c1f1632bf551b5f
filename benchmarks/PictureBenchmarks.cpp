#include "Contest.h"
#include "Peer.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "files/Files.h"
#include "render/Renderer.h"

#include <vector>

namespace benchmarks {

namespace {

constexpr float radius = 1.7F; // Å

view::Scene spheres(TAVIK::Compound* item) {
    std::vector<TAVIK::Compound*> atoms;
    TAVIK::GetAtoms(item, atoms, true);
    view::Scene scene;
    for (TAVIK::Compound* const each : atoms) {
        const TAVIK::Vertex at = each->GetPosition();
        if (!at.isValid())
            continue;
        const auto index = static_cast<std::uint32_t>(scene.points.size());
        scene.points.push_back({at[0], at[1], at[2]});
        scene.colours.push_back(0x9090A0 + index % 8 * 0x0C0600);
        scene.ids.push_back(index + 1);
        scene.balls.push_back({index, radius});
    }
    return scene;
}

} // namespace

// On one thread each, so that the time is the processor's.
void benchmarkPictures(const std::string& path, int turns) {
    const std::string work = "picture of spheres, 1280 x 800, one thread";
    if (!isWanted(work))
        return;
    memory_host::openFile(path);
    const view::Scene scene = spheres(TAVIK::Space::instance());
    emptySpace();
    const view::Settings settings = {.width = 1280, .height = 800};
    view::Camera camera;
    camera.fit(scene.points, 1.6, 2);
    view::Renderer renderer(1);
    view::Picture picture;
    Peer peer("picture-peer.py", path);
    run({.work = work,
         .size = scene.points.size(),
         .items = scene.points.size(),
         .itemName = "atom",
         .peer = peer.isThere() ? "PyMOL's ray, no shadows" : "",
         .target = scene.points.size() > 2'000'000 ? ""
                   : scene.points.size() > 500'000 ? "at most 115 ms"
                   : scene.points.size() > 50'000  ? "at most 40 ms"
                                                   : "at most 10 ms",
         .ours = {[&] { camera.turn(0.1, 0); },
                  [&] { picture = renderer.draw(scene, camera, settings, {}, std::move(picture)); },
                  {}},
         .theirs = {{}, [&] { peer.ask("1280 800"); }, {}}},
        std::max(turns, 10));
}

} // namespace benchmarks
