// From what was read of the data to what is drawn.
#pragma once

#include "Contents.h"
#include "Look.h"
#include "Ribbons.h"
#include "Styles.h"
#include "render/Scene.h"

#include <cstddef>
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
    /// A scene that stands for the last scene() while it moves: atoms as dots, at most
    /// `dotsWhileMoving` of them, so that some atoms of large scenes have none; ribbons as lines.
    std::shared_ptr<const Scene> quickScene();

    static constexpr std::size_t dotsWhileMoving = 400'000;

private:
    const std::vector<std::shared_ptr<const Mesh>>& coloured();

    Snapshot m_snapshot;
    Look m_look;
    Styles m_styles;
    Ribbons m_ribbons;
    std::vector<std::shared_ptr<const Mesh>> m_coloured; ///< of the shapes of the last scene
    std::weak_ptr<const Contents> m_coloursOf;           ///< whose shapes these are
    std::shared_ptr<const Scene> m_scene;
    std::shared_ptr<const Scene> m_quick;
};

/// The points of all that the view draws of a snapshot, as a camera is fitted to them.
std::vector<Point> drawnPoints(const Snapshot& snapshot, const Look& look);

} // namespace view
