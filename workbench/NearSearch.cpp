#include "NearSearch.h"

#include "AlongCurve.h"
#include "NearLooker.h"
#include "ShareOut.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <list>
#include <mutex>
#include <span>
#include <utility>

namespace workbench {

namespace {

using Points = std::vector<NearSearch::Point>;
using Words = std::vector<std::uint64_t>;

constexpr std::size_t inBlock = 64;       ///< points
constexpr std::size_t inRun = 8;          ///< blocks for which centres are looked up together
constexpr std::size_t leastRuns = 64;     ///< for a thread of its own
constexpr std::size_t leavesAtOnce = 512; ///< that are set by one thread
constexpr std::size_t leastPieces = 8;    ///< of so many leaves, for a thread of its own

void setPoint(NearBlock& block, std::size_t i, const NearSearch::Point& point) {
    for (std::size_t axis = 0; axis != 3; ++axis)
        block.points[i / 8][axis].set(i % 8, point[axis]);
}

void setBoxes(NearBlock& block) {
    for (std::size_t eight = 0; eight != 8; ++eight)
        block.boxes[eight] = boxAround(block.points[eight]);
    block.box = block.boxes[0];
    for (const Box& box : block.boxes)
        block.box.add(box);
}

/// Puts up to 64 points, at least one, into a block.
void fill(NearBlock& block, const Points& points, std::span<const std::uint32_t> numbers) {
    for (std::size_t i = 0; i != inBlock; ++i)
        setPoint(block, i, points[numbers[std::min(i, numbers.size() - 1)]]);
    setBoxes(block);
}

bool isFinite(const NearSearch::Point& point) {
    return std::all_of(point.begin(), point.end(), [](float x) { return std::isfinite(x); });
}

} // namespace

struct NearSearch::Prepared {
    /// Of the finite points, along the curve; where some were moved since, as it was before.
    std::shared_ptr<const std::vector<std::uint32_t>> numbers;
    /// Of each 64 of them a block, all of them in one piece of memory. Each run has its part of it,
    /// but those in which a point was moved since, which have memory of their own.
    std::vector<std::shared_ptr<const NearBlock[]>> runs;
    std::size_t movedSince = 0; ///< points

    explicit Prepared(const Points& points)
        : numbers(std::make_shared<const std::vector<std::uint32_t>>(alongCurve(points))),
          runs((blockCount() + inRun - 1) / inRun) {
        const std::shared_ptr<NearBlock[]> blocks =
            std::make_shared_for_overwrite<NearBlock[]>(blockCount());
        const auto make = [&](std::size_t run) {
            for (std::size_t block = run * inRun; block != runEnd(run); ++block)
                fill(blocks[block], points, numbersOf(block));
            runs[run] = {blocks, &blocks[run * inRun]};
        };
        shareOut(runs.size(), leastRuns, [&] { return make; });
    }
    Prepared(const Prepared&) = default;
    Prepared& operator=(const Prepared&) = delete;

    std::size_t blockCount() const { return (numbers->size() + inBlock - 1) / inBlock; }
    const NearBlock& block(std::size_t number) const {
        return runs[number / inRun][number % inRun];
    }
    std::size_t runEnd(std::size_t run) const { return std::min((run + 1) * inRun, blockCount()); }
    std::span<const std::uint32_t> numbersOf(std::size_t block) const {
        const std::size_t first = block * inBlock;
        return std::span(*numbers).subspan(first, std::min(inBlock, numbers->size() - first));
    }
    /// A bit for each point of a block.
    std::uint64_t allOf(std::size_t block) const {
        return ~std::uint64_t{0} >> (inBlock - numbersOf(block).size());
    }

    /// Puts points to where they are now; returns how many of these there are.
    std::size_t move(const Points& points, const Bits& moved) {
        std::size_t count = 0;
        std::shared_ptr<NearBlock[]> own; // of one run, not shared yet
        for (std::size_t place = 0; place != numbers->size(); ++place) {
            const std::uint32_t number = (*numbers)[place];
            if (!moved.has(number))
                continue;
            ++count;
            const std::size_t block = place / inBlock;
            std::shared_ptr<const NearBlock[]>& run = runs[block / inRun];
            if (run != own) {
                own = std::make_shared_for_overwrite<NearBlock[]>(inRun);
                std::copy_n(run.get(), runEnd(block / inRun) - block / inRun * inRun, own.get());
                run = own;
            }
            fill(own[static_cast<std::ptrdiff_t>(block % inRun)], points, numbersOf(block));
        }
        return count;
    }

    /// A bit for each point, whether it is in `from`; a word for each block.
    Words along(const Bits& from, const std::stop_token& stop) const {
        Words words(blockCount());
        const auto look = [&](std::size_t run) {
            for (std::size_t block = run * inRun; block != runEnd(run); ++block) {
                std::uint64_t word = 0;
                for (const std::uint32_t number : numbersOf(block))
                    word = word >> 1 | std::uint64_t{from.has(number)} << 63;
                words[block] = word >> (inBlock - numbersOf(block).size());
            }
        };
        shareOut(
            runs.size(), leastRuns, [&] { return look; }, stop);
        return words;
    }

