// OpenDX grids, as programs write them that solve the Poisson-Boltzmann equation: positions on a
// regular grid, and one number a position as text, z fastest. Fields that describe what belongs
// together may follow, and need not.
#include "Fields.h"
#include "FileLimits.h"
#include "Readers.h"

#include <algorithm>
#include <cmath>

namespace memory_host {

namespace {

const std::string acceptedGrid =
    "accepted are OpenDX grids: gridpositions with counts, an origin and three deltas, and an "
    "array of as many numbers of rank 0 whose data follow as text";

// Words between white space, or in quotes; a comment goes from # to the end of its line.
class DxWords {
public:
    explicit DxWords(std::string_view text) : m_text(text) {}

    /// The next word, without quotes; empty at the end.
    std::string_view take();
    std::string_view peek() const { return DxWords(*this).take(); }
    /// Leaves out what stands in the line behind the last word.
    void skipLine() { m_at = std::min(m_text.find('\n', m_at), m_text.size()); }
    /// The next word as a finite number; nullopt, and nothing taken, if it is none.
    std::optional<float> takeNumber();

    std::string_view rest() const { return m_text.substr(m_at); }
    /// The line of the last word that was taken, counted from 1, and of the next one.
    std::size_t line() const {
        return 1 + static_cast<std::size_t>(std::ranges::count(m_text.substr(0, m_at), '\n'));
    }
    std::size_t nextLine() const {
        DxWords next(*this);
        next.skipBlanks();
        return next.line();
    }

private:
    static bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    void skipBlanks();

    std::string_view m_text;
    std::size_t m_at = 0;
};

void DxWords::skipBlanks() {
    for (; m_at != m_text.size(); ++m_at) {
        if (m_text[m_at] == '#')
            skipLine();
        if (m_at == m_text.size() || !isBlank(m_text[m_at]))
            return;
    }
}

std::string_view DxWords::take() {
    skipBlanks();
    const std::size_t first = m_at;
    if (m_at != m_text.size() && m_text[m_at] == '"') {
        m_at = std::min(m_text.find_first_of("\"\n", m_at + 1), m_text.size());
        const std::string_view word = m_text.substr(first + 1, m_at - first - 1);
        m_at += m_at != m_text.size() && m_text[m_at] == '"';
        return word;
    }
    while (m_at != m_text.size() && !isBlank(m_text[m_at]))
        ++m_at;
    return m_text.substr(first, m_at - first);
}

std::optional<float> DxWords::takeNumber() {
    const std::size_t before = m_at;
    skipBlanks();
    // Most numbers have no sign that from_chars() does not know, and nothing attached.
    double value = 0;
    const char* const end = m_text.data() + m_text.size();
    const auto [stop, error] = std::from_chars(m_text.data() + m_at, end, value);
    if (error == std::errc() && (stop == end || isBlank(*stop)) &&
        std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max())) {
        m_at = static_cast<std::size_t>(stop - m_text.data());
        return static_cast<float>(value);
    }
    const std::optional<float> number = finiteFloat(take());
    if (!number)
        m_at = before;
    return number;
}

class DxReader {
public:
    DxReader(Bytes bytes, FileReport& report)
        : m_bytes(std::move(bytes)), m_report(report), m_words(m_bytes.text()) {}

    TAVIK::GridValues read();

private:
    /// Refuses what was taken last.
    [[noreturn]] void refuse(const std::string& what) const {
        m_report.refuse(m_words.line(), what, acceptedGrid);
    }
    /// Refuses what comes next.
    [[noreturn]] void refuseNext(const std::string& what) const {
        m_report.refuse(m_words.nextLine(), what, acceptedGrid);
    }
    /// Refuses what comes next, or the end that comes too early.
    [[noreturn]] void refuseWithout(const std::string& wanted) const;

    void readObject();
    void readPositions();
    std::int64_t readCount();
    std::array<double, 3> readVector(const char* what);
    void checkSteps();
    void readArray();
    void checkArray(std::int64_t items);
    void readValues();
    float readValue(std::size_t number);
    void checkEnd();
    std::size_t points() const;

