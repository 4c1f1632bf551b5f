// What the fuzz targets share: the input as a file, the host's log, and a check that stops the
// program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One input, as libFuzzer brings it; each target defines it. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Unless `holds`, prints what failed and aborts the program: a crash to libFuzzer.
void require(bool holds, const char* what, std::string_view detail = {});

/// Requires that a line for the user begins with `start`, and is a single line of readable length.
void requireLine(std::string_view line, std::string_view start);

/// A file that holds one input after the other, in a folder of its own, which TMPDIR may place in
/// memory. It is removed when the program ends.
class InputFile {
public:
    explicit InputFile(const std::string& name);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void write(std::string_view content) const;
    const std::string& path() const { return m_path; }
    const std::string& folder() const { return m_folder; }

private:
    std::string m_folder;
    std::string m_path;
    int m_file = -1;
};

/// The lines that the host has logged since the last call. The first call takes the log over.
std::vector<std::string> takeLog();

/// Processor time of this thread until now.
double secondsUsed();

/// The time and memory that an input may take: a fixed amount, and more for each of its bytes.
/// Sanitizers get more time. Only memory of the C++ allocator is counted, not Qt's own.
class Budget {
public:
    struct PerByte {
        double seconds;
        double memory; ///< bytes
    };
    /// Starts measuring.
    Budget(std::size_t bytes, PerByte perByte);
    /// Requires that time and memory since then are within the budget.
    void check() const;

private:
    double m_seconds;
    double m_memory;
    double m_startSeconds;
    double m_startMemory;
};

} // namespace fuzzing
