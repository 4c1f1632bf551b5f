#include "ReplaceFile.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace memory_host {

namespace {

const char* const otherPlace = "accepted is saving it in another place";

std::string systemText(int error) {
    return std::generic_category().message(error);
}

// A limit to the size of files ends the program by a signal, unless it is blocked; then writing
// fails like on a full disk.
class NoSizeSignal {
public:
    NoSizeSignal() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
    }
    NoSizeSignal(const NoSizeSignal&) = delete;
    NoSizeSignal& operator=(const NoSizeSignal&) = delete;
    ~NoSizeSignal() {
        const timespec none{};
        while (sigtimedwait(&m_signals, nullptr, &none) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    sigset_t m_signals{};
    sigset_t m_before{};
};

// What a path leads to, through all symbolic links, also where there is no file yet.
std::filesystem::path targetOf(const SaveReport& report) {
    constexpr int mostLinks = 40; // As the system has it.
    std::filesystem::path path = report.path();
    std::error_code problem;
    for (int i = 0; i != mostLinks && std::filesystem::is_symlink(path, problem); ++i) {
        const std::filesystem::path link = std::filesystem::read_symlink(path, problem);
        if (problem)
            break;
        path = path.parent_path() / link; // An absolute one replaces what stands before it.
    }
    if (path.filename().empty() || std::filesystem::is_symlink(path, problem))
        report.refuse("is no name of a file", otherPlace);
    return path;
}

// A new file beside the one that is to be replaced; it goes away unless it gets its name.
class NewFile {
public:
    NewFile(const SaveReport& report, const std::filesystem::path& target, bool isOldThere)
        : m_report(report), m_target(target),
          m_folder(target.has_parent_path() ? target.parent_path() : std::filesystem::path(".")) {
        const std::string start =
            (m_folder / ("." + target.filename().string().substr(0, 200) + '.')).string();
        // A new one gets the usual permissions. Beside an old one, nobody else may read it yet.
        const mode_t mode = isOldThere ? 0600 : 0666;
        std::random_device random;
        do {
            m_name = start + std::to_string(random());
            m_file = ::open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        } while (m_file < 0 && errno == EEXIST);
        if (m_file < 0)
            fail("cannot be made in its folder", errno);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        ::close(m_file);
        if (!m_isNamed)
            ::unlink(m_name.c_str());
    }

    void write(std::string_view bytes);
    void takePermissions(const struct stat& old);
    FileStamp finish();

private:
    [[noreturn]] void fail(const std::string& what, int error) const {
        m_report.refuse(what + ": " + systemText(error), otherPlace);
    }
    void nameIt();

    const SaveReport& m_report;
    const std::filesystem::path& m_target;
    std::filesystem::path m_folder;
    std::string m_name;
    int m_file = -1;
    bool m_isNamed = false;
};

void NewFile::write(std::string_view bytes) {
    constexpr std::size_t portion = std::size_t{4} << 20;
    const NoSizeSignal block;
    for (std::size_t done = 0; done != bytes.size();) {
        m_report.advance(static_cast<double>(done) / static_cast<double>(bytes.size()));
        const ssize_t count =
            ::write(m_file, bytes.data() + done, std::min(portion, bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            fail("cannot be written", count < 0 ? errno : EIO);
        done += static_cast<std::size_t>(count);
    }
}

// As a program that wrote into the old file would leave it. Who may not give a file to its owner
// does not let others in by that.
void NewFile::takePermissions(const struct stat& old) {
    mode_t mode = old.st_mode & 07777U;
    if (::fchown(m_file, old.st_uid, old.st_gid) != 0 &&
        ::fchown(m_file, static_cast<uid_t>(-1), old.st_gid) != 0)
        mode &= 0707U;
    if (::fchmod(m_file, mode) != 0)
        fail("cannot get its permissions", errno);
}

FileStamp NewFile::finish() {
    if (::fsync(m_file) != 0)
        fail("cannot be written", errno);
    nameIt();
    return stampOf(m_file);
}

void NewFile::nameIt() {
    if (::rename(m_name.c_str(), m_target.c_str()) != 0)
        fail("cannot be replaced", errno);
    m_isNamed = true;
    // The new name is on the disk when the folder is. Some file systems cannot be asked for it.
    const int folder = ::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

void checkOld(const SaveReport& report, const struct stat& old) {
    if (S_ISDIR(old.st_mode))
        report.refuse("is a folder", otherPlace);
    if (!S_ISREG(old.st_mode))
        report.refuse("is no regular file", otherPlace);
    if ((old.st_mode & 0222U) == 0)
        report.refuse("is write-protected", otherPlace);
}

void checkUnchanged(const SaveReport& report, const std::filesystem::path& target,
                    const FileStamp& expected) {
    const FileStamp now = stampOf(target.string());
    if (expected.isKnown() && now.isKnown() && now != expected)
        report.refuse("was changed by someone else since it was read",
                      "accepted is replacing it, or saving in another place",
                      SaveError::Reason::ChangedByOthers);
}

} // namespace

FileStamp replaceFile(const SaveReport& report, std::string_view bytes, const FileStamp& expected) {
    const std::filesystem::path target = targetOf(report);
    struct stat old {};
    const bool isThere = ::stat(target.c_str(), &old) == 0;
    if (isThere)
        checkOld(report, old);
    checkUnchanged(report, target, expected);
    NewFile file(report, target, isThere);
    file.write(bytes);
    if (isThere)
        file.takePermissions(old);
    checkUnchanged(report, target, expected); // The writing may have taken a while.
    return file.finish();
}

} // namespace memory_host