    Bytes m_bytes;
    FileReport& m_report;
    DxWords m_words;
    TAVIK::GridValues m_grid;
};

void DxReader::refuseWithout(const std::string& wanted) const {
    const std::string_view word = m_words.peek();
    if (word.empty())
        refuseNext("the file ends where " + wanted + " should be: it is cut");
    refuseNext(inQuotes(word) + " stands where " + wanted + " should be");
}

std::size_t DxReader::points() const {
    std::size_t count = 1;
    for (const int along : m_grid.points)
        count *= static_cast<std::size_t>(along);
    return count;
}

std::int64_t DxReader::readCount() {
    const std::string_view word = m_words.peek();
    std::int64_t count = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, count);
    if (word.empty() || error == std::errc::invalid_argument || stop != end)
        refuseWithout("a whole number");
    if (error != std::errc() || count < 0 || count > mostMapPoints)
        refuseNext("a number of points is " + inQuotes(word) + ", and not between 1 and " +
                   std::to_string(mostMapPoints));
    m_words.take();
    return count;
}

std::array<double, 3> DxReader::readVector(const char* what) {
    std::array<double, 3> vector{};
    for (double& part : vector) {
        const std::optional<float> number = m_words.takeNumber();
        if (!number)
            refuseWithout(std::string("a number of the ") + what);
        part = static_cast<double>(*number);
    }
    return vector;
}

void DxReader::readPositions() {
    if (m_grid.points[0] != 0)
        refuse("the file has several grids");
    if (m_words.take() != "counts")
        refuse("gridpositions have no counts");
    std::int64_t all = 1;
    std::array<int, 3> points{};
    for (int& along : points) {
        const std::int64_t count = readCount();
        if (count == 0 || count > mostMapPoints / all)
            refuse("the grid has a number of points that is not between 1 and " +
                   std::to_string(mostMapPoints));
        all *= count;
        along = static_cast<int>(count);
    }
    m_grid.points = points;
    std::size_t deltas = 0;
    bool hasOrigin = false;
    for (;;) {
        const std::string_view word = m_words.peek();
        if (word == "origin" && !hasOrigin) {
            m_words.take();
            m_grid.origin = readVector("origin");
            hasOrigin = true;
        } else if (word == "delta" && deltas != 3) {
            m_words.take();
            m_grid.steps[deltas++] = readVector("delta");
        } else {
            break;
        }
    }
    if (!hasOrigin || deltas != 3)
        refuseWithout(hasOrigin ? "the delta of an axis" : "the origin");
    checkSteps();
}

// Without a volume no position lies in the grid.
void DxReader::checkSteps() {
    const auto& [a, b, c] = m_grid.steps;
    const double volume = a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                          a[2] * (b[0] * c[1] - b[1] * c[0]);
    double edges = 1;
    for (const std::array<double, 3>& step : m_grid.steps)
        edges *= std::hypot(step[0], step[1], step[2]);
    constexpr double flat = 1e-6;
    if (!(std::abs(volume) > flat * edges))
        refuse("the grid's three deltas are no steps in space: one is 0, or all lie in a plane");
}

void DxReader::readArray() {
    if (m_grid.points[0] == 0)
        refuse("an array comes before the gridpositions");
    std::int64_t items = -1;
    for (;;) {
        const std::string_view word = m_words.peek();
        if (word == "data")
            break;
        if (word == "type" || word == "category") {
            m_words.take();
            m_words.take();
        } else if (word == "rank") {
            m_words.take();
            if (m_words.peek() != "0")
                refuseNext("the array's values are of rank " + inQuotes(m_words.peek()));
            m_words.take();
        } else if (word == "items") {
            m_words.take();
            items = readCount();
        } else if (word == "text" || word == "ascii") {
            m_words.take();
        } else {
            refuseWithout("the array's \"items\" or \"data follows\"");
        }
    }
    m_words.take();
    if (m_words.peek() != "follows")
        refuseWithout("\"follows\" behind the array's \"data\"");
    m_words.take();
    checkArray(items);
    readValues();
}

