// Limits for reading and building before a file is refused, and how much memory is free.
#pragma once

#include "HostExport.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace memory_host {

class FileReport;

/// The memory in bytes that this process may still allocate without making others run out: the
/// least of what the system has available and of what its control groups and its address space
/// limit leave. `root` is the folder that contains /proc and /sys.
HOST_EXPORT std::size_t freeMemory(const std::string& root = {});

struct FileLimits {
    std::size_t bytes = std::size_t{4} << 30; ///< of a file, also when it is unpacked
    std::size_t atoms = 100'000'000;          ///< of all entries of a file
    /// How long to wait until someone opens a pipe for writing.
    std::chrono::milliseconds patience{10'000};
    std::function<std::size_t()> freeMemory = [] { return memory_host::freeMemory(); };
};

/// The limits for files that are read from now on. Not to be changed while a file is being read.
HOST_EXPORT FileLimits& fileLimits();

/// Refuses the file unless that many bytes are free. Less than a megabyte is not checked.
void requireMemory(const FileReport& report, std::size_t bytes);

} // namespace memory_host
