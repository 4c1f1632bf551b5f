#include "Fuzzing.h"

#include "HostExport.h"
#include "Services.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

// QRegExp loses what it has built of an expression that it then refuses.
extern "C" HOST_EXPORT const char* __lsan_default_suppressions(); // NOLINT: the sanitizer's name
extern "C" const char* __lsan_default_suppressions() {            // NOLINT
    return "leak:libQt6Core5Compat\n";
}

namespace fuzzing {

void require(bool holds, const char* what, std::string_view detail) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s%s%.*s\n", what, detail.empty() ? "" : ": ",
                 static_cast<int>(detail.size()), detail.data());
    std::abort();
}

void requireLine(std::string_view line, std::string_view start) {
    require(line.starts_with(start), "a message names what it is about", line);
    require(line.find_first_of("\r\n") == std::string_view::npos, "a message is one line", line);
    require(line.size() > start.size() + 10 && line.size() < start.size() + 1000,
            "a message has a text of a length that can be read", line);
}

InputFile::InputFile(const std::string& name) {
    const char* const parent = std::getenv("TMPDIR");
    m_folder = std::string(parent && *parent ? parent : "/tmp") + "/fuzz-XXXXXX";
    require(mkdtemp(m_folder.data()) != nullptr, "a folder for the inputs can be made", m_folder);
    m_path = m_folder + '/' + name;
    m_file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    require(m_file >= 0, "a file for the inputs can be made", m_path);
}

InputFile::~InputFile() {
    ::close(m_file);
    ::unlink(m_path.c_str());
    ::rmdir(m_folder.c_str());
}

void InputFile::write(std::string_view content) const {
    require(::ftruncate(m_file, 0) == 0 && ::pwrite(m_file, content.data(), content.size(), 0) ==
                                               static_cast<ssize_t>(content.size()),
            "the input can be written", m_path);
}

std::vector<std::string> takeLog() {
    static std::vector<std::string> lines;
    static const memory_host::LogSink before =
        memory_host::setLogSink([](const std::string& line) { lines.push_back(line); });
    return std::exchange(lines, {});
}

double secondsUsed() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace fuzzing
