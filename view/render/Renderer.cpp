#include "Renderer.h"

#include "Balls.h"
#include "Bins.h"
#include "Dots.h"
#include "Frame.h"
#include "Lines.h"
#include "Shading.h"
#include "Sticks.h"
#include "Tile.h"
#include "Triangles.h"
#include "Workers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace view {

namespace {

/// What a thread needs to draw a tile.
struct Brush {
    Tile tile;
    Tile seeThrough;           ///< the surfaces of such meshes, in front of what the tile shows
    bool isSeeThrough = false; ///< whether there are any in the tile
    // Two rows of samples, as they are shaded.
    std::array<std::array<std::int32_t, tileSide>, 2> colours;
    std::array<std::array<Id, tileSide>, 2> ids;
    std::array<std::array<Id, tileSide>, 2> seeThroughIds;
    BallPainter balls;
    TrianglePainter triangles;
    DotPainter dots;
    TriangleSurfaces surfaces;
    TriangleSurfaces seeThroughSurfaces;
    FrontToBack order;
};

/// A picture's memory as it is written.
struct Canvas {
    std::uint32_t* image;
    std::size_t stride; ///< pixels from one row to the next
    Id* ids;
    float* depths;
    std::size_t width;
    // Null where the scene has nothing to see through.
    Id* seeThroughIds;
    float* seeThroughDepths;
};

/// Half of a width in pixels, in samples.
float halfWidth(float width, int samples) {
    const float pixels = std::clamp(width, 1.0F, 1000.0F);
    return (std::isnan(pixels) ? 1 : pixels) * static_cast<float>(samples) / 2;
}

Picture blank(Picture used, const Settings& settings) {
    const QSize size(settings.width, settings.height);
    if (used.image.size() != size || used.image.format() != QImage::Format_RGB32) {
        used.image = QImage(size, QImage::Format_RGB32);
        used.drawn = {};
    }
    if (used.image.isNull())
        throw std::bad_alloc();
    const auto pixels =
        static_cast<std::size_t>(settings.width) * static_cast<std::size_t>(settings.height);
    used.ids.resize(pixels);
    used.depths.resize(pixels);
    return used;
}

/// Makes room for what is seen through, or frees it.
void setSeeThrough(Picture& picture, bool isSeeThrough) {
    const std::size_t pixels = isSeeThrough ? picture.ids.size() : 0;
    if (picture.seeThroughIds.size() == pixels)
        return;
    picture.seeThroughIds = std::vector<Id>(pixels, noId);
    picture.seeThroughDepths = std::vector<float>(pixels, -std::numeric_limits<float>::infinity());
}

/// Writes pixels of a row that nothing is seen through.
void writeNothingSeenThrough(const Canvas& canvas, std::size_t x, std::size_t y,
                             std::size_t count) {
    if (!canvas.seeThroughIds)
        return;
    std::fill_n(canvas.seeThroughIds + y * canvas.width + x, count, noId);
    std::fill_n(canvas.seeThroughDepths + y * canvas.width + x, count,
                -std::numeric_limits<float>::infinity());
}

/// Writes pixels of a row that show nothing.
void writeBlank(const Canvas& canvas, const Look& look, std::size_t x, std::size_t y,
                std::size_t count) {
    std::fill_n(canvas.image + y * canvas.stride + x, count, look.background | 0xFF000000U);
    std::fill_n(canvas.ids + y * canvas.width + x, count, noId);
    std::fill_n(canvas.depths + y * canvas.width + x, count,
                -std::numeric_limits<float>::infinity());
    writeNothingSeenThrough(canvas, x, y, count);
}

/// Shades a part of a row into the first or the second of the brush's rows.
void shadeRow(Brush& brush, const Shader& shader, int row, std::size_t into, int from, int end) {
    std::int32_t* const colours = brush.colours[into].data() + from;
    shader.shade(brush.tile, row, from, end, brush.surfaces,
                 {colours, brush.ids[into].data() + from});
    if (brush.isSeeThrough)
        shader.shadeOver(brush.seeThrough, row, from, end, brush.seeThroughSurfaces,
                         {colours, brush.seeThroughIds[into].data() + from});
}

/// Writes what is seen through in the pixels of a row, of so many samples along each side. Where
/// nothing else is seen it is what the pixel shows.
void writeSeeThrough(const Brush& brush, const Frame& frame, const Canvas& canvas, int samples,
                     int row, int from, int end) {
    const auto y = static_cast<std::size_t>((brush.tile.top() + row) / samples);
    const auto x = static_cast<std::size_t>((brush.tile.left() + from) / samples);
    if (!brush.isSeeThrough)
        return writeNothingSeenThrough(canvas, x, y,
                                       static_cast<std::size_t>(end - from) / samples);
    const Tile& tile = brush.seeThrough;
    std::size_t at = y * canvas.width + x;
    for (int column = from; column < end; column += samples, ++at) {
        float depth = -std::numeric_limits<float>::infinity();
        Number number = noNumber;
        Id id = noId;
        for (int sample = 0; sample < samples * samples; ++sample) {
            const int beside = column + sample % samples;
            const float depthHere = tile.depths(row + sample / samples)[beside];
            const Number numberHere = tile.numbers(row + sample / samples)[beside];
            if (numberHere == noNumber ||
                !(depthHere > depth || (depthHere == depth && numberHere < number)))
                continue;
            depth = depthHere;
            number = numberHere;
            id = brush.seeThroughIds[static_cast<std::size_t>(sample / samples)]
                                    [static_cast<std::size_t>(beside)];
        }
        canvas.seeThroughIds[at] = id;
        canvas.seeThroughDepths[at] = depth * (1 / frame.scale);
        if (canvas.ids[at] == noId) {
            canvas.ids[at] = id;
            canvas.depths[at] = canvas.seeThroughDepths[at];
        }
    }
}

/// Writes samples of a row, each of them a pixel.
void writeSamples(Brush& brush, const Frame& frame, const Shader& shader, const Canvas& canvas,
                  int row, int from, int end) {
    const Tile& tile = brush.tile;
    const auto y = static_cast<std::size_t>(tile.top() + row);
    const auto left = static_cast<std::size_t>(tile.left() + from);
    const auto width = static_cast<std::size_t>(std::min(end, tile.width()) - from);
    auto* const image = reinterpret_cast<std::int32_t*>(canvas.image + y * canvas.stride + left);
    Id* const ids = canvas.ids + y * canvas.width + left;
    if (end <= tile.width() && !brush.isSeeThrough) {
        shader.shade(tile, row, from, end, brush.surfaces, {image, ids});
    } else {
        shadeRow(brush, shader, row, 0, from, end);
        std::copy_n(brush.colours[0].data() + from, width, image);
        std::copy_n(brush.ids[0].data() + from, width, ids);
    }
    const Floats pixel = all(1 / frame.scale);
    const float* const nearest = tile.depths(row) + from;
    float* const depths = canvas.depths + y * canvas.width + left;
    std::size_t x = 0;
    for (; x + 4 <= width; x += 4)
        store(depths + x, load(nearest + x) * pixel);
    for (; x < width; ++x)
        depths[x] = nearest[x] * pixel[0];
}

/// The mean of four colours, rounded.
std::uint32_t mean(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    std::uint32_t result = 0xFF000000U;
    for (const int shift : {0, 8, 16}) {
        const std::uint32_t sum =
            (a >> shift & 255U) + (b >> shift & 255U) + (c >> shift & 255U) + (d >> shift & 255U);
        result |= (sum + 2) / 4 << shift;
    }
    return result;
}

/// Writes the pixel of 2 x 2 samples, which are shaded.
void writeMean(const Brush& brush, const Frame& frame, const Canvas& canvas, int row, int column) {
    const Tile& tile = brush.tile;
    const auto y = static_cast<std::size_t>((tile.top() + row) / 2);
    const auto x = static_cast<std::size_t>((tile.left() + column) / 2);
    float depth = -std::numeric_limits<float>::infinity();
    Number number = noNumber;
    Id id = noId;
    std::array<std::uint32_t, 4> colours;
    for (int sample = 0; sample < 4; ++sample) {
        const int at = row + sample / 2;
        const int beside = column + sample % 2;
        const auto half = static_cast<std::size_t>(sample / 2);
        colours[static_cast<std::size_t>(sample)] =
            static_cast<std::uint32_t>(brush.colours[half][static_cast<std::size_t>(beside)]);
        const float depthHere = tile.depths(at)[beside];
        const Number numberHere = tile.numbers(at)[beside];
        if (depthHere > depth || (depthHere == depth && numberHere < number)) {
            depth = depthHere;
            number = numberHere;
            id = brush.ids[half][static_cast<std::size_t>(beside)];
        }
    }
    canvas.image[y * canvas.stride + x] = mean(colours[0], colours[1], colours[2], colours[3]);
    canvas.ids[y * canvas.width + x] = id;
    canvas.depths[y * canvas.width + x] = depth * (1 / frame.scale);
}

/// Shades and writes a tile that has so many samples along each side of a pixel, but for what shows
/// nothing now as before.
void writeTile(Brush& brush, const Frame& frame, const Shader& shader, const Look& look,
               int samples, const Canvas& canvas, const Tile::Runs& drawnBefore) {
    const Tile& tile = brush.tile;
    const unsigned inPicture = (2U << ((tile.width() - 1) / Tile::blockSide)) - 1;
    for (int row = 0; row < tile.height(); row += samples) {
        const unsigned now = Tile::runsOf(tile.drawnRuns(), row);
        const unsigned before = Tile::runsOf(drawnBefore, row) & inPicture;
        Tile::eachRun(before & ~now, [&](int from, int end) {
            writeBlank(canvas, look, static_cast<std::size_t>((tile.left() + from) / samples),
                       static_cast<std::size_t>((tile.top() + row) / samples),
                       static_cast<std::size_t>((std::min(end, tile.width()) - from) / samples));
        });
        Tile::eachRun(now, [&](int from, int end) {
            const int last = std::min(end, tile.width());
            if (samples == 1) {
                writeSamples(brush, frame, shader, canvas, row, from, end);
            } else {
                shadeRow(brush, shader, row, 0, from, end);
                shadeRow(brush, shader, row + 1, 1, from, end);
                for (int column = from; column < last; column += 2)
                    writeMean(brush, frame, canvas, row, column);
            }
            if (canvas.seeThroughIds)
                writeSeeThrough(brush, frame, canvas, samples, row, from, last);
        });
    }
}

} // namespace

