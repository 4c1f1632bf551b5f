#include "Drawing.h"

#include "render/Outline.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace view {

namespace {

constexpr float depthCue = 0.6F;

// The first quick picture of more balls and triangles than that would take too long as they are,
// and so would making them.
constexpr std::size_t manyThings = 250'000;

bool isSame(const Camera& a, const Camera& b) {
    return a.axes == b.axes && a.centre == b.centre && a.height == b.height && a.front == b.front &&
           a.back == b.back;
}

} // namespace

Drawing::Drawing(unsigned threads) : m_renderer(threads) {}

// While something moves the pictures only ever become coarser, as changing to and fro would
// flicker; the next movement starts a step better if there was time left, and the better pictures
// were not too slow before.
Drawing::Effort Drawing::effortFor(const Order& order) {
    if (!order.isMoving) {
        m_wasMoving = false;
        return Effort::Whole;
    }
    if (!m_wasMoving && m_quick != Effort::OneSample && m_quickTime < quickPicture / 5) {
        const auto better = static_cast<Effort>(static_cast<int>(m_quick) - 1);
        if (mayBeQuick(better))
            m_quick = better;
    }
    m_wasMoving = true;
    return m_quick;
}

bool Drawing::mayBeQuick(Effort effort) const {
    const Times& times = m_times[static_cast<std::size_t>(effort)];
    const double whole = m_times[static_cast<std::size_t>(Effort::Whole)].own;
    // From elsewhere, or in another size, all pictures may take more or less.
    const double change = whole > 0 && times.whole > 0 ? whole / times.whole : 1;
    return times.own * change < 1.5 * quickPicture;
}

void Drawing::learn(Effort effort, double milliseconds) {
    m_times[static_cast<std::size_t>(effort)] = {
        milliseconds, m_times[static_cast<std::size_t>(Effort::Whole)].own};
    if (effort == Effort::Whole) {
        // Four samples a pixel took about twice as long as one, or more in small scenes.
        const Effort guess = milliseconds > 6 * quickPicture   ? Effort::Dots
                             : milliseconds > 2 * quickPicture ? Effort::HalfSize
                                                               : Effort::OneSample;
        m_quick = m_isGuess ? guess : std::max(m_quick, guess);
        m_isGuess = false;
        return;
    }
    m_isGuess = false;
    m_quickTime = milliseconds;
    if (milliseconds > quickPicture && m_quick != Effort::Dots)
        m_quick = static_cast<Effort>(static_cast<int>(m_quick) + 1);
}

bool Drawing::isLast(const Order& order, Effort effort) const {
    return m_picture && effort == m_effort && order.width == m_order.width &&
           order.height == m_order.height && order.look.background == m_order.look.background &&
           order.lineScale == m_order.lineScale && order.hasDepthCue == m_order.hasDepthCue &&
           isSame(order.camera, m_order.camera);
}

std::optional<Drawn> Drawing::draw(const Order& order, const std::stop_token& stop) {
    if (order.width <= 0 || order.height <= 0)
        return {};
    m_maker.prepare(order.snapshot, order.look);
    if (m_maker.version() != m_known) {
        m_known = m_maker.version();
        m_quick = m_maker.size() > manyThings ? Effort::Dots : Effort::OneSample;
        m_isGuess = true;
        m_quickTime = quickPicture;
        m_times = {};
    }
    const Effort effort = effortFor(order);
    std::shared_ptr<const Scene> scene = effort == Effort::Dots
                                             ? m_maker.quickScene(order.snapshot, order.look)
                                             : m_maker.scene(order.snapshot, order.look, stop);
    if (!scene)
        return {};
    const bool isSmall = effort == Effort::HalfSize || effort == Effort::Dots;
    if (scene != m_scene || !isLast(order, effort)) {
        Settings settings;
        settings.width = isSmall ? (order.width + 1) / 2 : order.width;
        settings.height = isSmall ? (order.height + 1) / 2 : order.height;
        settings.samples = effort == Effort::Whole ? 2 : 1;
        settings.background = order.look.background;
        settings.depthCue = order.hasDepthCue ? depthCue : 0;
        const float lineScale = isSmall ? order.lineScale / 2 : order.lineScale;
        settings.lineWidth *= lineScale;
        settings.dotSize *= lineScale;
        // While something moves, pictures are drawn into each other's memory by turns.
        m_picture = nullptr;
        m_scene = nullptr;
        Picture used = m_memory.take();
        m_memory.setKeeping(order.isMoving);
        const auto begin = std::chrono::steady_clock::now();
        Picture picture = m_renderer.draw(*scene, order.camera, settings, stop, std::move(used));
        if (picture.image.isNull() || stop.stop_requested())
            return {};
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - begin;
        learn(effort, time.count());
        m_picture = m_memory.share(std::move(picture));
        m_scene = std::move(scene);
        m_order = order;
        m_order.snapshot = {};
        m_effort = effort;
    }
    Drawn drawn{m_picture->image,          m_picture,    order.camera,
                order.snapshot.generation, order.number, effort == Effort::Whole};
    const SelectionMarks& selection = *order.snapshot.selection;
    if (order.outline && std::find(selection.begin(), selection.end(), 1) != selection.end()) {
        std::vector<bool> isSelected(selection.size() + 1);
        std::copy(selection.begin(), selection.end(), isSelected.begin() + idOf(0));
        outline(drawn.image, *m_picture, isSelected, *order.outline,
                isSmall ? (order.outlineWidth + 1) / 2 : order.outlineWidth);
    }
    return drawn;
}

} // namespace view
