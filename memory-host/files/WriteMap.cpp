// The header has the words of MRC2014 (A. Cheng et al., J. Struct. Biol. 192 (2015) 146) and, where
// the two differ, of the CCP4 map format: symmetry records as text.
#include "WriteMap.h"

#include "Readers.h"
#include "SaveReport.h"
#include "SavedTables.h"

#include <gemmi/symmetry.hpp>
#include <gemmi/unitcell.hpp>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

namespace memory_host {

namespace {

static_assert(std::endian::native == std::endian::little, "values are written as they are");

using Triple = std::array<double, 3>;
using TAVIK::GridValues;

constexpr std::size_t headerBytes = 1024;
constexpr std::size_t recordBytes = 80;
constexpr std::size_t bytesAPiece = std::size_t{1} << 22;

bool isEmpty(const GridValues& grid) {
    return std::ranges::any_of(grid.points, [](int points) { return points < 1; });
}

/// The position of a point, which may be far outside of the grid.
Triple positionOf(const Triple& origin, const std::array<Triple, 3>& steps, const Triple& index) {
    Triple position = origin;
    for (const std::size_t axis : {0, 1, 2})
        for (const std::size_t k : {0, 1, 2})
            position[k] += index[axis] * steps[axis][k];
    return position;
}

double distance(const Triple& a, const Triple& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

gemmi::Vec3 vectorOf(const Triple& step, int count) {
    return gemmi::Vec3(step[0], step[1], step[2]) * static_cast<double>(count);
}

/// What a header says of where the points are.
class Placement {
public:
    Placement(const GridValues& grid, const MapCrystal& crystal, const SaveReport& report)
        : m_sampling(crystal.cellSteps) {
        if (std::ranges::any_of(m_sampling, [](int steps) { return steps < 1; }))
            m_sampling = grid.points;
        setCell(grid);
        setStart(grid);
        if (isTrueTo(grid))
            return;
        // The points may be on no lattice that has a point at 0.
        m_start = {};
        m_origin = grid.origin;
        if (!isTrueTo(grid))
            report.refuse("the map's axes are not those of a cell in a map file",
                          "accepted are axes of which the first is along x, and the second in the "
                          "plane of x and y");
    }

    const std::array<int, 3>& sampling() const { return m_sampling; }
    const std::array<int, 3>& start() const { return m_start; }
    const std::array<float, 6>& cell() const { return m_cell; }
    /// In Å, if it is not said by the start.
    const std::optional<Triple>& origin() const { return m_origin; }

private:
    void setCell(const GridValues& grid);
    void setStart(const GridValues& grid);
    bool isTrueTo(const GridValues& grid) const;

    std::array<int, 3> m_sampling;
    std::array<float, 6> m_cell{};      ///< Å and degrees
    std::array<Triple, 3> m_readBack{}; ///< the steps that a reader will get
    std::array<int, 3> m_start{};
    std::optional<Triple> m_origin;
};

void Placement::setCell(const GridValues& grid) {
    gemmi::UnitCell cell;
    cell.set_from_vectors(vectorOf(grid.steps[0], m_sampling[0]),
                          vectorOf(grid.steps[1], m_sampling[1]),
                          vectorOf(grid.steps[2], m_sampling[2]));
    const std::array<double, 6> numbers = {cell.a,     cell.b,    cell.c,
                                           cell.alpha, cell.beta, cell.gamma};
    // Readers take five decimals of what a float says of them.
    std::array<double, 6> read{};
    for (std::size_t i = 0; i != 6; ++i) {
        m_cell[i] = static_cast<float>(std::round(1e5 * numbers[i]) / 1e5);
        read[i] = std::round(1e5 * static_cast<double>(m_cell[i])) / 1e5;
    }
    const gemmi::UnitCell again(read[0], read[1], read[2], read[3], read[4], read[5]);
    for (const int axis : {0, 1, 2})
        for (const int k : {0, 1, 2})
            m_readBack[static_cast<std::size_t>(axis)][static_cast<std::size_t>(k)] =
                again.orth.mat[k][axis] / m_sampling[static_cast<std::size_t>(axis)];
}

void Placement::setStart(const GridValues& grid) {
    gemmi::Mat33 steps;
    for (const int axis : {0, 1, 2})
        for (const int k : {0, 1, 2})
            steps[k][axis] =
                grid.steps[static_cast<std::size_t>(axis)][static_cast<std::size_t>(k)];
    const gemmi::Vec3 start =
        steps.inverse().multiply(gemmi::Vec3(grid.origin[0], grid.origin[1], grid.origin[2]));
    for (const int axis : {0, 1, 2}) {
        const double whole = std::round(start.at(axis));
        // Also false for NaN; beyond it readers give up.
        if (!(std::abs(whole) < static_cast<double>(mostMapPoints)))
            return;
        m_start[static_cast<std::size_t>(axis)] = static_cast<int>(whole);
    }
}

/// Whether a reader finds the corners where they are; and so everything between them.
bool Placement::isTrueTo(const GridValues& grid) const {
    const std::array<Triple, 3> unit = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    double shortest = std::numeric_limits<double>::infinity();
    for (const Triple& axis : unit)
        shortest = std::min(shortest, distance({}, positionOf({}, grid.steps, axis)));
    Triple origin{};
    for (const std::size_t k : {0, 1, 2})
        origin[k] = m_origin ? static_cast<double>(static_cast<float>((*m_origin)[k])) : 0.0;
    for (unsigned int corner = 0; corner != 8; ++corner) {
        Triple index{};
        Triple fromStart{};
        for (const std::size_t axis : {0, 1, 2}) {
            index[axis] = (corner >> axis & 1) != 0 ? grid.points[axis] : 0;
            fromStart[axis] = index[axis] + m_start[axis];
        }
        const double off = distance(positionOf(grid.origin, grid.steps, index),
                                    positionOf(origin, m_readBack, fromStart));
        if (!(off <= 1e-3 * shortest))
            return false;
    }
    return true;
}

/// Of the values that are numbers.
struct Statistics {
    explicit Statistics(const std::vector<float>& values) {
        double sum = 0.0;
        for (const float value : values) {
            if (!std::isfinite(value))
                continue;
            least = count ? std::min(least, value) : value;
            most = count ? std::max(most, value) : value;
            sum += static_cast<double>(value);
            ++count;
        }
        if (count == 0)
            return;
        mean = sum / static_cast<double>(count);
        double squares = 0.0;
        for (const float value : values)
            if (std::isfinite(value))
                squares +=
                    (static_cast<double>(value) - mean) * (static_cast<double>(value) - mean);
        deviation = std::sqrt(squares / static_cast<double>(count));
    }
    std::size_t count = 0;
    // In this order they say that nothing is known.
    float least = 0.0F;
    float most = -1.0F;
    double mean = -2.0;
    double deviation = -1.0;
};

class Header {
public:
    /// Words count from 1.
    void set(std::size_t word, std::int32_t value) { put(word, &value, sizeof value); }
    void set(std::size_t word, float value) { put(word, &value, sizeof value); }
    template <class Number, std::size_t count>
    void set(std::size_t word, const std::array<Number, count>& values) {
        for (std::size_t i = 0; i != count; ++i)
            set(word + i, values[i]);
    }
    void setText(std::size_t word, std::string_view text) { put(word, text.data(), text.size()); }
    std::string_view bytes() const { return {m_bytes.data(), m_bytes.size()}; }

private:
    void put(std::size_t word, const void* from, std::size_t size) {
        std::memcpy(m_bytes.data() + 4 * (word - 1), from, size);
    }
    std::array<char, headerBytes> m_bytes{};
};

std::string padded(std::string text) {
    text.resize(recordBytes, ' ');
    return text;
}

/// The operations of a space group as records; none for a number that is no group's.
std::string symmetryRecords(const gemmi::SpaceGroup* group) {
    std::string records;
    if (group)
        for (const gemmi::Op operation : group->operations())
            records += padded(operation.triplet());
    return records;
}

Header makeHeader(const GridValues& grid, const Placement& placement,
                  const Statistics& statistics) {
    Header header;
    header.set(1, grid.points);
    header.set(4, std::int32_t{2}); // the values are floats
    header.set(5, placement.start());
    header.set(8, placement.sampling());
    header.set(11, placement.cell());
    header.set(17, std::array<int, 3>{1, 2, 3}); // x fastest
    header.set(20, statistics.least);
    header.set(21, statistics.most);
    header.set(22, static_cast<float>(statistics.mean));
    header.set(28, std::int32_t{20140}); // the version of the format
    if (placement.origin())
        for (const std::size_t k : {0, 1, 2})
            header.set(50 + k, static_cast<float>((*placement.origin())[k]));
    header.setText(53, "MAP DA"); // with the stamp of little-endian machines
    header.set(55, static_cast<float>(statistics.deviation));
    header.set(56, std::int32_t{1}); // label
    header.setText(57, padded("Written by Structure Editor"));
    return header;
}

void remarkOn(const GridValues& grid, const Placement& placement, const Statistics& statistics,
              SaveReport& report) {
    if (placement.origin())
        report.remark(
            "the map's points are on no lattice from the origin of a cell: their place is "
            "an origin in Angstrom, which some programs do not read");
    if (const std::size_t none = grid.values.size() - statistics.count)
        report.remark(std::to_string(none) +
                      (none == 1 ? " point of the map has" : " points of the map have") +
                      " no finite value: the file says so, which some programs do not expect");
}

} // namespace

GridValues partOf(const GridValues& grid, const std::array<int, 3>& lower,
                  const std::array<int, 3>& upper) {
    GridValues part;
    part.steps = grid.steps;
    std::array<std::size_t, 3> first{};
    std::array<std::size_t, 3> end{};
    Triple corner{};
    for (const std::size_t axis : {0, 1, 2}) {
        const int from = std::max(lower[axis], 0);
        part.points[axis] = std::max(std::min(upper[axis], grid.points[axis]) - from, 0);
        first[axis] = static_cast<std::size_t>(from);
        end[axis] = first[axis] + static_cast<std::size_t>(part.points[axis]);
        corner[axis] = from;
    }
    part.origin = positionOf(grid.origin, grid.steps, corner);
    if (isEmpty(part))
        return part;
    part.values.reserve((end[0] - first[0]) * (end[1] - first[1]) * (end[2] - first[2]));
    const auto pointsX = static_cast<std::size_t>(grid.points[0]);
    const auto pointsY = static_cast<std::size_t>(grid.points[1]);
    for (std::size_t z = first[2]; z != end[2]; ++z)
        for (std::size_t y = first[1]; y != end[1]; ++y) {
            const float* const row = grid.values.data() + (z * pointsY + y) * pointsX;
            part.values.insert(part.values.end(), row + first[0], row + end[0]);
        }
    return part;
}

std::string writeMap(const SavedContent& content, SaveReport& report) {
    if (!content.grid || isEmpty(*content.grid))
        report.refuse("nothing of a map is within its bounds",
                      "accepted is a map with at least one point along each axis");
    const GridValues& grid = *content.grid;
    const Placement placement(grid, content.crystal, report);
    const Statistics statistics(grid.values);
    remarkOn(grid, placement, statistics, report);
    const gemmi::SpaceGroup* const group =
        gemmi::find_spacegroup_by_number(content.crystal.spaceGroup);
    const std::string symmetry = symmetryRecords(group);
    Header header = makeHeader(grid, placement, statistics);
    header.set(23, group ? group->ccp4 : 1);
    header.set(24, static_cast<std::int32_t>(symmetry.size()));
    if (!symmetry.empty())
        header.setText(27, "CCP4");

    const std::size_t valueBytes = grid.values.size() * sizeof(float);
    std::string text;
    text.reserve(headerBytes + symmetry.size() + valueBytes);
    text.append(header.bytes()).append(symmetry);
    const auto* const values = reinterpret_cast<const char*>(grid.values.data());
    for (std::size_t at = 0; at < valueBytes; at += bytesAPiece) {
        text.append(values + at, std::min(bytesAPiece, valueBytes - at));
        report.advance(static_cast<double>(at) / static_cast<double>(valueBytes));
    }
    return text;
}

} // namespace memory_host
