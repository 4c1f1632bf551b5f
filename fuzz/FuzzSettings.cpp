// The settings file: each line is accepted or reported once, and affects no other line. Where all
// is ASCII the values are compared with those of a plain parser.
#include "Config.h"
#include "Fuzzing.h"
#include "services/Settings.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using fuzzing::require;

/// So many wrong lines are reported one by one; one more line counts the others.
constexpr std::size_t mostReports = 10;

/// A plain parser of the file.
struct Plain {
    explicit Plain(const std::string& text) {
        std::istringstream lines(text);
        std::string section;
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            line = withoutBlanks(line);
            const std::size_t sign = line.find('=');
            if (line.empty() || line[0] == '#' || line[0] == ';')
                continue;
            if (line[0] == '[' && line.back() == ']')
                section = withoutBlanks(line.substr(1, line.size() - 2));
            else if (sign == std::string::npos || withoutBlanks(line.substr(0, sign)).empty())
                ++wrongLines;
            else
                values[{section, withoutBlanks(line.substr(0, sign))}] =
                    withoutBlanks(line.substr(sign + 1));
        }
    }

    static std::string withoutBlanks(std::string text) {
        while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
            text.pop_back();
        while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
            text.erase(text.begin());
        return text;
    }

    std::map<std::pair<std::string, std::string>, std::string> values;
    std::size_t wrongLines = 0;
};

void requireSetting(const std::string& section, const std::string& key, const std::string& value) {
    bool exists = false;
    const std::string found = Config::GetSetting(section, key).ToString(&exists);
    require(exists, "a setting of the file is there", section + '/' + key);
    require(found == value, "a setting has the value of the file", found);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.ini");
    (void)fuzzing::takeLog();
    const fuzzing::Budget budget(size, {.seconds = 20.0e-6, .memory = 500.0});
    const std::string input(fuzzing::textOf(data, size));
    file.write(input + "\n[Last]\nkey = the last line\n");
    memory_host::setSettingsFile(QString::fromStdString(file.path()));
    requireSetting("Last", "key", "the last line");

    const std::vector<std::string> log = fuzzing::takeLog();
    for (std::size_t i = 0; i != log.size(); ++i)
        fuzzing::requireLine(log[i],
                             "Settings file " + file.path() + (i < mostReports ? ", line " : ": "));
    const Plain plain(input);
    if (std::ranges::all_of(input, [](unsigned char c) { return c < 0x80; })) {
        require(log.size() == std::min(plain.wrongLines, mostReports + 1),
                "each wrong line is told, or counted behind the first ones");
        for (const auto& [name, value] : plain.values)
            if (name != std::pair<std::string, std::string>("Last", "key"))
                requireSetting(name.first, name.second, value);
    }
    for (const auto& [name, value] : plain.values)
        (void)Config::GetSetting(name.first, name.second);
    require(fuzzing::takeLog().empty(), "a wrong line is told once");
    budget.check();
    return 0;
}
