#include "NearSearch.h"

#include "AlongCurve.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <future>
#include <limits>
#include <thread>
#include <utility>

namespace workbench {

namespace {

using Point = NearSearch::Point;

constexpr std::size_t fanOut = 8;   ///< points of a leaf, and nodes below a node
constexpr std::size_t inBlock = 64; ///< points that are looked at together

/// Three coordinates and a zero, which the compiler works on at once.
using Lanes = float __attribute__((vector_size(4 * sizeof(float))));

Lanes lanesOf(const Point& point) {
    return Lanes{point[0], point[1], point[2], 0.0F};
}
Lanes lesser(Lanes a, Lanes b) {
    return a < b ? a : b;
}
Lanes greater(Lanes a, Lanes b) {
    return a < b ? b : a;
}
float squareOf(Lanes a) {
    a *= a;
    return a[0] + a[1] + a[2];
}

struct Box {
    Lanes low;
    Lanes high;

    explicit Box(Lanes point) : low(point), high(point) {}
    explicit Box(const Point& point) : Box(lanesOf(point)) {}

    void add(Lanes point) {
        low = lesser(low, point);
        high = greater(high, point);
    }
    void add(const Box& other) {
        low = lesser(low, other.low);
        high = greater(high, other.high);
    }
};

/// The square of the distance between the closest places of two boxes.
float leastSquare(const Box& a, const Box& b) {
    return squareOf(greater(greater(a.low - b.high, b.low - a.high), Lanes{}));
}
/// The same of the places that are farthest from each other.
float greatestSquare(const Box& a, const Box& b) {
    return squareOf(greater(a.high - b.low, b.high - a.low));
}

/// Squares of distances are taken in single precision first. Only those around the radius's are
/// taken again, in double precision.
struct Limits {
    double square;
    float surelyIn;
    float surelyOut;

    explicit Limits(double radius)
        : square(radius * radius), surelyIn(static_cast<float>(square * 0.99999 - 1e-30)),
          surelyOut(static_cast<float>(square * 1.00001 + 1e-30)) {}
};

/// The centres of a search: leaves of eight each, and boxes around leaves, around eight of these
/// boxes, and so on.
class Centres {
public:
    struct Leaf {
        std::array<float, fanOut> x, y, z; ///< the last one several times where there are less
    };
    struct Node {
        std::uint32_t level; ///< 0: the box of a leaf
        std::uint32_t number;
    };

    void add(const Point& point) {
        const std::size_t at = m_count++ % fanOut;
        if (at == 0) {
            m_leaves.emplace_back();
            m_levels.front().emplace_back(point);
        }
        Leaf& leaf = m_leaves.back();
        std::fill(leaf.x.begin() + static_cast<std::ptrdiff_t>(at), leaf.x.end(), point[0]);
        std::fill(leaf.y.begin() + static_cast<std::ptrdiff_t>(at), leaf.y.end(), point[1]);
        std::fill(leaf.z.begin() + static_cast<std::ptrdiff_t>(at), leaf.z.end(), point[2]);
        m_levels.front().back().add(lanesOf(point));
    }
    /// After the last point.
    void finish() {
        while (m_levels.back().size() > 1) {
            const std::vector<Box>& below = m_levels.back();
            std::vector<Box> above;
            above.reserve(below.size() / fanOut + 1);
            for (std::size_t i = 0; i != below.size(); ++i) {
                if (i % fanOut == 0)
                    above.push_back(below[i]);
                else
                    above.back().add(below[i]);
            }
            m_levels.push_back(std::move(above));
        }
    }

    bool isEmpty() const { return m_count == 0; }
    const Leaf& leaf(std::uint32_t number) const { return m_leaves[number]; }
    const Box& box(Node node) const { return m_levels[node.level][node.number]; }
    Node top() const { return {static_cast<std::uint32_t>(m_levels.size() - 1), 0}; }
    std::uint32_t end(std::uint32_t level) const {
        return static_cast<std::uint32_t>(m_levels[level].size());
    }

private:
    std::size_t m_count = 0;
    std::vector<Leaf> m_leaves;
    std::vector<std::vector<Box>> m_levels = std::vector<std::vector<Box>>(1);
};

/// Looks which of some points are near centres; one for each thread.
class Looker {
public:
    Looker(const Centres& centres, double radius) : m_centres(centres), m_limits(radius) {}