    NearCentres centresOf(const Words& words, const std::stop_token& stop) const {
        // How many there are before each block, and in all.
        std::vector<std::size_t> before(words.size() + 1);
        for (std::size_t block = 0; block != words.size(); ++block)
            before[block + 1] =
                before[block] + static_cast<std::size_t>(std::popcount(words[block]));
        NearCentres centres((before.back() + 7) / 8);
        const auto set = [&](std::size_t piece) {
            setLeaves(centres, words, before, piece * leavesAtOnce);
        };
        const std::size_t pieces = (centres.leafCount() + leavesAtOnce - 1) / leavesAtOnce;
        shareOut(
            pieces, leastPieces, [&] { return set; }, stop);
        if (centres.leafCount() != 0)
            centres.finish();
        return centres;
    }
    /// Sets some leaves from the one with that number on.
    void setLeaves(NearCentres& centres, const Words& words, const std::vector<std::size_t>& before,
                   std::size_t leaf) const {
        const std::size_t end = std::min(leaf + leavesAtOnce, centres.leafCount());
        auto block = static_cast<std::size_t>(
            std::upper_bound(before.begin(), before.end(), leaf * 8) - before.begin() - 1);
        std::size_t skipped = leaf * 8 - before[block];
        EightPoints points;
        std::size_t count = 0; // of this leaf
        for (; leaf != end && block != words.size(); ++block) {
            std::uint64_t bits = words[block];
            for (; skipped != 0; --skipped)
                bits &= bits - 1;
            for (; bits != 0 && leaf != end; bits &= bits - 1) {
                const auto i = static_cast<std::size_t>(std::countr_zero(bits));
                const EightPoints& from = this->block(block).points[i / 8];
                for (std::size_t axis = 0; axis != 3; ++axis) {
                    const float x = from[axis].get(i % 8);
                    if (count == 0)
                        points[axis].lanes.fill(all(x));
                    else
                        points[axis].set(count, x);
                }
                if (++count == 8) {
                    centres.setLeaf(leaf++, points);
                    count = 0;
                }
            }
        }
        if (count != 0)
            centres.setLeaf(leaf, points);
    }

    /// Looks at the points of a run that are not in `from`, and adds those that are near.
    void look(std::size_t run, const Words& from, NearLooker& looker, Bits& near) const {
        Box box = block(run * inRun).box;
        bool isWanted = false;
        for (std::size_t block = run * inRun; block != runEnd(run); ++block) {
            box.add(this->block(block).box);
            isWanted |= from[block] != allOf(block);
        }
        const bool isDecided = isWanted && !looker.begin(box);
        for (std::size_t block = run * inRun; isWanted && block != runEnd(run); ++block) {
            const std::uint64_t wanted = allOf(block) & ~from[block];
            forEachBit(isDecided || wanted == 0 ? wanted : looker.look(this->block(block), wanted),
                       [&, all = numbersOf(block)](std::size_t i) { near.add(all[i]); });
        }
    }
};

NearSearch::NearSearch(const Points& points) : NearSearch(std::make_unique<Prepared>(points)) {}

NearSearch::NearSearch(std::unique_ptr<const Prepared> prepared)
    : m_prepared(std::move(prepared)) {}

NearSearch::~NearSearch() = default;

std::shared_ptr<const NearSearch> NearSearch::moved(const NearSearch& before, const Points& points,
                                                    std::span<const std::uint32_t> moved) {
    Bits numbers(points.size());
    bool areFinite = true;
    for (const std::uint32_t number : moved) {
        numbers.add(number);
        areFinite = areFinite && isFinite(points[number]);
    }
    auto prepared = std::make_unique<Prepared>(*before.m_prepared);
    prepared->movedSince += moved.size();
    // One that was not finite before stands in no block.
    if (!areFinite || prepared->movedSince > mostMoved(points.size()) ||
        prepared->move(points, numbers) != moved.size())
        return std::make_shared<const NearSearch>(points);
    return std::shared_ptr<const NearSearch>(new NearSearch(std::move(prepared)));
}

Bits NearSearch::near(const Bits& from, double radius, const std::stop_token& stop) const {
    const Words words = m_prepared->along(from, stop);
    Bits near = from;
    const NearCentres centres = m_prepared->centresOf(words, stop);
    if (centres.leafCount() == 0 || stop.stop_requested())
        return near;
    std::mutex mutex;
    std::list<Bits> parts; // a thread's own
    const auto makeWork = [&] {
        const std::lock_guard lock(mutex);
        Bits& part = parts.emplace_back(from.size());
        return [&, looker = NearLooker(centres, radius)](std::size_t run) mutable {
            m_prepared->look(run, words, looker, part);
        };
    };
    shareOut(m_prepared->runs.size(), leastRuns, makeWork, stop);
    for (const Bits& part : parts)
        near |= part;
    return near;
}

} // namespace workbench
