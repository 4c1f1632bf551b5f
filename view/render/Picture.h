// What the renderer makes: a picture, and for each pixel what it shows and how far away that is.
#pragma once

#include "Scene.h"

#include <QImage>

#include <vector>

namespace view {

struct Picture {
    QImage image; ///< Format_RGB32
    /// By pixel, row by row from the upper left one, at the resolution of the image.
    std::vector<Id> ids;
    /// Distance from the camera's centre towards the viewer in Å; -infinity where nothing is seen.
    std::vector<float> depths;
};

} // namespace view
