// The format of a colour-map file is described in data/BlueRedTR.cm.
#include "Colormap.h"
#include "DataFolder.h"
#include "Logger.h"
#include "TextFile.h"

#include <QDir>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

using namespace memory_host;

constexpr int mostEntries = 65536;

struct Stop {
    double position = 0.0;
    std::array<int, 4> rgba{0, 0, 0, 255};
};

/// Removes the next word from `line` and returns it; empty at the end.
std::string_view takeWord(std::string_view& line) {
    line = trimmed(line);
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(word.size());
    return word;
}

bool parseChannel(std::string_view word, int& channel) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), channel);
    return error == std::errc() && end == word.data() + word.size() && channel >= 0 &&
           channel <= 255;
}

/// Reads one stop; returns what is wrong with it.
std::string parseStop(std::string_view line, Stop& stop) {
    const std::string_view position = takeWord(line);
    if (!parseNumber(position, stop.position) || !(stop.position >= 0.0 && stop.position <= 1.0))
        return quoted(position) + " is no position from 0 to 1";
    for (std::size_t i = 0; i < stop.rgba.size(); ++i) {
        const std::string_view word = takeWord(line);
        if (i == 3 && word.empty())
            return {};
        if (word.empty())
            return "a stop needs a position, red, green and blue";
        if (!parseChannel(word, stop.rgba[i]))
            return quoted(word) + " is no whole number from 0 to 255";
    }
    const std::string_view rest = takeWord(line);
    return rest.empty() ? std::string() : quoted(rest) + " stands behind the alpha";
}

/// Reads the stops of a file; returns what is wrong with it, beginning with the line.
std::string readStops(const QString& path, std::vector<Stop>& stops) {
    const TextFile file = readTextFile(path);
    if (!file.problem.empty())
        return ": " + file.problem;
    std::string problem;
    int last = 0;
    forEachLine(file.text(), [&](std::string_view line, int number) {
        line = trimmed(line.substr(0, line.find('#')));
        if (line.empty())
            return true;
        last = number;
        Stop stop;
        problem = parseStop(line, stop);
        if (problem.empty() && stops.empty() && stop.position != 0.0)
            problem = "the first stop must be at position 0";
        if (problem.empty() && !stops.empty() && stop.position < stops.back().position)
            problem = "the positions must ascend";
        stops.push_back(stop);
        return problem.empty();
    });
    if (problem.empty() && stops.empty())
        return ": it holds no stops; a stop is a line 'position red green blue [alpha]'";
    if (problem.empty() && stops.back().position != 1.0)
        problem = "the last stop must be at position 1";
    return problem.empty() ? std::string() : ", line " + std::to_string(last) + ": " + problem;
}

/// The colour at `position`, from 0 to 1. Where two stops share a position it is the upper one's.
Color colorAt(const std::vector<Stop>& stops, double position) {
    const auto above =
        std::upper_bound(stops.begin(), stops.end(), position,
                         [](double value, const Stop& stop) { return value < stop.position; });
    const Stop& to = above == stops.end() ? stops.back() : *above;
    const Stop& from = *std::prev(above);
    const double span = to.position - from.position;
    const double part = span > 0.0 ? (position - from.position) / span : 0.0;
    std::array<int, 4> mixed{};
    for (std::size_t i = 0; i < mixed.size(); ++i)
        mixed[i] = static_cast<int>(std::lround(from.rgba[i] + part * (to.rgba[i] - from.rgba[i])));
    return Color(QColor(mixed[0], mixed[1], mixed[2], mixed[3]));
}

} // namespace

struct Colormap::Table {
    std::vector<Color> entries;
    float min = 0.0F;
    float max = 1.0F;
};

Colormap::Colormap(const std::string& file, int entries, const std::string& name)
    : m_table(std::make_unique<Table>()) {
    const QString path = QDir(dataFolder()).filePath(decodeText(file));
    std::vector<Stop> stops;
    std::string problem;
    if (entries < 1 || entries > mostEntries)
        problem = ": " + std::to_string(entries) + " entries are asked for; 1 to " +
                  std::to_string(mostEntries) + " are possible";
    else
        problem = readStops(path, stops);
    if (!problem.empty()) {
        Logger::Write("Colour map '" + name + "' " + path.toStdString() + problem);
        return;
    }
    m_table->entries.reserve(static_cast<std::size_t>(entries));
    for (int i = 0; i < entries; ++i)
        m_table->entries.push_back(
            colorAt(stops, entries > 1 ? static_cast<double>(i) / (entries - 1) : 0.0));
}

Colormap::~Colormap() = default;

void Colormap::setMinMax(float min, float max) {
    m_table->min = min;
    m_table->max = max;
}

bool Colormap::isValid() const {
    return !m_table->entries.empty();
}

Color Colormap::lookupValue(float value) const {
    const auto& [entries, min, max] = *m_table;
    if (entries.empty())
        return {};
    // In double, because the range of two floats may overflow a float.
    const double low = min;
    const double span = static_cast<double>(max) - low;
    const double part = span == 0.0 ? (value > min ? 1.0 : 0.0) : (value - low) / span;
    if (!(part > 0.0))
        return entries.front();
    if (part >= 1.0)
        return entries.back();
    return entries[static_cast<std::size_t>(
        std::lround(part * static_cast<double>(entries.size() - 1)))];
}
