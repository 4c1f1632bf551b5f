// The memory of pictures, which goes on to the next one.
#pragma once

#include "render/Picture.h"

#include <memory>
#include <mutex>

namespace view {

/// A picture belongs to all who show it; the last of them gives its memory back to the one that
/// draws. For one that draws, and any number of threads that show.
class PictureMemory {
public:
    /// That of a picture that nobody shows any more; an empty picture where there is none.
    Picture take();
    /// A picture for others, who may keep it longer than this. Throws std::bad_alloc.
    std::shared_ptr<const Picture> share(Picture picture);
    /// Whether memory that is given back is kept for take(), that of one picture at most; else it
    /// is freed, and so is what was kept.
    void setKeeping(bool on);

private:
    struct Spare {
        std::mutex mutex;
        Picture picture;
        bool isKept = false;
    };
    std::shared_ptr<Spare> m_spare = std::make_shared<Spare>();
};

} // namespace view