struct Renderer::Buffers {
    explicit Buffers(unsigned threads) : workers(threads), brushes(workers.count()) {}

    bool arrange();
    void drawTile(std::size_t index, Brush& brush) const;

    Workers workers;
    std::vector<Brush> brushes;
    Frame frame;
    Bins balls;
    Bins sticks;
    Bins lines;
    Bins dots;
    SeenTriangles seenTriangles;
    Bins triangles; ///< of those
    SeenTriangles seenThrough;
    Bins seeThrough; ///< of those
};

// Puts all things where they are on the screen, and sorts them into tiles.
bool Renderer::Buffers::arrange() {
    if (!frame.project(workers))
        return false;
    frame.nearZ = -std::numeric_limits<float>::infinity();
    frame.farZ = std::numeric_limits<float>::infinity();
    const auto sort = [this](Bins& bins, std::size_t count, const auto& extent) {
        return bins.fill(frame, count, extent, workers);
    };
    const Frame& f = frame;
    const Scene& scene = *frame.scene;
    if (!sort(balls, scene.balls.size(), [&](std::size_t i) { return ballExtent(f, i); }) ||
        !sort(sticks, scene.sticks.size(), [&](std::size_t i) { return stickExtent(f, i); }) ||
        !sort(lines, scene.lines.size(), [&](std::size_t i) { return lineExtent(f, i); }) ||
        !sort(dots, scene.dots.size(), DotExtents(f)) ||
        !seenTriangles.find(frame, workers, false) ||
        !sort(triangles, seenTriangles.size(), TriangleExtents(f, seenTriangles)) ||
        !seenThrough.find(frame, workers, true) ||
        !sort(seeThrough, seenThrough.size(), TriangleExtents(f, seenThrough)))
        return false;
    frame.nearZ = std::min(frame.nearZ, frame.front);
    frame.farZ = std::max(frame.farZ, frame.back);
    return true;
}

