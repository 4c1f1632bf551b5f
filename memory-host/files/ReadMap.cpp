// The CCP4/MRC format of maps: the extent that the file stores, in any axis order, cell and byte
// order. The header is checked before gemmi reads it, because gemmi allocates whatever the header
// promises, and does not convert data in the other byte order.
#include "Fields.h"
#include "FileLimits.h"
#include "Readers.h"
#include "WriteMap.h"

#include <gemmi/ccp4.hpp>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>

namespace memory_host {

namespace {

static_assert(std::endian::native == std::endian::little, "the byte order of maps is turned to it");

constexpr std::size_t headerBytes = 1024;
// Positions in the header, as words counted from 1.
constexpr int sizeWord = 1;
constexpr int modeWord = 4;
constexpr int startWord = 5;
constexpr int samplingWord = 8;
constexpr int cellWord = 11;
constexpr int axisWord = 17;
constexpr int spaceGroupWord = 23;
constexpr int symmetryBytesWord = 24;
constexpr int originWord = 50;
constexpr int markWord = 53;
constexpr int byteOrderWord = 54;

const std::string acceptedHeader = "accepted are CCP4/MRC maps of modes 0, 1, 2 and 6";

class MapReader {
public:
    MapReader(Bytes bytes, FileReport& report) : m_bytes(std::move(bytes)), m_report(report) {}

    FileContent read();

private:
    using Sizes = std::array<std::int64_t, 3>;

    std::int32_t word(int number) const {
        std::int32_t value = 0;
        std::memcpy(&value, m_bytes.data() + std::size_t{4} * (number - 1), sizeof value);
        return value;
    }
    float real(int number) const { return std::bit_cast<float>(word(number)); }
    void setWord(int number, std::int32_t value) {
        std::memcpy(m_bytes.data() + std::size_t{4} * (number - 1), &value, sizeof value);
    }
    std::int64_t dataOffset() const {
        return static_cast<std::int64_t>(headerBytes) + word(symmetryBytesWord);
    }
    bool isHeaderInOrder() const;
    void turnBytes(std::size_t from, std::size_t to, std::size_t width);
    bool bringHeaderIntoByteOrder();
    std::size_t valueBytes() const;
    void checkSizes() const;
    void checkStart() const;
    void checkAxes();
    void checkCell();
    void place(const gemmi::Ccp4Base& map, const gemmi::UnitCell& cell, TAVIK::GridValues& grid);

