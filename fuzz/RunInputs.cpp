// Runs a target without libFuzzer: on each file that is named, and on those in each folder. With
// --large in front, each of them is repeated until it is as long as inputs get.
#include "Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr std::size_t longestInput = 1'000'000;

std::vector<std::filesystem::path> filesAt(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path))
        return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void run(const std::filesystem::path& path, bool isLarge) {
    // If the program stops, the last path that is printed is the input that stopped it.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    fuzzing::require(file.good() || file.eof(), "an input can be read", path.native());
    for (const std::vector<char> once = bytes;
         isLarge && !once.empty() && bytes.size() + once.size() <= longestInput;)
        bytes.insert(bytes.end(), once.begin(), once.end());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    const bool isLarge = argc > 1 && std::string_view(argv[1]) == "--large";
    for (int i = isLarge ? 2 : 1; i < argc; ++i) {
        for (const std::filesystem::path& path : filesAt(argv[i])) {
            run(path, isLarge);
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
