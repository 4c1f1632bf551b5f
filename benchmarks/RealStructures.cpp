#include "RealStructures.h"

#include "DataMaker.h"
#include "Space.h"
#include "Traversal.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace benchmarks {

namespace {

constexpr double distanceBetweenCopies = 400.0;
constexpr std::size_t fewAtoms = 2000;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return content.str();
}

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> found;
    for (std::size_t at = 0; (at = line.find_first_not_of(' ', at)) != std::string_view::npos;) {
        const std::size_t end = std::min(line.find(' ', at), line.size());
        found.push_back(line.substr(at, end - at));
        at = end;
    }
    return found;
}

// The loop of atoms: its tags, and its rows, which are one line each.
struct AtomLoop {
    std::vector<std::string> tags;
    std::vector<std::string_view> rows;

    explicit AtomLoop(std::string_view content) {
        constexpr std::string_view prefix = "_atom_site.";
        for (std::size_t at = 0; at < content.size();) {
            const std::size_t end = std::min(content.find('\n', at), content.size());
            const std::string_view line = content.substr(at, end - at);
            if (line.substr(0, prefix.size()) == prefix)
                tags.emplace_back(words(line)[0]);
            else if (line.substr(0, 5) == "ATOM " || line.substr(0, 7) == "HETATM ")
                rows.push_back(line);
            at = end + 1;
        }
    }
    std::size_t column(const std::string& tag) const {
        for (std::size_t i = 0; i != tags.size(); ++i)
            if (tags[i] == "_atom_site." + tag)
                return i;
        throw std::runtime_error("the ribosome has no column " + tag);
    }
};

} // namespace

std::string madeFile(const std::string& folder, const std::string& name) {
    const std::filesystem::path made = std::filesystem::path(folder) / "made";
    std::filesystem::create_directories(made);
    return (made / name).string();
}

std::string ribosomeFile(const std::string& folder, int copies) {
    const std::string original = folder + "/6zu5.cif";
    if (copies == 1)
        return original;
    const std::string path = madeFile(folder, "6zu5x" + std::to_string(copies) + ".cif");
    if (std::filesystem::exists(path))
        return path;
    const std::string content = contentOf(original);
    AtomLoop loop(content);
    if (copies == 0) {
        copies = 1;
        loop.rows.resize(std::min(loop.rows.size(), fewAtoms));
    }
    const std::size_t x = loop.column("Cartn_x");
    const std::size_t author = loop.column("auth_asym_id");
    const std::size_t label = loop.column("label_asym_id");
    {
        std::ofstream file(path + ".part", std::ios::binary);
        file << "data_6zu5x" << copies << "\nloop_\n";
        for (const std::string& tag : loop.tags)
            file << tag << '\n';
        for (int copy = 0; copy != copies; ++copy)
            for (const std::string_view row : loop.rows) {
                const auto values = words(row);
                for (std::size_t i = 0; i != values.size(); ++i) {
                    if (i == x)
                        file << std::fixed << std::setprecision(3)
                             << std::stod(std::string(values[i])) + copy * distanceBetweenCopies;
                    else
                        file << values[i];
                    if (i == author || i == label)
                        file << '_' << copy + 1;
                    file << (i + 1 == values.size() ? '\n' : ' ');
                }
            }
        file << "#\n";
        if (!file.flush())
            throw std::runtime_error("cannot write " + path);
    }
    std::filesystem::rename(path + ".part", path);
    return path;
}

void emptySpace() {
    TAVIK::Space* space = TAVIK::Space::instance();
    while (space->ChildBegin() != space->ChildEnd())
        TAVIK::DataMaker::Destroy(*space->ChildBegin());
}

std::size_t rowCount(TAVIK::Compound* item) {
    std::size_t rows = 1;
    for (TAVIK::Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        rows += rowCount(*child);
    return rows;
}

std::size_t atomCount(TAVIK::Compound* item) {
    std::vector<TAVIK::Compound*> atoms;
    TAVIK::GetAtoms(item, atoms, true);
    return atoms.size();
}

} // namespace benchmarks
