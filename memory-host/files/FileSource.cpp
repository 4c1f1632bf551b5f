#include "FileSource.h"

#include "FileLimits.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace memory_host {

namespace {

std::string systemText(int error) {
    return std::generic_category().message(error);
}

} // namespace

std::string acceptedSizes() {
    return "accepted are files of up to 4 GiB, also when they are unpacked";
}

FileSource::FileSource(const FileReport& report, std::stop_token stop)
    : m_report(report), m_stop(std::move(stop)) {
    // Without O_NONBLOCK, open() would wait for a writer of the pipe.
    m_file = ::open(report.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct Close {
        int& file;
        bool isWanted = true;
        ~Close() {
            if (isWanted && file >= 0)
                ::close(file);
        }
    } close{m_file};
    struct stat state {};
    if (report.path().empty())
        report.refuse(0, "the name of the file is empty", acceptedFiles());
    if (m_file < 0 || ::fstat(m_file, &state) != 0)
        report.refuse(0, "cannot be read: " + systemText(errno), acceptedFiles());
    if (S_ISDIR(state.st_mode))
        report.refuse(0, "is a folder", acceptedFiles());
    if (S_ISCHR(state.st_mode) && ::isatty(m_file))
        report.refuse(0, "is a terminal", "accepted are files and pipes");
    m_stamp = stampOf(m_file);
    if (S_ISREG(state.st_mode)) {
        m_size = static_cast<std::size_t>(state.st_size);
        if (*m_size == 0)
            report.refuse(0, "is empty", acceptedFiles());
        if (*m_size > fileLimits().bytes)
            report.refuse(0, "is too large: " + std::to_string(*m_size) + " bytes",
                          acceptedSizes());
    } else if (!S_ISFIFO(state.st_mode) && !S_ISCHR(state.st_mode)) {
        report.refuse(0, "is neither a regular file nor a pipe", acceptedFiles());
    }
    close.isWanted = false;
}

FileSource::~FileSource() {
    ::close(m_file);
}

std::optional<std::uint32_t> FileSource::lastWord() const {
    std::array<unsigned char, 4> bytes{};
    if (!m_size || *m_size < bytes.size() ||
        ::pread(m_file, bytes.data(), bytes.size(), static_cast<off_t>(*m_size - bytes.size())) !=
            static_cast<ssize_t>(bytes.size()))
        return std::nullopt;
    std::uint32_t word = 0;
    for (std::size_t i = bytes.size(); i-- != 0;)
        word = word << 8 | bytes[i];
    return word;
}

// Reads the available bytes, and waits for them in a pipe; 0 at the end. A pipe that no writer has
// opened yet also reads as ended, but poll() does not report a hang-up for it.
std::size_t FileSource::readSome(char* to, std::size_t count) {
    constexpr int step = 50; // ms
    for (std::chrono::milliseconds waited{0};;) {
        if (m_stop.stop_requested())
            m_report.refuse(0, "reading it was cancelled", "accepted is opening it again");
        pollfd ready{m_file, POLLIN, 0};
        const bool isReady = m_size || ::poll(&ready, 1, step) > 0;
        const ssize_t got = ::read(m_file, to, count);
        if (got > 0 || (got == 0 && (isReady || m_hasWriter)))
            return static_cast<std::size_t>(got);
        if (got < 0 && errno != EINTR && errno != EAGAIN)
            m_report.refuse(0, "cannot be read: " + systemText(errno), acceptedFiles());
        m_hasWriter = m_hasWriter || (got < 0 && errno == EAGAIN);
        waited += std::chrono::milliseconds(step);
        if (!m_hasWriter && waited >= fileLimits().patience)
            m_report.refuse(0, "is a pipe that nobody writes to", acceptedFiles());
    }
}

std::size_t FileSource::read(char* to, std::size_t count) {
    constexpr std::size_t portion = std::size_t{16} << 20;
    std::size_t done = 0;
    while (done < count) {
        const std::size_t got = readSome(to + done, std::min(count - done, portion));
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

} // namespace memory_host
