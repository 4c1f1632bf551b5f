#include "NearSearch.h"

#include "AlongCurve.h"
#include "NearLooker.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <future>
#include <list>
#include <mutex>
#include <span>
#include <thread>

namespace workbench {

namespace {

using Words = std::vector<std::uint64_t>;

constexpr std::size_t inBlock = 64; ///< points
constexpr std::size_t inRun = 8;    ///< blocks for which centres are looked up together

/// Calls what `makeWork` makes, once for each of several threads, with the numbers 0 to below
/// `count`, until there is a stop request.
template <class MakeWork>
void shareOut(std::size_t count, const MakeWork& makeWork, const std::stop_token& stop) {
    constexpr std::size_t most = 8;         // threads
    constexpr std::size_t leastForOne = 64; // numbers
    std::atomic<std::size_t> next{0};
    const auto run = [&] {
        auto work = makeWork();
        for (std::size_t i; !stop.stop_requested() && (i = next.fetch_add(1)) < count;)
            work(i);
    };
    const std::size_t threads =
        std::min<std::size_t>({most, std::thread::hardware_concurrency(), 1 + count / leastForOne});
    std::vector<std::future<void>> helpers;
    while (helpers.size() + 1 < threads)
        helpers.push_back(std::async(std::launch::async, run));
    run();
    for (std::future<void>& helper : helpers)
        helper.get();
}

/// Of up to 64 points, at least one.
NearBlock blockOf(const std::vector<NearSearch::Point>& points,
                  std::span<const std::uint32_t> numbers) {
    NearBlock block;
    for (std::size_t i = 0; i != inBlock; ++i) {
        const NearSearch::Point& point = points[numbers[std::min(i, numbers.size() - 1)]];
        for (std::size_t axis = 0; axis != 3; ++axis)
            block.points[i / 8][axis].set(i % 8, point[axis]);
    }
    for (std::size_t eight = 0; eight != 8; ++eight)
        block.boxes[eight] = boxAround(block.points[eight]);
    block.box = block.boxes[0];
    for (const Box& box : block.boxes)
        block.box.add(box);
    return block;
}

} // namespace

struct NearSearch::Prepared {
    std::vector<std::uint32_t> numbers; ///< of the finite points, along the curve
    std::vector<NearBlock> blocks;      ///< of each 64 of them

    std::size_t runCount() const { return (blocks.size() + inRun - 1) / inRun; }
    std::size_t runEnd(std::size_t run) const { return std::min((run + 1) * inRun, blocks.size()); }
    std::span<const std::uint32_t> numbersOf(std::size_t block) const {
        const std::size_t first = block * inBlock;
        return std::span(numbers).subspan(first, std::min(inBlock, numbers.size() - first));
    }
    /// A bit for each point of a block.
    std::uint64_t allOf(std::size_t block) const {
        return ~std::uint64_t{0} >> (inBlock - numbersOf(block).size());
    }
    /// A bit for each point, whether it is in `from`; a word for each block.
    Words along(const Bits& from, const std::stop_token& stop) const {
        Words words(blocks.size());
        const auto look = [&](std::size_t run) {
            for (std::size_t block = run * inRun; block != runEnd(run); ++block) {
                std::uint64_t word = 0;
                for (const std::uint32_t number : numbersOf(block))
                    word = word >> 1 | std::uint64_t{from.has(number)} << 63;
                words[block] = word >> (inBlock - numbersOf(block).size());
            }
        };
        shareOut(
            runCount(), [&] { return look; }, stop);
        return words;
    }
    NearCentres centresOf(const Words& words) const {
        std::size_t count = 0;
        for (const std::uint64_t word : words)
            count += static_cast<std::size_t>(std::popcount(word));
        NearCentres centres(count);
        for (std::size_t block = 0; block != words.size(); ++block)
            forEachBit(words[block], [&](std::size_t i) {
                const EightPoints& points = blocks[block].points[i / 8];
                centres.add({points[0].get(i % 8), points[1].get(i % 8), points[2].get(i % 8)});
            });
        if (!centres.isEmpty())
            centres.finish();
        return centres;
    }
    /// Looks at the points of a run that are not in `from`, and adds those that are near.
    void look(std::size_t run, const Words& from, NearLooker& looker, Bits& near) const {
        Box box = blocks[run * inRun].box;
        bool isWanted = false;
        for (std::size_t block = run * inRun; block != runEnd(run); ++block) {
            box.add(blocks[block].box);
            isWanted |= from[block] != allOf(block);
        }
        const bool isDecided = isWanted && !looker.begin(box);
        for (std::size_t block = run * inRun; isWanted && block != runEnd(run); ++block) {
            const std::uint64_t wanted = allOf(block) & ~from[block];
            forEachBit(isDecided || wanted == 0 ? wanted : looker.look(blocks[block], wanted),
                       [&, all = numbersOf(block)](std::size_t i) { near.add(all[i]); });
        }
    }
};

NearSearch::NearSearch(const std::vector<Point>& points) {
    auto prepared = std::make_unique<Prepared>();
    prepared->numbers = alongCurve(points);
    const std::size_t count = prepared->numbers.size();
    prepared->blocks.reserve(count / inBlock + 1);
    for (std::size_t i = 0; i < count; i += inBlock)
        prepared->blocks.push_back(
            blockOf(points, {&prepared->numbers[i], std::min(inBlock, count - i)}));
    m_prepared = std::move(prepared);
}

NearSearch::~NearSearch() = default;

Bits NearSearch::near(const Bits& from, double radius, const std::stop_token& stop) const {
    const Words words = m_prepared->along(from, stop);
    Bits near = from;
    const NearCentres centres = m_prepared->centresOf(words);
    if (centres.isEmpty() || stop.stop_requested())
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
    shareOut(m_prepared->runCount(), makeWork, stop);
    for (const Bits& part : parts)
        near |= part;
    return near;
}

} // namespace workbench
