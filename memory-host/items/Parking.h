// Items that the data do not hold now, but may again: taking them out, putting them back, and
// freeing them where they stay out.
#pragma once

#include "Holder.h"

#include <cstddef>
#include <cstdint>

namespace TAVIK {
struct GridValues;
struct SurfaceMesh;
} // namespace TAVIK

namespace memory_host {

class Step;

/// Destroys an item in the space in a way that can be taken back: records what goes, and takes it
/// out. False when memory has run out, see Step: a part of it may be gone until that is taken back.
[[nodiscard]] bool destroyRecorded(Compound& item, Step& step) noexcept;
/// Records which bonds in a new item join atoms that stand elsewhere.
[[nodiscard]] bool recordLinks(Compound& item, Step& step) noexcept;

/// Takes an item out of its composite; observers are told before.
void takeOut(Compound& item) noexcept;
/// Puts an item back where it was taken out.
void putBack(Compound& item, Holder& parent) noexcept;
/// Frees an item that was taken out, or `most` items of it, and subtracts their number from that;
/// whether all of it is freed. An item that is not is to be freed further, and nothing else.
bool freeTakenOut(Compound* item, std::size_t& most) noexcept;
/// Frees a detached item, and what is kept of it beside it.
void freeDetached(Compound* item) noexcept;

/// How many items that files are kept of are taken out now.
std::size_t originsTakenOut();

/// The marks of an empty composite itself; 0 for null.
std::uint8_t ownMarksOf(const Holder* holder);
/// Gives a composite that has become empty the marks that it had when it was.
void setOwnMarks(Holder& holder, std::uint32_t marks);

/// How much memory an item takes with all that it holds, in bytes: an estimate.
std::size_t memoryOf(const Compound& item);
std::size_t memoryOf(const TAVIK::SurfaceMesh& mesh);
std::size_t memoryOf(const TAVIK::GridValues& grid);

} // namespace memory_host
