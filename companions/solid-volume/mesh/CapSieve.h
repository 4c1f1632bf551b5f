// Which of the balls around a sphere decide about what they leave free of it.
#pragma once

#include "Mesh.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace solid {

/// Divides the sphere into patches, ever finer ones where it is not decided yet which ball covers
/// all of a patch, so that of n balls around each other not all pairs need to be looked at.
class CapSieve {
public:
    /// Forgets all balls, and begins with the sphere of another one.
    void clear(const Ball& own);
    /// Those that cover most come best first.
    void add(const Ball& other, std::uint32_t number);

    /// False if the balls surely cover all of the sphere.
    bool sift();
    /// After sift(), by the numbers as they were added: balls that leave no more of the sphere free
    /// than all together, and those of them whose circles on the sphere may be free somewhere.
    struct Found {
        std::vector<std::uint32_t> covering;
        std::vector<std::uint32_t> touching;
    };
    /// Takes the place of what `found` held.
    void find(Found& found) const;

private:
    /// The directions within an angle from one: what of the sphere a ball covers, or what of it is
    /// looked at.
    struct Patch {
        float x, y, z;
        float cosine; ///< of the angle
        float sine;
    };
    /// A square on a face of a cube from -1 to 1.
    struct Field {
        std::size_t face;
        double u;
        double v;
        double side;
    };

    enum class Matters : char { Not, AsCover, AsEdge };

    static Patch patchOf(const Field& field);
    bool isOpen(const Field& field, std::size_t level);

    Ball m_own;
    bool m_isCovered = false;
    std::vector<Patch> m_caps;
    std::vector<std::uint32_t> m_numbers;
    std::vector<Matters> m_matters;
    /// Of the patch that is looked at on each level, the caps that cover some of it.
    std::vector<std::vector<std::uint32_t>> m_partial;
};

} // namespace solid
