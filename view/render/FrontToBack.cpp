#include "FrontToBack.h"

#include <utility>

namespace view {

namespace {

constexpr std::size_t thingsABucket = 16;
constexpr std::size_t mostBuckets = 1024;

std::pair<float, float> nearestAndRange(const std::vector<float>& fronts) {
    Floats least = all(fronts[0]);
    Floats greatest = least;
    std::size_t i = 0;
    for (; i + 4 <= fronts.size(); i += 4) {
        const Floats four = load(fronts.data() + i);
        least = smaller(four, least);
        greatest = larger(four, greatest);
    }
    for (; i < fronts.size(); ++i) {
        least = smaller(all(fronts[i]), least);
        greatest = larger(all(fronts[i]), greatest);
    }
    const float nearest = std::max({greatest[0], greatest[1], greatest[2], greatest[3]});
    return {nearest, nearest - std::min({least[0], least[1], least[2], least[3]})};
}

} // namespace

// One pass of a bucket sort: the exact order decides nothing but how much is drawn in vain.
void FrontToBack::sort() {
    const std::size_t count = fronts.size();
    if (count == 0)
        return m_starts.clear();
    const std::size_t buckets = std::min(mostBuckets, count / thingsABucket + 1);
    m_starts.assign(buckets + 1, 0);
    m_order.resize(count);
    m_buckets.resize(count);
    const auto [nearest, range] = nearestAndRange(fronts);
    const float last = static_cast<float>(buckets - 1);
    const float factor = range > 0 ? static_cast<float>(buckets) / range : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float place = (nearest - fronts[i]) * factor;
        m_buckets[i] = static_cast<std::uint16_t>(place < last ? place : last);
        ++m_starts[m_buckets[i]];
    }
    std::uint32_t start = 0;
    for (std::uint32_t& bucket : m_starts)
        start += std::exchange(bucket, start);
    for (std::size_t i = 0; i < count; ++i)
        m_order[m_starts[m_buckets[i]]++] = static_cast<std::uint32_t>(i);
    // Each start has moved to the next bucket's.
    std::copy_backward(m_starts.begin(), m_starts.end() - 1, m_starts.end());
    m_starts[0] = 0;
}

} // namespace view
