// One picture after another of what was read: whole ones, and quick ones while things move.
#pragma once

#include "Contents.h"
#include "Look.h"
#include "PictureMemory.h"
#include "SceneMaker.h"
#include "render/Camera.h"
#include "render/Picture.h"
#include "render/Renderer.h"

#include <QImage>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>

namespace view {

/// Everything that a picture shows.
struct Order {
    Snapshot snapshot;
    Look look;
    Camera camera;
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    bool hasDepthCue = true;
    std::optional<Colour> outline; ///< of what is selected; without one it is not marked
    int outlineWidth = 2;          ///< pixels
    float lineScale = 1;           ///< lines and dots are that many times as wide
    /// Whether a quick picture is wanted: it is drawn as well as it can be in `quickPicture`.
    bool isMoving = false;
    std::uint64_t number = 0; ///< given back with the picture
};

/// A picture that came of an order.
struct Drawn {
    QImage image; ///< with the outline; of quick pictures, perhaps of half the width and height
    std::shared_ptr<const Picture> picture; ///< without it, with an id for each pixel
    Camera camera;
    std::uint64_t generation = 0; ///< of the snapshot, with which the ids are valid
    std::uint64_t number = 0;     ///< of the order
    bool isWhole = false;
};

/// What a quick picture may take, in milliseconds.
inline constexpr double quickPicture = 40;

/// Carries out orders. For one thread at a time.
class Drawing {
public:
    explicit Drawing(unsigned threads = 0);

    /// Nothing after a stop request, and for a picture without a size. What did not change since
    /// the last picture is not made again: a selection costs an outline. Throws std::bad_alloc.
    std::optional<Drawn> draw(const Order& order, const std::stop_token& stop = {});

private:
    /// From the best to the fastest.
    enum class Effort { Whole, OneSample, HalfSize, Dots };

    Effort effortFor(const Order& order);
    /// Whether pictures of an effort have not turned out to be too slow.
    bool mayBeQuick(Effort effort) const;
    bool isLast(const Order& order, Effort effort) const;
    void learn(Effort effort, double milliseconds);

    SceneMaker m_maker;
    Renderer m_renderer;
    PictureMemory m_memory;
    std::shared_ptr<const Picture> m_picture; ///< the last one
    std::shared_ptr<const Scene> m_scene;     ///< of which it is
    Order m_order;                            ///< likewise, without the snapshot
    Effort m_effort = Effort::Whole;          ///< likewise
    Effort m_quick = Effort::OneSample;       ///< of the next quick picture
    bool m_isGuess = true;                    ///< and no picture was timed for it
    std::uint64_t m_known = 0;                ///< the version of the scene for which that holds
    bool m_wasMoving = false;
    double m_quickTime = quickPicture; ///< milliseconds that the last quick picture took
    /// What the last picture of each effort took, and the whole one before it, in milliseconds; 0
    /// where the scene has none yet.
    struct Times {
        double own = 0;
        double whole = 0;
    };
    std::array<Times, 4> m_times;
};

} // namespace view
