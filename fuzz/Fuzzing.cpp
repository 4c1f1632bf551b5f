#include "Fuzzing.h"

#include "HostExport.h"
#include "services/Log.h"

#ifdef __has_feature // clang
#define FUZZING_SANITIZED __has_feature(address_sanitizer)
#else
#define FUZZING_SANITIZED 0
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <utility>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

// QRegExp leaks what it has built of an expression that it then rejects.
extern "C" HOST_EXPORT const char* __lsan_default_suppressions(); // NOLINT: the sanitizer's name
extern "C" const char* __lsan_default_suppressions() {            // NOLINT
    return "leak:libQt6Core5Compat\n";
}

namespace {

std::atomic<std::size_t> memoryInUse = 0;
std::atomic<std::size_t> mostMemory = 0;

void* allocate(std::size_t size) noexcept {
    void* const block = std::malloc(size ? size : 1); // NOLINT: what operator new is made of
    const std::size_t now = memoryInUse += malloc_usable_size(block);
    std::size_t most = mostMemory;
    while (now > most && !mostMemory.compare_exchange_weak(most, now)) {
    }
    return block;
}

void release(void* block) noexcept {
    memoryInUse -= malloc_usable_size(block);
    std::free(block); // NOLINT
}

} // namespace

void* operator new(std::size_t size) {
    if (void* const block = allocate(size))
        return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
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

Budget::Budget(std::size_t bytes, PerByte perByte)
    : m_seconds(1.0 + perByte.seconds * static_cast<double>(bytes)),
      m_memory(16.0e6 + perByte.memory * static_cast<double>(bytes)), m_startSeconds(secondsUsed()),
      m_startMemory(static_cast<double>(memoryInUse)) {
    mostMemory = memoryInUse.load();
}

void Budget::check() const {
#if defined(__SANITIZE_ADDRESS__) || FUZZING_SANITIZED
    constexpr double slowness = 10.0;
#else
    constexpr double slowness = 1.0;
#endif
    const double seconds = secondsUsed() - m_startSeconds;
    const double memory = static_cast<double>(mostMemory) - m_startMemory;
    require(seconds <= slowness * m_seconds, "an input takes the time that its bytes allow",
            std::to_string(seconds) + " of " + std::to_string(slowness * m_seconds) + " s");
    require(memory <= m_memory, "an input takes the memory that its bytes allow",
            std::to_string(memory) + " of " + std::to_string(m_memory) + " bytes");
}

double secondsUsed() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace fuzzing
