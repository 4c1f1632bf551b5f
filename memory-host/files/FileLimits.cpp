#include "FileLimits.h"

#include "FileReport.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace memory_host {

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

// The first number in a file; nullopt if the file says "max" or does not exist.
std::optional<std::size_t> numberIn(const std::string& path) {
    std::ifstream file(path);
    std::size_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

// The number after a word at the start of a line.
std::optional<std::size_t> numberBehind(const std::string& path, const std::string& word) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::string first;
        std::size_t number = 0;
        if (fields >> first && first == word && fields >> number)
            return number;
    }
    return std::nullopt;
}

// The memory that a control group leaves; the kernel frees inactive file cache on demand.
std::size_t leftInGroup(const std::string& folder, const char* limitName, const char* usedName,
                        const char* cacheWord) {
    const auto limit = numberIn(folder + '/' + limitName);
    const auto used = numberIn(folder + '/' + usedName);
    if (!limit || !used)
        return unlimited;
    const std::size_t cached = numberBehind(folder + "/memory.stat", cacheWord).value_or(0);
    const std::size_t taken = *used - std::min(cached, *used);
    return *limit - std::min(taken, *limit);
}

// Each group limits those below it. Within a container the paths may be those of the outside.
std::size_t leftInGroups(const std::string& root) {
    std::size_t left = unlimited;
    std::ifstream file(root + "/proc/self/cgroup");
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos)
            continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        for (std::string path = line.substr(second + 1);;) {
            if (controllers.empty())
                left = std::min(left, leftInGroup(root + "/sys/fs/cgroup" + path, "memory.max",
                                                  "memory.current", "inactive_file"));
            else if (controllers.find("memory") != std::string::npos)
                left = std::min(left, leftInGroup(root + "/sys/fs/cgroup/memory" + path,
                                                  "memory.limit_in_bytes", "memory.usage_in_bytes",
                                                  "total_inactive_file"));
            if (path.size() <= 1)
                break;
            path.resize(std::max<std::size_t>(path.rfind('/'), 1));
        }
    }
    return left;
}

std::size_t leftInAddressSpace() {
    rlimit limit{};
    const auto pages = numberIn("/proc/self/statm");
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY || !pages)
        return unlimited;
    const std::size_t used = *pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return limit.rlim_cur - std::min<std::size_t>(used, limit.rlim_cur);
}

std::string megabytes(std::size_t bytes) {
    return std::to_string(bytes / 1'000'000) + " MB";
}

} // namespace

std::size_t freeMemory(const std::string& root) {
    std::size_t left = std::min(leftInGroups(root), leftInAddressSpace());
    if (const auto available = numberBehind(root + "/proc/meminfo", "MemAvailable:"))
        left = std::min(left, *available * 1024);
    return left;
}

FileLimits& fileLimits() {
    static FileLimits limits;
    return limits;
}

void requireMemory(const FileReport& report, std::size_t bytes) {
    constexpr std::size_t littleEnough = 1'000'000;
    if (bytes < littleEnough)
        return;
    const std::size_t left = fileLimits().freeMemory();
    if (bytes > left)
        report.refuse(0,
                      "needs about " + megabytes(bytes) + " of memory to go on, and " +
                          megabytes(left) + " are free",
                      "accepted are files that fit into the memory that is free");
}

} // namespace memory_host
