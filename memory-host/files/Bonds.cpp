#include "Bonds.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace memory_host {

namespace {

constexpr std::size_t axisCount = 3;
// Least edge of a cell in Å, so that farthestBond bounds the number of cells along an axis.
constexpr double smallestEdge = 1.0;

struct Point {
    float x, y, z;
    float radius;
    std::uint32_t index; ///< among the atoms that were handed over
    std::uint16_t alternative;
    BondKind kind;
    bool isHeld : 1;
    bool isLarge : 1;
};

struct Cell {
    std::uint64_t key;
    std::uint32_t first; ///< of the sorted points
};

bool isUsable(const BondAtom& atom) {
    return atom.hasPosition && std::ranges::all_of(atom.position, [](float coordinate) {
               return std::abs(coordinate) <= farthestBond;
           });
}

double squaredDistance(const Point& a, const Point& b) {
    const double x = static_cast<double>(a.x) - static_cast<double>(b.x);
    const double y = static_cast<double>(a.y) - static_cast<double>(b.y);
    const double z = static_cast<double>(a.z) - static_cast<double>(b.z);
    return x * x + y * y + z * z;
}

// Whether two atoms are at most the length of a bond apart.
bool meet(const Point& a, const Point& b) {
    const double longest =
        static_cast<double>(a.radius) + static_cast<double>(b.radius) + bondTolerance;
    return squaredDistance(a, b) <= longest * longest;
}

// Whether alternative locations allow both atoms at the same time.
bool areTogether(const Point& a, const Point& b) {
    return a.alternative == b.alternative || a.alternative == 0 || b.alternative == 0;
}

// Whether the rule on nearer atoms applies.
bool areMetalAndFramework(const Point& a, const Point& b) {
    return (a.kind == BondKind::Metal && b.kind == BondKind::Framework) ||
           (a.kind == BondKind::Framework && b.kind == BondKind::Metal);
}

// Whether two atoms that meet are bonded.
bool mayBond(const Point& a, const Point& b) {
    if (a.kind == BondKind::Hydrogen && b.kind == BondKind::Hydrogen)
        return false;
    return areTogether(a, b) && squaredDistance(a, b) >= shortestBond * shortestBond;
}

// A stable radix sort by key.
void sortByKey(std::vector<std::pair<std::uint64_t, std::uint32_t>>& keys, int bits) {
    constexpr int digitBits = 11;
    constexpr std::size_t digits = std::size_t{1} << digitBits;
    std::vector<std::pair<std::uint64_t, std::uint32_t>> other(keys.size());
    for (int shift = 0; shift < bits; shift += digitBits) {
        const auto digit = [shift](std::uint64_t key) { return key >> shift & (digits - 1); };
        std::array<std::uint32_t, digits> starts{};
        for (const auto& entry : keys)
            ++starts[digit(entry.first)];
        std::uint32_t sum = 0;
        for (std::uint32_t& start : starts)
            sum += std::exchange(start, sum);
        for (const auto& entry : keys)
            other[starts[digit(entry.first)]++] = entry;
        keys.swap(other);
    }
}

class BondSearch {
public:
    BondSearch(std::span<const BondAtom> atoms, std::uint32_t alternatives)
        : m_atoms(atoms), m_alternatives(std::min(alternatives, mostAlternatives)) {}

    Bonds run() {
        choosePoints();
        if (!m_points.empty()) {
            sortIntoCells();
            m_near.resize(m_points.size());
            searchAroundSmall();
            for (std::uint32_t i = 0; i != m_points.size(); ++i)
                if (m_points[i].isLarge)
                    searchAroundLarge(i);
            keepDoubtful();
        }
        return collect();
    }

private:
    using CellIndex = std::array<std::int64_t, axisCount>;

    void choosePoints();
    void sortIntoCells();
    void searchAroundSmall();
    void searchAroundLarge(std::uint32_t i);
    void searchRange(std::uint32_t i, std::uint32_t first, std::uint32_t last);
    void join(std::uint32_t i, std::uint32_t k);
    void keep(std::uint32_t i, std::uint32_t k) {
        m_pairs.push_back(std::minmax(m_points[i].index, m_points[k].index));
    }
    void keepDoubtful();
    bool hasNearerLigand(const Point& metal, const Point& other);
    template <class Visit> void visitAround(const Point& point, double reach, Visit visit);
    Bonds collect();

