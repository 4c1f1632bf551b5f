#include "CentreGrid.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

// Few cells are fast to fill, and long ones fast to look up. Where one would hold more centres than
// these, shorter and more cells are tried, of at most 17 MB, and then the k-d tree is used.
struct Measure {
    std::size_t cellsPerCentre;
    double length; // of a cell at least, in radii
};
constexpr std::array<Measure, 2> measures = {{{4, 2.0}, {512, 1.0}}};
constexpr std::size_t fewCells = 4096;
constexpr std::size_t mostCells = std::size_t{1} << 22;
constexpr std::uint32_t mostInCell = 128;

// Points of a run, and cells around one that is not divided: a single point has at most 27.
constexpr std::size_t runLength = 32;
constexpr std::size_t mostInBlock = 64;

constexpr std::size_t laneCount = sizeof(Lanes) / sizeof(float);
constexpr float infinity = std::numeric_limits<float>::infinity();

Lanes lanesAt(const float* values) {
    Lanes lanes;
    std::memcpy(&lanes, values, sizeof lanes);
    return lanes;
}

Lanes lanesOf(float value) {
    return Lanes{value, value, value, value};
}

// Where either is NaN, the first.
Lanes smaller(Lanes a, Lanes b) {
    return b < a ? b : a;
}
Lanes larger(Lanes a, Lanes b) {
    return a < b ? b : a;
}

// Some points in lanes, the box around them, and which of them are found to be near.
class PointRun {
public:
    explicit PointRun(std::span<const Point> points)
        : m_count(points.size()), m_lanes((points.size() + laneCount - 1) / laneCount) {
        for (std::size_t i = 0; i != m_lanes; ++i)
            takeLanes(points, i);
        for (const std::size_t axis : {0, 1, 2}) {
            Lanes low = lanesOf(infinity);
            Lanes high = -low;
            for (std::size_t i = 0; i != m_lanes; ++i) {
                low = smaller(low, m_points[axis][i]);
                high = larger(high, m_points[axis][i]);
            }
            m_low[axis] = std::min(std::min(low[0], low[1]), std::min(low[2], low[3]));
            m_high[axis] = std::max(std::max(high[0], high[1]), std::max(high[2], high[3]));
        }
    }

    /// The corners of the box; NaN is left out.
    const Point& low() const { return m_low; }
    const Point& high() const { return m_high; }

    /// areWithin() of a centre and any place in the box: rounding keeps the order of differences,
    /// squares and sums, so that this is true where a point is within the radius.
    LaneAnswers areNearBox(float squaredLimit, Lanes x, Lanes y, Lanes z) const {
        const std::array<Lanes, 3> centres = {x, y, z};
        Lanes sum{};
        for (const std::size_t axis : {0, 1, 2}) {
            const Lanes outside =
                larger(Lanes{}, larger(m_low[axis] - centres[axis], centres[axis] - m_high[axis]));
            sum += outside * outside;
        }
        return sum <= squaredLimit;
    }

    void test(float squaredLimit, const Point& centre) {
        for (std::size_t i = 0; i != m_lanes; ++i)
            m_found[i] |=
                areWithin(squaredLimit, centre, m_points[0][i], m_points[1][i], m_points[2][i]);
    }
    bool isEveryFound() const {
        bool all = true;
        for (std::size_t i = 0; i != m_lanes; ++i)
            all = all && (m_found[i][0] & m_found[i][1] & m_found[i][2] & m_found[i][3]);
        return all;
    }
    void tell(std::uint8_t* near) const {
        using Bytes [[gnu::vector_size(laneCount)]] = std::uint8_t;
        std::array<Bytes, mostLanes> answers;
        for (std::size_t i = 0; i != m_lanes; ++i)
            answers[i] = __builtin_convertvector(m_found[i] & 1, Bytes);
        std::memcpy(near, answers.data(), m_count);
    }

private:
    static constexpr std::size_t mostLanes = runLength / laneCount;

    // Four points, coordinate by coordinate. Lanes that are left over hold the last point again.
    void takeLanes(std::span<const Point> points, std::size_t at) {
        std::array<Point, laneCount> four;
        const std::size_t first = at * laneCount;
        if (first + laneCount <= points.size())
            std::memcpy(&four, &points[first], sizeof four);
        else
            for (std::size_t i = 0; i != laneCount; ++i)
                four[i] = points[std::min(first + i, points.size() - 1)];
        const Lanes a = lanesAt(four[0].data());     // x0 y0 z0 x1
        const Lanes b = lanesAt(four[0].data() + 4); // y1 z1 x2 y2
        const Lanes c = lanesAt(four[0].data() + 8); // z2 x3 y3 z3
        m_points[0][at] =
            __builtin_shufflevector(a, __builtin_shufflevector(b, c, 2, 5, 2, 5), 0, 3, 4, 5);
        m_points[1][at] =
            __builtin_shufflevector(__builtin_shufflevector(a, b, 1, 4, 1, 4),
                                    __builtin_shufflevector(b, c, 3, 6, 3, 6), 0, 1, 4, 5);
        m_points[2][at] =
            __builtin_shufflevector(__builtin_shufflevector(a, b, 2, 5, 2, 5), c, 0, 1, 4, 7);
    }

    std::size_t m_count;
    std::size_t m_lanes;
    std::array<std::array<Lanes, mostLanes>, 3> m_points;
    std::array<LaneAnswers, mostLanes> m_found{};
    Point m_low;
    Point m_high;
};

} // namespace

// The cells from one to another, both included, along each axis.
struct CentreGrid::Block {
    std::array<Cell, 3> from{};
    std::array<Cell, 3> to{};
    std::size_t count = 0;
};

