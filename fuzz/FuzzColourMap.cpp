// Colour maps: a map is read or refused with one line, whatever number of entries is asked for, and
// gives a colour for every value.
#include "Colormap.h"
#include "Fuzzing.h"
#include "services/DataFolder.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

using fuzzing::require;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();

/// Looks up values in and beyond a range.
void lookUp(Colormap& map, float min, float max) {
    map.setMinMax(min, max);
    const Color first = map.lookupValue(std::nanf(""));
    for (const float value :
         {-infinity, -largest, -1.0F, 0.0F, 0.3F, 1.0F, 1.0e-40F, largest, infinity, min, max})
        (void)map.lookupValue(value);
    if (!(min < max))
        return;
    require(map.lookupValue(min) == first && map.lookupValue(-infinity) == first,
            "values up to the range take the first colour");
    require(map.lookupValue(max) == map.lookupValue(infinity),
            "values beyond the range take the last colour");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.cm");
    memory_host::setDataFolder(QString::fromStdString(file.folder()));
    file.write(fuzzing::textOf(data, size));
    (void)fuzzing::takeLog();
    const fuzzing::Budget budget(size, {.seconds = 5.0e-6, .memory = 200.0});
    std::array<std::pair<Color, Color>, 4> ends{};
    std::array<bool, 4> isValid{};
    for (std::size_t i = 0; const int entries : {2, 1, 7, 256}) {
        Colormap map("input.cm", entries, "fuzzed");
        const std::vector<std::string> log = fuzzing::takeLog();
        require(log.size() == (map.isValid() ? 0U : 1U), "a refused map is one line of the log");
        if (!map.isValid())
            fuzzing::requireLine(log.front(), "Colour map 'fuzzed' " + file.path());
        ends[i] = {map.lookupValue(0.0F), map.lookupValue(1.0F)};
        isValid[i] = map.isValid();
        require(isValid[i] == isValid[0], "a file is a map or is none");
        require(ends[i].first == ends[0].first, "all maps of a file start alike");
        require(entries == 1 || ends[i].second == ends[0].second, "all maps of a file end alike");
        require(map.isValid() || ends[i].first == Color(), "a refused map is white");
        for (const auto& [min, max] :
             {std::pair(0.0F, 1.0F), std::pair(-largest, largest), std::pair(1.0F, 1.0F),
              std::pair(2.0F, -3.0F), std::pair(0.0F, infinity), std::pair(0.0F, 1.0e-45F)})
            lookUp(map, min, max);
        ++i;
    }
    budget.check();
    return 0;
}