    /// Which of `wanted`, a bit for each of 64 points, are near a centre. `eights` are the boxes of
    /// each eight of them.
    std::uint64_t look(const Point* points, const Box& box, const Box* eights,
                       std::uint64_t wanted) {
        if (!gather(box))
            return wanted;
        std::uint64_t found = 0;
        if (m_leaves.empty())
            return found;
        for (std::size_t first = 0; first != inBlock; first += fanOut) {
            const std::uint64_t some = wanted & std::uint64_t{0xFF} << first;
            if (some == 0)
                continue;
            if (!choose(eights[first / fanOut])) {
                found |= some;
                continue;
            }
            if (m_chosen.empty())
                continue;
            for (std::size_t i = first; i != first + fanOut; ++i)
                if ((some >> i & 1) != 0 && isNear(points[i]))
                    found |= std::uint64_t{1} << i;
        }
        return found;
    }

private:
    struct Reached {
        Box box;
        std::uint32_t leaf;
    };

    /// Gathers the leaves that are in reach of something in `box`; false if all of it is near.
    bool gather(const Box& box) {
        m_leaves.clear();
        m_open.assign(1, m_centres.top());
        while (!m_open.empty()) {
            const Centres::Node node = m_open.back();
            m_open.pop_back();
            const Box& around = m_centres.box(node);
            if (leastSquare(box, around) > m_limits.surelyOut)
                continue;
            if (greatestSquare(box, around) < m_limits.surelyIn)
                return false;
            if (node.level == 0) {
                m_leaves.push_back({around, node.number});
                continue;
            }
            openBelow(node, box);
        }
        return true;
    }
    /// The closest comes last, which is the next to be looked at.
    void openBelow(Centres::Node node, const Box& box) {
        const std::uint32_t level = node.level - 1;
        const auto first = static_cast<std::uint32_t>(node.number * fanOut);
        const std::uint32_t end = std::min<std::uint32_t>(first + fanOut, m_centres.end(level));
        float least = std::numeric_limits<float>::infinity();
        for (std::uint32_t i = first; i != end; ++i) {
            const float square = leastSquare(box, m_centres.box({level, i}));
            if (square > m_limits.surelyOut)
                continue;
            m_open.push_back({level, i});
            if (square < least)
                least = square;
            else if (m_open.size() > 1)
                std::swap(m_open.back(), m_open[m_open.size() - 2]);
        }
    }
    /// Chooses of the gathered leaves those in reach of `box`, the closest first; false if all of
    /// it is near.
    bool choose(const Box& box) {
        m_chosen.clear();
        float least = std::numeric_limits<float>::infinity();
        for (const Reached& reached : m_leaves) {
            const float square = leastSquare(box, reached.box);
            if (square > m_limits.surelyOut)
                continue;
            if (greatestSquare(box, reached.box) < m_limits.surelyIn)
                return false;
            m_chosen.push_back(reached);
            if (square < least) {
                least = square;
                std::swap(m_chosen.front(), m_chosen.back());
            }
        }
        return true;
    }
    bool isNear(const Point& point) const {
        const Box place(point);
        for (const Reached& reached : m_chosen)
            if (leastSquare(place, reached.box) <= m_limits.surelyOut &&
                isNear(point, m_centres.leaf(reached.leaf)))
                return true;
        return false;
    }
    bool isNear(const Point& point, const Centres::Leaf& leaf) const {
        std::array<float, fanOut> squares;
        for (std::size_t i = 0; i != fanOut; ++i) {
            const float x = point[0] - leaf.x[i];
            const float y = point[1] - leaf.y[i];
            const float z = point[2] - leaf.z[i];
            squares[i] = x * x + y * y + z * z;
        }
        bool isClose = false;
        for (std::size_t i = 0; i != fanOut; ++i) {
            if (squares[i] < m_limits.surelyIn)
                return true;
            isClose |= squares[i] <= m_limits.surelyOut;
        }
        return isClose && isExactlyNear(point, leaf);
    }
    bool isExactlyNear(const Point& point, const Centres::Leaf& leaf) const {
        for (std::size_t i = 0; i != fanOut; ++i) {
            const double x = static_cast<double>(point[0]) - static_cast<double>(leaf.x[i]);
            const double y = static_cast<double>(point[1]) - static_cast<double>(leaf.y[i]);
            const double z = static_cast<double>(point[2]) - static_cast<double>(leaf.z[i]);
            if (x * x + y * y + z * z <= m_limits.square)
                return true;
        }
        return false;
    }