std::optional<CentreGrid> CentreGrid::of(const std::vector<Point>& centres, const Reach& reach) {
    for (const Measure& measure : measures) {
        const std::size_t cells = centres.size() * measure.cellsPerCentre + fewCells;
        CentreGrid grid(centres, reach, reach.distance * measure.length,
                        std::min(cells, mostCells));
        if (grid.fill(centres))
            return grid;
    }
    return std::nullopt;
}

CentreGrid::CentreGrid(const std::vector<Point>& centres, const Reach& reach, double length,
                       std::size_t most)
    : m_squaredLimit(reach.squaredLimit), m_distance(reach.distance) {
    const auto [low, high] = boundsOf(centres);
    double total = 0.0;
    for (bool fits = false; !fits; length *= 1.25) {
        m_perLength = 1.0 / length;
        total = 1.0;
        for (const std::size_t axis : {0, 1, 2}) {
            m_low[axis] = static_cast<double>(low[axis]);
            // As in cellOf(), to the bit.
            m_cells[axis] =
                std::floor((static_cast<double>(high[axis]) - m_low[axis]) * m_perLength) + 1.0;
            total *= m_cells[axis];
        }
        fits = total <= static_cast<double>(most);
    }
    m_stride = {1, static_cast<Cell>(m_cells[0]), static_cast<Cell>(m_cells[0] * m_cells[1])};
    m_first.assign(static_cast<std::size_t>(total) + 1, 0);
}

CentreGrid::Cell CentreGrid::cellOf(const Point& centre) const {
    Cell cell = 0;
    for (const std::size_t axis : {0, 1, 2})
        cell += m_stride[axis] *
                static_cast<Cell>((static_cast<double>(centre[axis]) - m_low[axis]) * m_perLength);
    return cell;
}

bool CentreGrid::fill(const std::vector<Point>& centres) {
    std::vector<Cell> cells;
    cells.reserve(centres.size());
    for (const Point& centre : centres) {
        cells.push_back(cellOf(centre));
        if (++m_first[cells.back()] > mostInCell)
            return false;
    }
    // Counting sort: prefix sums turn the counts into ends of cells, which are filled backwards.
    std::uint32_t sum = 0;
    for (std::uint32_t& first : m_first)
        first = sum += first;
    // Padding, because a test of four centres at once may read beyond the last.
    for (std::vector<float>& values : m_coordinates)
        values.resize(centres.size() + laneCount, infinity);
    for (std::size_t i = centres.size(); i-- > 0;) {
        const std::uint32_t place = --m_first[cells[i]];
        for (const std::size_t axis : {0, 1, 2})
            m_coordinates[axis][place] = centres[i][axis];
    }
    return true;
}

CentreGrid::Block CentreGrid::blockAround(const Point& low, const Point& high) const {
    Block block;
    std::size_t count = 1;
    for (const std::size_t axis : {0, 1, 2}) {
        const double from =
            (static_cast<double>(low[axis]) - m_distance - m_low[axis]) * m_perLength;
        const double to =
            (static_cast<double>(high[axis]) + m_distance - m_low[axis]) * m_perLength;
        const double last = m_cells[axis] - 1.0;
        if (!(from < last + 1.0 && to >= 0.0))
            return block;
        block.from[axis] = static_cast<Cell>(std::max(from, 0.0));
        block.to[axis] = static_cast<Cell>(std::min(to, last));
        count *= block.to[axis] - block.from[axis] + 1;
    }
    block.count = count;
    return block;
}

void CentreGrid::searchRun(std::span<const Point> points, std::uint8_t* near) const {
    PointRun run(points);
    const Block block = blockAround(run.low(), run.high());
    if (block.count == 0)
        return;
    if (block.count > mostInBlock && points.size() > 1) {
        const std::size_t half = points.size() / 2;
        searchRun(points.first(half), near);
        searchRun(points.subspan(half), near + half);
        return;
    }
    // The centres near the box, collected without a branch.
    constexpr std::size_t room = 32;
    std::array<std::uint32_t, room + laneCount> close;
    std::size_t count = 0;
    const auto testClose = [&] {
        for (std::size_t k = 0; k != count; ++k)
            run.test(m_squaredLimit, {m_coordinates[0][close[k]], m_coordinates[1][close[k]],
                                      m_coordinates[2][close[k]]});
        count = 0;
    };
    for (Cell z = block.from[2]; z <= block.to[2]; ++z)
        for (Cell y = block.from[1]; y <= block.to[1]; ++y) {
            const Cell row = z * m_stride[2] + y * m_stride[1];
            const std::uint32_t end = m_first[row + block.to[0] + 1];
            // What follows the last of a row are other centres: to test them does no harm.
            for (std::uint32_t i = m_first[row + block.from[0]]; i < end; i += laneCount) {
                const LaneAnswers isClose =
                    run.areNearBox(m_squaredLimit, lanesAt(&m_coordinates[0][i]),
                                   lanesAt(&m_coordinates[1][i]), lanesAt(&m_coordinates[2][i]));
                for (std::uint32_t lane = 0; lane != laneCount; ++lane) {
                    close[count] = i + lane;
                    count += static_cast<std::size_t>(isClose[lane] & 1);
                }
                if (count > room) {
                    testClose();
                    if (run.isEveryFound()) {
                        run.tell(near);
                        return;
                    }
                }
            }
        }
    testClose();
    run.tell(near);
}

void CentreGrid::search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const {
    for (std::size_t first = 0; first < points.size(); first += runLength) {
        const std::size_t count = std::min(runLength, points.size() - first);
        searchRun({points.data() + first, count}, near.data() + first);
    }
}
