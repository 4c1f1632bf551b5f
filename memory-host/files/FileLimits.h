// How much is read and built before a file is refused, and how much memory is free.
#pragma once

#include "HostExport.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace memory_host {

class FileReport;

/// The memory that this process may still take, in bytes, without making others run out: what the
/// system has available, what its control groups leave, and what its address space leaves. `root`
/// is the folder that /proc and /sys stand in.
HOST_EXPORT std::size_t freeMemory(const std::string& root = {});

struct FileLimits {
    std::size_t bytes = std::size_t{4} << 30; ///< of a file, also when it is unpacked
    std::size_t atoms = 100'000'000;          ///< of all entries of a file
    /// How long a pipe is waited for that nobody has opened to write into it.
    std::chrono::milliseconds patience{10'000};
    std::function<std::size_t()> freeMemory = [] { return memory_host::freeMemory(); };
};

/// The limits for files that are read from now on. Not to be changed while one is.
HOST_EXPORT FileLimits& fileLimits();

/// Refuses the file unless so many bytes are free. What is less than a megabyte is not asked for.
void requireMemory(const FileReport& report, std::size_t bytes);

} // namespace memory_host