void DxReader::checkArray(std::int64_t items) {
    const auto& [x, y, z] = m_grid.points;
    const std::string sizes =
        std::to_string(x) + " x " + std::to_string(y) + " x " + std::to_string(z) + " points";
    if (items != static_cast<std::int64_t>(points()))
        refuse("the grid has " + sizes + ", and its array " +
               (items < 0 ? "does not say how many values" : std::to_string(items) + " values"));
    // A value takes a digit and a blank at least: nothing is allocated for what cannot be there.
    const std::size_t left = m_words.rest().size();
    if (points() > left / 2)
        refuse("the grid has " + sizes + ", and only " + std::to_string(left) +
               " bytes of values follow: the file is cut");
}

float DxReader::readValue(std::size_t number) {
    if (const std::optional<float> value = m_words.takeNumber())
        return *value;
    const std::string_view word = m_words.peek();
    if (word.empty() || word == "attribute" || word == "object" || word == "component" ||
        word == "end")
        refuseNext("the array promises " + std::to_string(points()) + " values, and has " +
                   std::to_string(number));
    refuseNext("the value " + inQuotes(word) + " is no number");
}

// The file has z fastest, and the grid x. A number of planes is turned at a time, so that whole
// cache lines are written.
void DxReader::readValues() {
    const auto nx = static_cast<std::size_t>(m_grid.points[0]);
    const auto ny = static_cast<std::size_t>(m_grid.points[1]);
    const auto nz = static_cast<std::size_t>(m_grid.points[2]);
    const std::size_t plane = ny * nz;
    const std::size_t atOnce = std::min<std::size_t>(16, nx);
    requireMemory(m_report, sizeof(float) * (nx + atOnce) * plane);
    std::vector<float> slab(atOnce * plane);
    m_grid.values.resize(nx * plane);
    for (std::size_t x = 0; x < nx; x += atOnce) {
        const std::size_t width = std::min(atOnce, nx - x);
        for (std::size_t i = 0; i != width * plane; ++i)
            slab[i] = readValue(x * plane + i);
        for (std::size_t yz = 0; yz != plane; ++yz) {
            float* const to = m_grid.values.data() + x + nx * (yz / nz + ny * (yz % nz));
            for (std::size_t i = 0; i != width; ++i)
                to[i] = slab[i * plane + yz];
        }
    }
}

void DxReader::checkEnd() {
    if (m_words.takeNumber())
        refuse("more values follow than the " + std::to_string(points()) +
               " that the array promises");
    for (std::string_view word; !(word = m_words.peek()).empty() && word != "end";) {
        if (word != "attribute" && word != "object" && word != "component")
            refuseWithout("an attribute or an object behind the values");
        m_words.take();
        if (word == "object") {
            m_words.take();
            if (m_words.take() == "class" && m_words.peek() == "array") {
                m_report.remark(FileReport::Kind::Map, m_words.line(),
                                "the file has further values; only the first ones were read");
                return;
            }
        }
        m_words.skipLine();
    }
}

void DxReader::readObject() {
    m_words.take(); // its number or name
    if (m_words.peek() != "class")
        refuseWithout("the object's \"class\"");
    m_words.take();
    const std::string_view kind = m_words.take();
    if (kind == "gridpositions")
        readPositions();
    else if (kind == "array")
        readArray();
    else
        m_words.skipLine();
}

TAVIK::GridValues DxReader::read() {
    while (m_grid.values.empty()) {
        const std::string_view word = m_words.peek();
        if (word == "object") {
            m_words.take();
            readObject();
        } else if (word == "attribute" || word == "component") {
            m_words.take();
            m_words.skipLine();
        } else {
            refuseWithout(m_grid.points[0] == 0 ? "an object of gridpositions"
                                                : "the array of the grid's values");
        }
    }
    checkEnd();
    return std::move(m_grid);
}

bool beginsWithObject(const FileSample& sample) {
    DxWords words(sample.bytes);
    return words.take() == "object";
}

FileContent readDx(Bytes bytes, const std::string& /*stem*/, FileReport& report) {
    return {{}, DxReader(std::move(bytes), report).read()};
}

constexpr auto endings = std::to_array<std::string_view>({".dx"});

} // namespace

extern const FileFormat openDxFormat = {.name = "OpenDX",
                                        .holds = FileFormat::Holds::Map,
                                        .form = FileFormat::Form::Text,
                                        .endings = endings,
                                        .recognises = beginsWithObject,
                                        .read = readDx};

} // namespace memory_host
