#include "PictureMemory.h"

#include <utility>

namespace view {

Picture PictureMemory::take() {
    const std::lock_guard lock(m_spare->mutex);
    return std::exchange(m_spare->picture, {});
}

std::shared_ptr<const Picture> PictureMemory::share(Picture picture) {
    auto owned = std::make_unique<Picture>(std::move(picture));
    const auto giveBack = [spare = m_spare](Picture* given) noexcept {
        const std::unique_ptr<Picture> old(given);
        const std::lock_guard lock(spare->mutex);
        if (spare->isKept)
            std::swap(spare->picture, *old);
    };
    return {owned.release(), giveBack};
}

void PictureMemory::setKeeping(bool on) {
    Picture old; // freed outside of the lock
    const std::lock_guard lock(m_spare->mutex);
    m_spare->isKept = on;
    if (!on)
        std::swap(old, m_spare->picture);
}

} // namespace view
