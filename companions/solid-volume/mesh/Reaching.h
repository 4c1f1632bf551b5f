// Which of many round things reach into a small box, four at a time.
#pragma once

#include "Lanes.h"
#include "Vectors.h"

#include <bit>
#include <cstdint>
#include <vector>

namespace solid {

/// A box between two corners.
struct Box {
    Point low;
    Point high;
};

class Reaching {
public:
    /// Something by its number, that may matter within `reach` of `centre`, and surely does not
    /// beyond; Å.
    void add(const Vector& centre, double reach, std::uint32_t number) {
        const std::size_t lane = m_count++ % lanes;
        if (lane == 0)
            m_fours.push_back({});
        Four& four = m_fours.back();
        four.x[lane] = static_cast<float>(centre.x);
        four.y[lane] = static_cast<float>(centre.y);
        four.z[lane] = static_cast<float>(centre.z);
        // What rounding hides does not matter, but what it adds does not either.
        const auto farther = static_cast<float>(reach + 1e-4);
        four.square[lane] = farther * farther;
        four.number[lane] = number;
    }

    /// Calls visit(number) for all that may reach into a box, and some more, as they were added.
    template <class Visit> void forReaching(const Box& box, Visit&& visit) const {
        for (const Four& four : m_fours) {
            const Floats x = outside(load(four.x), box.low[0], box.high[0]);
            const Floats y = outside(load(four.y), box.low[1], box.high[1]);
            const Floats z = outside(load(four.z), box.low[2], box.high[2]);
            // Unused lanes reach nowhere.
            unsigned near = bitsOf(x * x + y * y + z * z < load(four.square));
            for (; near != 0; near &= near - 1)
                visit(four.number[static_cast<std::size_t>(std::countr_zero(near))]);
        }
    }

private:
    struct Four {
        Lanes x, y, z, square;
        std::array<std::uint32_t, lanes> number;
    };

    static Floats outside(Floats at, float low, float high) {
        return greater(greater(all(low) - at, at - all(high)), all(0));
    }

    std::vector<Four> m_fours;
    std::size_t m_count = 0;
};

} // namespace solid