    const Centres& m_centres;
    const Limits m_limits;
    std::vector<Centres::Node> m_open;
    std::vector<Reached> m_leaves; ///< in reach of the points that are looked at
    std::vector<Reached> m_chosen; ///< in reach of eight of them
};

/// Calls `f` with the index of each bit that is set.
template <class F> void forEach(const std::vector<std::uint64_t>& words, const F& f) {
    for (std::size_t i = 0; i != words.size(); ++i)
        for (std::uint64_t rest = words[i]; rest != 0; rest &= rest - 1)
            f(i * 64 + static_cast<std::size_t>(std::countr_zero(rest)));
}

/// The box of each `count` points.
std::vector<Box> boxesOf(const std::vector<Point>& points, std::size_t count) {
    std::vector<Box> boxes;
    boxes.reserve(points.size() / count + 1);
    for (std::size_t i = 0; i != points.size(); ++i) {
        if (i % count == 0)
            boxes.emplace_back(points[i]);
        else
            boxes.back().add(lanesOf(points[i]));
    }
    return boxes;
}

} // namespace

struct NearSearch::Prepared {
    std::vector<Point> points;          ///< the finite ones, along the curve
    std::vector<std::uint32_t> numbers; ///< theirs, in what the search was made of
    std::vector<Box> blocks;            ///< of each 64 points
    std::vector<Box> eights;            ///< of each eight

    /// A bit for each point, whether it is in `from`; 64 in a word, as the points in a block.
    std::vector<std::uint64_t> along(const Bits& from) const {
        std::vector<std::uint64_t> words(blocks.size());
        for (std::size_t i = 0; i != numbers.size(); ++i)
            words[i / inBlock] |= std::uint64_t{from.has(numbers[i])} << i % inBlock;
        return words;
    }
    /// Looks at a block, in place of which `word` is, and adds what is near.
    void look(std::size_t block, Looker& looker, std::uint64_t& word) const {
        const std::size_t first = block * inBlock;
        const std::size_t count = std::min(inBlock, points.size() - first);
        const std::uint64_t all = ~std::uint64_t{0} >> (inBlock - count);
        if (const std::uint64_t wanted = all & ~word)
            word |= looker.look(&points[first], blocks[block], &eights[first / fanOut], wanted);
    }
};

NearSearch::NearSearch(const std::vector<Point>& points) {
    auto prepared = std::make_unique<Prepared>();
    prepared->numbers = alongCurve(points);
    prepared->points.reserve(prepared->numbers.size());
    for (const std::uint32_t number : prepared->numbers)
        prepared->points.push_back(points[number]);
    prepared->blocks = boxesOf(prepared->points, inBlock);
    prepared->eights = boxesOf(prepared->points, fanOut);
    m_prepared = std::move(prepared);
}

NearSearch::~NearSearch() = default;

Bits NearSearch::near(const Bits& from, double radius, const std::stop_token& stop) const {
    std::vector<std::uint64_t> words = m_prepared->along(from);
    Centres centres;
    forEach(words, [&](std::size_t i) { centres.add(m_prepared->points[i]); });
    Bits near = from;
    if (centres.isEmpty())
        return near;
    centres.finish();

    constexpr std::size_t piece = 64; ///< blocks that a thread takes at once
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        Looker looker(centres, radius);
        while (!stop.stop_requested()) {
            const std::size_t first = next.fetch_add(piece);
            if (first >= words.size())
                break;
            const std::size_t end = std::min(first + piece, words.size());
            for (std::size_t block = first; block != end; ++block)
                m_prepared->look(block, looker, words[block]);
        }
    };
    std::vector<std::future<void>> helpers;
    const std::size_t most = std::min<std::size_t>(8, std::thread::hardware_concurrency());
    while (helpers.size() + 1 < most && (helpers.size() + 1) * 4 * piece < words.size())
        helpers.push_back(std::async(std::launch::async, work));
    work();
    for (std::future<void>& helper : helpers)
        helper.get();
    forEach(words, [&](std::size_t i) { near.add(m_prepared->numbers[i]); });
    return near;
}

} // namespace workbench