    std::uint32_t mostNear() const { return mostNeighbours * (1 + m_alternatives); }

    CellIndex cellOf(const Point& point) const {
        return {cellAlong(point.x) - m_origin[0], cellAlong(point.y) - m_origin[1],
                cellAlong(point.z) - m_origin[2]};
    }
    // Truncation rounds down, because the number is positive.
    std::int64_t cellAlong(float coordinate) const {
        constexpr double positive = 2.0 * static_cast<double>(farthestBond) / smallestEdge;
        return static_cast<std::int64_t>(static_cast<double>(coordinate) * m_perEdge + positive);
    }
    std::uint64_t keyOf(const CellIndex& cell) const {
        return static_cast<std::uint64_t>(cell[0]) << m_shift[0] |
               static_cast<std::uint64_t>(cell[1]) << m_shift[1] |
               static_cast<std::uint64_t>(cell[2]);
    }
    std::uint32_t pointsBefore(std::size_t cell) const {
        return cell < m_cells.size() ? m_cells[cell].first
                                     : static_cast<std::uint32_t>(m_points.size());
    }

    std::span<const BondAtom> m_atoms;
    std::uint32_t m_alternatives;
    std::vector<Point> m_points;       ///< by cell
    std::vector<std::uint32_t> m_near; ///< by point: others within the distance of a bond
    std::vector<Cell> m_cells;         ///< those that hold something, by key
    std::vector<std::uint32_t> m_crowded;
    std::size_t m_distant = 0; ///< atoms beyond farthestBond
    std::vector<BondPair> m_pairs;
    std::vector<BondPair> m_doubtful; ///< points: a metal, and carbon or phosphorus
    float m_largestRadius = 0.0F;
    double m_perEdge = 1.0;     ///< cells an Å
    float m_farForSmall = 0.0F; ///< square of a distance too long for a bond of two small atoms
    CellIndex m_origin{};
    CellIndex m_count{};                  ///< cells along an axis, with an empty margin
    std::array<int, axisCount> m_shift{}; ///< bits that an axis is shifted by in a key
    std::size_t m_compared = 0;           ///< see Bonds
};

// A few large atoms, such as the metals in a protein, do not set the size of the cells: they search
// more cells around themselves.
void BondSearch::choosePoints() {
    std::vector<float> radii;
    m_points.reserve(m_atoms.size());
    radii.reserve(m_atoms.size());
    for (std::size_t i = 0; i != m_atoms.size(); ++i) {
        const BondAtom& atom = m_atoms[i];
        if (!isUsable(atom)) {
            m_distant += atom.hasPosition ? 1 : 0;
            continue;
        }
        m_points.push_back({atom.position[0], atom.position[1], atom.position[2], atom.radius,
                            static_cast<std::uint32_t>(i), atom.alternative, atom.kind, atom.isHeld,
                            false});
        radii.push_back(atom.radius);
    }
    if (radii.empty())
        return;
    m_largestRadius = *std::max_element(radii.begin(), radii.end());
    const auto usual = radii.end() - 1 - static_cast<std::ptrdiff_t>(radii.size() / 64);
    std::nth_element(radii.begin(), usual, radii.end());
    for (Point& point : m_points)
        point.isLarge = point.radius > *usual;
    // Slightly larger, so that despite rounding, atoms that meet are at most one cell apart.
    const double longest = (2.0 * *usual + bondTolerance) * (1.0 + 1.0e-5);
    m_perEdge = 1.0 / std::max(smallestEdge, longest);
    m_farForSmall = static_cast<float>(longest * longest);
}

void BondSearch::sortIntoCells() {
    CellIndex lowest = cellOf(m_points.front());
    CellIndex highest = lowest;
    for (const Point& point : m_points) {
        const CellIndex cell = cellOf(point);
        for (std::size_t axis = 0; axis != axisCount; ++axis) {
            lowest[axis] = std::min(lowest[axis], cell[axis]);
            highest[axis] = std::max(highest[axis], cell[axis]);
        }
    }
    // Thanks to the margin, adding to a key gives its neighbours: no axis overflows into the next.
    // Each axis takes at most 21 bits.
    int bits = 0;
    for (std::size_t axis = axisCount; axis-- != 0;) {
        m_origin[axis] = lowest[axis] - 1;
        m_count[axis] = highest[axis] - lowest[axis] + 3;
        m_shift[axis] = bits;
        bits += std::bit_width(static_cast<std::uint64_t>(m_count[axis]));
    }

    std::vector<std::pair<std::uint64_t, std::uint32_t>> keys(m_points.size());
    for (std::uint32_t i = 0; i != keys.size(); ++i)
        keys[i] = {keyOf(cellOf(m_points[i])), i};
    sortByKey(keys, bits);
    std::vector<Point> sorted;
    sorted.reserve(m_points.size());
    const std::size_t mostHere =
        mostInCell * (1 + std::min(m_alternatives, mostAlternativesInCell));
    for (std::size_t from = 0, to = 0; from != keys.size(); from = to) {
        while (to != keys.size() && keys[to].first == keys[from].first)
            ++to;
        const bool isHeap = to - from > mostHere;
        if (!isHeap)
            m_cells.push_back({keys[from].first, static_cast<std::uint32_t>(sorted.size())});
        for (std::size_t i = from; i != to; ++i) {
            const Point& point = m_points[keys[i].second];
            if (isHeap)
                m_crowded.push_back(point.index);
            else
                sorted.push_back(point);
        }
    }
    m_points.swap(sorted);
}

// Records that two points meet. Points that are crowded already get no more pairs.
void BondSearch::join(std::uint32_t i, std::uint32_t k) {
    const bool isCrowded = std::max(++m_near[i], ++m_near[k]) > mostNear();
    if (isCrowded || !mayBond(m_points[i], m_points[k]))
        return;
    if (areMetalAndFramework(m_points[i], m_points[k]))
        m_doubtful.push_back({i, k});
    else
        keep(i, k);
}

void BondSearch::searchRange(std::uint32_t i, std::uint32_t first, std::uint32_t last) {
    const Point& point = m_points[i];
    m_compared += last - first;
    for (std::uint32_t k = first; k != last; ++k) {
        const Point& other = m_points[k];
        const float x = point.x - other.x;
        const float y = point.y - other.y;
        const float z = point.z - other.z;
        if (x * x + y * y + z * z <= m_farForSmall && !other.isLarge && meet(point, other))
            join(i, k);
    }
}

// Each pair is found once, from the cell that comes first. Cells are visited in ascending order, so
// that the starts of the rows of three neighbour cells only move forward.
void BondSearch::searchAroundSmall() {
    const std::uint64_t x = std::uint64_t{1} << m_shift[0];
    const std::uint64_t y = std::uint64_t{1} << m_shift[1];
    const std::array<std::uint64_t, 4> offsets = {y - 1, x - y - 1, x - 1, x + y - 1};
    struct Row {
        std::size_t start = 0; ///< cell
        std::uint32_t first = 0;
        std::uint32_t last = 0;
    };
    std::array<Row, 4> rows{};
    for (std::size_t cell = 0; cell != m_cells.size(); ++cell) {
        const std::uint64_t key = m_cells[cell].key;
        for (std::size_t r = 0; r != rows.size(); ++r) {
            Row& row = rows[r];
            const std::uint64_t lowest = key + offsets[r];
            while (row.start != m_cells.size() && m_cells[row.start].key < lowest)
                ++row.start;
            std::size_t end = row.start;
            while (end != m_cells.size() && m_cells[end].key <= lowest + 2)
                ++end;
            row.first = pointsBefore(row.start);
            row.last = pointsBefore(end);
        }
        const bool hasNext = cell + 1 != m_cells.size() && m_cells[cell + 1].key == key + 1;
        const std::uint32_t ownEnd = pointsBefore(cell + (hasNext ? 2 : 1));
        for (std::uint32_t i = m_cells[cell].first; i != pointsBefore(cell + 1); ++i) {
            if (m_points[i].isLarge)
                continue;
            searchRange(i, i + 1, ownEnd);
            for (const Row& row : rows)
                searchRange(i, row.first, row.last);
        }
    }
}

// Calls `visit` with the index of each point in the cells within reach.
template <class Visit> void BondSearch::visitAround(const Point& point, double reach, Visit visit) {
    const auto layers = static_cast<std::int64_t>(std::ceil(reach * m_perEdge * (1.0 + 1.0e-5)));
    const CellIndex cell = cellOf(point);
    CellIndex from{};
    CellIndex to{};
    for (std::size_t axis = 0; axis != axisCount; ++axis) {
        from[axis] = std::max<std::int64_t>(cell[axis] - layers, 0);
        to[axis] = std::min(cell[axis] + layers, m_count[axis] - 1);
    }
    const auto pointsFrom = [this](std::uint64_t key) {
        return pointsBefore(static_cast<std::size_t>(
            std::ranges::lower_bound(m_cells, key, {}, &Cell::key) - m_cells.begin()));
    };
    for (std::int64_t x = from[0]; x <= to[0]; ++x) {
        for (std::int64_t y = from[1]; y <= to[1]; ++y) {
            const std::uint32_t last = pointsFrom(keyOf({x, y, to[2]}) + 1);
            const std::uint32_t first = pointsFrom(keyOf({x, y, from[2]}));
            m_compared += last - first;
            for (std::uint32_t k = first; k != last; ++k)
                visit(k);
        }
    }
}

// The search around small atoms skips large ones. A pair of large ones is found from the first.
void BondSearch::searchAroundLarge(std::uint32_t i) {
    const Point& point = m_points[i];
    const double reach = static_cast<double>(point.radius) + m_largestRadius + bondTolerance;
    visitAround(point, reach, [&](std::uint32_t k) {
        if ((!m_points[k].isLarge || i < k) && meet(point, m_points[k]))
            join(i, k);
    });
}

bool BondSearch::hasNearerLigand(const Point& metal, const Point& other) {
    if (metal.isHeld)
        return true;
    const double squared = squaredDistance(metal, other);
    bool isNearer = false;
    visitAround(metal, std::sqrt(squared), [&](std::uint32_t k) {
        const Point& ligand = m_points[k];
        isNearer = isNearer ||
                   (ligand.kind == BondKind::Ligand && squaredDistance(metal, ligand) < squared &&
                    areTogether(metal, ligand) && areTogether(other, ligand));
    });
    return isNearer;
}

void BondSearch::keepDoubtful() {
    for (const auto& [i, k] : m_doubtful) {
        // The bonds of crowded atoms are removed later.
        if (std::max(m_near[i], m_near[k]) > mostNear())
            continue;
        const bool isFirst = m_points[i].kind == BondKind::Metal;
        if (!hasNearerLigand(m_points[isFirst ? i : k], m_points[isFirst ? k : i]))
            keep(i, k);
    }
}

Bonds BondSearch::collect() {
    for (std::size_t i = 0; i != m_near.size(); ++i)
        if (m_near[i] > mostNear())
            m_crowded.push_back(m_points[i].index);
    Bonds bonds;
    bonds.crowded = m_crowded.size();
    bonds.compared = m_compared;
    bonds.distant = m_distant;
    if (bonds.crowded != 0) {
        std::vector<bool> isCrowded(m_atoms.size());
        for (const std::uint32_t atom : m_crowded)
            isCrowded[atom] = true;
        std::erase_if(m_pairs, [&](const BondPair& pair) {
            return isCrowded[pair.first] || isCrowded[pair.second];
        });
    }
    std::vector<std::uint32_t> starts(m_atoms.size() + 1, 0);
    for (const BondPair& pair : m_pairs)
        ++starts[pair.first];
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts)
        sum += std::exchange(start, sum);
    bonds.pairs.resize(m_pairs.size());
    for (const BondPair& pair : m_pairs)
        bonds.pairs[starts[pair.first]++] = pair;
    for (auto from = bonds.pairs.begin(); from != bonds.pairs.end();) {
        const auto to = std::find_if(from, bonds.pairs.end(), [from](const BondPair& pair) {
            return pair.first != from->first;
        });
        std::sort(from, to);
        from = to;
    }
    return bonds;
}

} // namespace

Bonds findBonds(std::span<const BondAtom> atoms, std::uint32_t alternatives) {
    return BondSearch(atoms, alternatives).run();
}

} // namespace memory_host