    Bytes m_bytes;
    FileReport& m_report;
};

// Whether the header's numbers make sense in the current byte order. The machine stamp is often
// missing or wrong.
bool MapReader::isHeaderInOrder() const {
    const auto isAxis = [this](int number) { return word(number) >= 1 && word(number) <= 3; };
    return isAxis(axisWord) && isAxis(axisWord + 1) && isAxis(axisWord + 2);
}

void MapReader::turnBytes(std::size_t from, std::size_t to, std::size_t width) {
    for (std::size_t at = from; at + width <= to; at += width)
        std::reverse(m_bytes.data() + at, m_bytes.data() + at + width);
}

// Returns whether the header was in the other byte order.
bool MapReader::bringHeaderIntoByteOrder() {
    // Words 53 and 54 are text and the machine stamp; text follows after word 56.
    const auto turnHeader = [this] {
        turnBytes(0, 208, 4);
        turnBytes(216, 224, 4);
    };
    constexpr std::int32_t littleEndianStamp = 0x00004144;
    setWord(byteOrderWord, littleEndianStamp);
    if (isHeaderInOrder())
        return false;
    turnHeader();
    if (isHeaderInOrder())
        return true;
    turnHeader();
    m_report.refuse(0,
                    "the map's header names the axes " + std::to_string(word(axisWord)) + ", " +
                        std::to_string(word(axisWord + 1)) + " and " +
                        std::to_string(word(axisWord + 2)),
                    "accepted are 1, 2 and 3 in any order");
}

std::size_t MapReader::valueBytes() const {
    switch (word(modeWord)) {
    case 0:
        return 1;
    case 1:
    case 6:
        return 2;
    case 2:
        return 4;
    default:
        m_report.refuse(0, "the map's values are of mode " + std::to_string(word(modeWord)),
                        acceptedHeader);
    }
}

void MapReader::checkSizes() const {
    std::int64_t points = 1;
    std::string sizes;
    for (int axis = 0; axis != 3; ++axis)
        sizes += (axis ? " x " : "") + std::to_string(word(sizeWord + axis));
    for (int axis = 0; axis != 3; ++axis) {
        const std::int64_t count = word(sizeWord + axis);
        if (count < 1 || count > mostMapPoints / points)
            m_report.refuse(0, "the map's header promises " + sizes + " points",
                            "accepted are at least 1 along each axis and at most " +
                                std::to_string(mostMapPoints) + " in all");
        points *= count;
    }
    const std::int64_t before = word(symmetryBytesWord);
    if (before < 0 || before % 4 != 0 || before > 4000000)
        m_report.refuse(
            0, "the map's header promises " + std::to_string(before) + " bytes of symmetry records",
            "accepted are multiples of 4 up to 4000000");
    const std::int64_t needed = dataOffset() + points * static_cast<std::int64_t>(valueBytes());
    const auto size = static_cast<std::int64_t>(m_bytes.size());
    if (size < needed)
        m_report.refuse(0,
                        "the map's header promises " + sizes + " points, which take " +
                            std::to_string(needed) + " bytes, and the file has " +
                            std::to_string(size) + ": it is cut or damaged",
                        "accepted are whole maps");
    if (size > needed)
        m_report.remark(FileReport::Kind::Map, 0,
                        "the file has " + std::to_string(size - needed) +
                            " bytes more than the map's header promises; they were left out");
}

// Avoids overflow in gemmi, which adds the size to the start.
void MapReader::checkStart() const {
    for (int axis = 0; axis != 3; ++axis)
        if (std::abs(std::int64_t{word(startWord + axis)}) >= mostMapPoints)
            m_report.refuse(0,
                            "the map starts at point " + std::to_string(word(startWord + axis)) +
                                " of an axis",
                            "accepted are numbers between -" + std::to_string(mostMapPoints) +
                                " and " + std::to_string(mostMapPoints));
}

void MapReader::checkAxes() {
    std::array<bool, 3> isUsed{};
    for (int axis = 0; axis != 3; ++axis)
        isUsed[static_cast<std::size_t>(word(axisWord + axis) - 1)] = true;
    if (!std::ranges::all_of(isUsed, std::identity()))
        m_report.refuse(0, "the map's header names an axis twice",
                        "accepted are 1, 2 and 3 in any order");
}

void MapReader::checkCell() {
    // gemmi rounds cells to five decimals, and takes a cell with a 0 as missing.
    const auto isRoundedAway = [](float number) {
        return number != 0.0F && std::round(1.0e5 * static_cast<double>(number)) == 0.0;
    };
    bool isMissing = true;
    for (int axis = 0; axis != 3; ++axis) {
        const float length = real(cellWord + axis);
        const float angle = real(cellWord + 3 + axis);
        isMissing = isMissing && length == 0.0F;
        // If all angles are 90 degrees, files often omit them.
        if (angle == 0.0F)
            setWord(cellWord + 3 + axis, std::bit_cast<std::int32_t>(90.0F));
        else if (!(angle > 0.0F && angle < 180.0F) || isRoundedAway(angle))
            m_report.refuse(0, "the map's cell has an angle of " + numberText(angle),
                            "accepted are angles between 0 and 180 degrees");
        if (!(length >= 0.0F && length < 1.0e6F) || isRoundedAway(length))
            m_report.refuse(0, "the map's cell has a length of " + numberText(length),
                            "accepted are positive lengths in Angstrom");
    }
    for (int axis = 0; axis != 3; ++axis) {
        if (word(samplingWord + axis) == 0)
            setWord(samplingWord + axis, word(sizeWord + axis));
        const std::int32_t sampling = word(samplingWord + axis);
        if (sampling < 0)
            m_report.refuse(0,
                            "the map's cell is divided into " + std::to_string(sampling) + " parts",
                            "accepted are positive numbers");
        if (isMissing)
            setWord(cellWord + axis, std::bit_cast<std::int32_t>(static_cast<float>(sampling)));
        else if (real(cellWord + axis) == 0.0F)
            m_report.refuse(0, "the map's cell has a length of 0",
                            "accepted are positive lengths in Angstrom");
    }
    if (isMissing)
        m_report.remark(FileReport::Kind::Map, 0,
                        "the map's header has no cell: its points were taken to be 1 Angstrom "
                        "apart");
}

// The positions of the points: from the cell and its sampling, and from the header's start, given
// as a number of points, or as an origin in Å.
void MapReader::place(const gemmi::Ccp4Base& map, const gemmi::UnitCell& cell,
                      TAVIK::GridValues& grid) {
    const std::array<int, 3> sampling = map.header_3i32(samplingWord);
    const std::array<int, 3> start = map.header_3i32(startWord);
    std::array<double, 3> origin{};
    for (int axis = 0; axis != 3; ++axis)
        origin[static_cast<std::size_t>(axis)] =
            static_cast<double>(map.header_float(originWord + axis));
    const bool hasOrigin = std::ranges::all_of(origin, [](double x) { return std::isfinite(x); }) &&
                           std::ranges::any_of(origin, [](double x) { return x != 0.0; });
    for (std::size_t axis = 0; axis != 3; ++axis) {
        for (std::size_t k = 0; k != 3; ++k) {
            const double step =
                cell.orth.mat[static_cast<int>(k)][static_cast<int>(axis)] / sampling[axis];
            if (!std::isfinite(step))
                m_report.refuse(0, "the map's cell has angles that make no cell",
                                "accepted are the angles of a cell with a volume");
            grid.steps[axis][k] = step;
            grid.origin[k] += start[axis] * step;
        }
    }
    if (hasOrigin)
        grid.origin = origin;
}

FileContent MapReader::read() {
    if (m_bytes.size() < headerBytes)
        m_report.refuse(0, "the map ends within its header of 1024 bytes: it is cut",
                        "accepted are whole maps");
    const bool isTurned = bringHeaderIntoByteOrder();
    checkSizes();
    checkStart();
    checkAxes();
    checkCell();
    if (isTurned && valueBytes() > 1)
        turnBytes(static_cast<std::size_t>(dataOffset()), m_bytes.size(), valueBytes());

    // gemmi converts the values to floats, and holds two copies while it reorders the axes.
    requireMemory(m_report, 2 * sizeof(float) * (m_bytes.size() / valueBytes()));
    gemmi::Ccp4<float> map;
    map.read_ccp4_from_memory(m_bytes.data(), m_bytes.size(), m_report.path());
    m_bytes = {};
    // Brings the axes into the order of x, y and z, and leaves the extent as it is stored.
    map.setup(0.0F, gemmi::MapSetup::ReorderOnly);

    TAVIK::GridValues grid;
    grid.points = {map.grid.nu, map.grid.nv, map.grid.nw};
    place(map, map.grid.unit_cell, grid);
    grid.values = std::move(map.grid.data);
    return {{}, std::move(grid), {map.header_3i32(samplingWord), map.header_i32(spaceGroupWord)}};
}

bool hasMark(const FileSample& sample) {
    constexpr std::size_t mark = std::size_t{4} * (markWord - 1);
    return sample.bytes.size() >= mark + 4 && sample.bytes.substr(mark, 4) == "MAP ";
}

FileContent readMap(Bytes bytes, const std::string& /*stem*/, FileReport& report) {
    return MapReader(std::move(bytes), report).read();
}

constexpr auto endings = std::to_array<std::string_view>({".map", ".mrc", ".ccp4"});

} // namespace

extern const FileFormat ccp4Format = {.name = "CCP4/MRC",
                                      .holds = FileFormat::Holds::Map,
                                      .form = FileFormat::Form::Binary,
                                      .endings = endings,
                                      .mark = "\"MAP \" from byte 209 on",
                                      .recognises = hasMark,
                                      .read = readMap,
                                      .write = writeMap};

} // namespace memory_host
