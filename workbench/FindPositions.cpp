#include "FindPositions.h"

#include <chrono>
#include <cstring>
#include <limits>
#include <utility>

namespace workbench {

namespace {

using Point = NearSearch::Point;

bool isSame(const Point& a, const Point& b) {
    // By their bits, as NaN is no number.
    return std::memcmp(&a, &b, sizeof(Point)) == 0;
}

} // namespace

FindPositions::FindPositions(const FindValues& before, std::size_t expected)
    : m_made(std::make_shared<FindValues::Points>()), m_before(before.positions),
      m_areOthers(!m_before) {
    m_made->reserve(expected);
}

void FindPositions::take(std::span<const TAVIK::ItemLook> looks) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const TAVIK::ItemLook& look : looks) {
        const Point point = look.place.isValid ? look.place.position : Point{nan, nan, nan};
        const std::size_t i = m_made->size();
        m_made->push_back(point);
        if (m_areOthers || (i < m_before->size() && isSame(point, (*m_before)[i])))
            continue;
        m_moved.push_back(static_cast<std::uint32_t>(i));
        m_areOthers = i >= m_before->size() || m_moved.size() > NearSearch::mostMoved(i + 1) + 64;
    }
}

void FindPositions::finish(FindValues& values) {
    const bool areOthers = m_areOthers || m_before->size() != m_made->size();
    if (!areOthers && m_moved.empty())
        return;
    values.positions = std::move(m_made);
    const auto now = std::chrono::seconds(0);
    if (!areOthers && values.near.valid() && values.near.wait_for(now) == std::future_status::ready)
        values.near =
            std::async(std::launch::deferred, [before = values.near.get(), from = values.positions,
                                               moved = std::move(m_moved)] {
                return NearSearch::moved(*before, *from, moved);
            });
    else
        values.near = std::async(std::launch::deferred, [from = values.positions] {
            return std::make_shared<const NearSearch>(*from);
        });
}

} // namespace workbench
