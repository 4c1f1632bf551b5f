// Draws scenes on the processor, in tiles, on all cores. The pixels depend on the scene, the camera
// and the settings alone: they are the same for any number of threads and on every machine.
#pragma once

#include "Camera.h"
#include "Picture.h"
#include "Scene.h"

#include <memory>
#include <stop_token>

namespace view {

struct Settings {
    int width = 0;   ///< pixels
    int height = 0;  ///< pixels
    int samples = 1; ///< 2: a pixel has the mean colour of 2 x 2 samples
    Colour background = 0;
    /// How much of the background's colour the farthest thing between the front and the back plane
    /// takes on, 0 to 1; the nearest one keeps its own.
    float depthCue = 0.5F;
    float lineWidth = 2; ///< pixels; at least 1 is drawn
    float dotSize = 3;   ///< diameter in pixels; at least 1 is drawn
};

/// Keeps its threads and its memory from one picture to the next. One picture at a time.
class Renderer {
public:
    /// With so many threads, the calling one among them; 0 for one a processor.
    explicit Renderer(unsigned threads = 0);
    ~Renderer();

    /// Draws the scene. What the front plane of the camera cuts open is solid: the cut shows flat,
    /// in the colour and with the id of what was cut. A mesh is just left out in front of it. With
    /// 2 x 2 samples, id and depth of a pixel are those of its nearest sample.
    ///
    /// Of the see-through meshes the surface that is nearest in a sample is blended over what is
    /// opaque. The ids tell what is seen through it, as long as that is anything, so that it can be
    /// picked; the surface's own are there, too.
    ///
    /// Of things that are equally near in a sample the one that comes first is seen: balls, sticks,
    /// lines, dots, meshes, each in their order. A ball without a positive radius is left out, and
    /// so is what is not finite. However small, a ball is seen at its centre.
    ///
    /// The picture is null after a stop request, and when the settings have no size or the camera
    /// no height. `used` is a picture that is not needed any more, as a renderer made it; its
    /// memory is written over, where that changes something. Throws std::bad_alloc.
    Picture draw(const Scene& scene, const Camera& camera, const Settings& settings,
                 const std::stop_token& stop = {}, Picture used = {});

private:
    struct Buffers;
    std::unique_ptr<Buffers> m_buffers;
};

} // namespace view
