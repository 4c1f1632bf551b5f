// From what was read of the data to what is drawn.
#pragma once

#include "Contents.h"
#include "Look.h"
#include "Ribbons.h"
#include "Styles.h"
#include "render/Scene.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <vector>

namespace view {

/// Makes scenes, and keeps what the next one can use again. For one thread at a time.
class SceneMaker {
public:
    SceneMaker();
    ~SceneMaker();

    /// Everything that is shown, with the ids of idOf(). The same as before, if nothing changed.
    /// Null after a stop request.
    std::shared_ptr<const Scene> scene(const Snapshot& snapshot, const Look& look,
                                       const std::stop_token& stop = {});
    /// A coarse scene that stands for scene() while it moves; see QuickScene.h. It does not need
    /// scene() to be made.
    std::shared_ptr<const Scene> quickScene(const Snapshot& snapshot, const Look& look);

    /// Chooses what both show; they do so by themselves. Nothing, if nothing changed.
    void prepare(const Snapshot& snapshot, const Look& look);
    /// Rises with each prepare() that changed something; 0 before the first one.
    std::uint64_t version() const { return m_version; }
    /// About how many balls, lines and triangles scene() has, at the last prepare(). Takes time in
    /// proportion to the number of atoms.
    std::size_t size() const;

private:
    std::uint64_t m_version = 0;
    // What was prepared.
    Snapshot m_snapshot;
    Look m_look;
    Styles m_styles;
    Ribbons m_ribbons;
    std::shared_ptr<const Scene> m_scene;
    std::shared_ptr<const Scene> m_quick;
};

/// The points of all that the view draws of a snapshot, as a camera is fitted to them.
std::vector<Point> drawnPoints(const Contents& contents, const Marks& marks, const Look& look);

} // namespace view
