// What the fuzz targets share: the input as a file, the host's log, and a stop where something does
// not hold.
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

/// Stops the program with a line that says what does not hold: a crash to libFuzzer.
void require(bool holds, const char* what, std::string_view detail = {});

/// Requires what holds for each line that a user gets to read: it starts as stated, and is one line
/// of a length that can be read.
void requireLine(std::string_view line, std::string_view start);

/// A file that holds one input after the other. It stands in a folder of its own, which TMPDIR may
/// place in memory, and goes when the program ends.
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

/// What an input may take: so much, and so much more for each of its bytes. Sanitizers make all of
/// it slower; memory is what the C++ allocator gave, Qt's own left out.
class Budget {
public:
    struct PerByte {
        double seconds;
        double memory; ///< bytes
    };
    /// Begins here.
    Budget(std::size_t bytes, PerByte perByte);
    /// Requires that what was taken since is within the budget.
    void check() const;

private:
    double m_seconds;
    double m_memory;
    double m_startSeconds;
    double m_startMemory;
};

} // namespace fuzzing
