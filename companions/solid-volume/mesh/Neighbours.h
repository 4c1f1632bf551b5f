// Which balls overlap a ball.
#pragma once

#include "Mesh.h"
#include "Vectors.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace solid {

class Neighbours {
public:
    /// The balls stay where they are as long as this lives.
    explicit Neighbours(std::span<const Ball> balls);

    /// Takes the place of what `found` held: all others that overlap a ball, ascending.
    void find(std::uint32_t ball, std::vector<std::uint32_t>& found) const;

private:
    struct Placed {
        std::uint64_t cell;
        std::uint32_t ball;
    };

    std::span<const Ball> m_balls;
    double m_side =
        1; // of a cell: no two balls that overlap are farther apart than in the next one
    std::vector<Placed> m_placed; // sorted
};

} // namespace solid