void Renderer::Buffers::drawTile(std::size_t index, Brush& brush) const {
    const std::size_t columns = (static_cast<std::size_t>(frame.width) + tileSide - 1) / tileSide;
    brush.tile.begin(static_cast<int>(index % columns) * tileSide,
                     static_cast<int>(index / columns) * tileSide, frame.width, frame.height);
    brush.balls.draw(brush.tile, frame, balls, index);
    drawSticks(brush.tile, frame, sticks, index, brush.order);
    brush.triangles.draw(brush.tile, frame, seenTriangles, triangles, index);
    drawLines(brush.tile, frame, lines, index, brush.order);
    brush.dots.draw(brush.tile, frame, dots, index);
    brush.isSeeThrough = !seeThrough.inTile(index).empty() || !seeThrough.large().empty();
    if (!brush.isSeeThrough)
        return;
    brush.seeThrough.beginInFrontOf(brush.tile);
    brush.triangles.draw(brush.seeThrough, frame, seenThrough, seeThrough, index);
    brush.tile.mark(brush.seeThrough.drawnRuns());
}

Renderer::Renderer(unsigned threads) : m_buffers(std::make_unique<Buffers>(threads)) {}

Renderer::~Renderer() = default;

Picture Renderer::draw(const Scene& scene, const Camera& camera, const Settings& settings,
                       const std::stop_token& stop, Picture used) {
    if (settings.width <= 0 || settings.height <= 0 || !(camera.height > 0) ||
        !std::isfinite(camera.height))
        return {};
    Buffers& buffers = *m_buffers;
    Frame& frame = buffers.frame;
    const int samples = settings.samples > 1 ? 2 : 1;
    frame.scene = &scene;
    frame.camera = camera;
    frame.stop = stop;
    frame.width = settings.width * samples;
    frame.height = settings.height * samples;
    frame.lineHalf = halfWidth(settings.lineWidth, samples);
    frame.thinHalf = halfWidth(settings.lineWidth / 2, samples);
    frame.dotHalf = halfWidth(settings.dotSize, samples);
    Picture picture = blank(std::move(used), settings);
    if (!buffers.arrange())
        return {};
    for (Brush& brush : buffers.brushes) {
        brush.surfaces.begin(frame);
        brush.seeThroughSurfaces.begin(frame);
    }
    setSeeThrough(picture, buffers.seenThrough.size() != 0);
    const Canvas canvas = {reinterpret_cast<std::uint32_t*>(picture.image.bits()),
                           static_cast<std::size_t>(picture.image.bytesPerLine()) / 4,
                           picture.ids.data(),
                           picture.depths.data(),
                           static_cast<std::size_t>(settings.width),
                           picture.seeThroughIds.empty() ? nullptr : picture.seeThroughIds.data(),
                           picture.seeThroughDepths.data()};
    const Look look = {settings.background, std::clamp(settings.depthCue, 0.0F, 1.0F)};
    const Shader shader(frame, look);
    const std::size_t tiles = buffers.balls.tiles();
    // Where the picture that is written over showed something.
    Picture::Drawn& drawn = picture.drawn;
    if (drawn.width != frame.width || drawn.height != frame.height ||
        drawn.background != look.background)
        drawn = {std::vector<Tile::Runs>(tiles, Tile::allRuns), frame.width, frame.height,
                 look.background};
    const bool isWhole = buffers.workers.run(
        tiles,
        [&](std::size_t index, std::size_t worker) {
            Brush& brush = buffers.brushes[worker];
            buffers.drawTile(index, brush);
            Tile::Runs& before = drawn.tiles[index];
            if (brush.tile.isEmpty() && before == Tile::Runs())
                return;
            if (samples == 2)
                brush.tile.touchPairs();
            writeTile(brush, frame, shader, look, samples, canvas,
                      std::exchange(before, brush.tile.drawnRuns()));
        },
        stop);
    // A tile that noticed the request itself was left unfinished.
    return isWhole && !stop.stop_requested() ? std::move(picture) : Picture();
}

} // namespace view
