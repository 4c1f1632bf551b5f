#include "JournalFolder.h"

#include "JournalFiles.h"
#include "JournalState.h"
#include "files/ReplaceFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace memory_host {

namespace {

namespace fs = std::filesystem;

// A lock that ends with its file; -1 if someone else has it, or it cannot be opened.
int lockedFile(const std::string& path, int wait) noexcept {
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ::flock(file, LOCK_EX | wait) == 0)
        return file;
    ::close(file);
    return -1;
}

// RAII: who makes a folder, and who looks for abandoned ones, does so alone.
class AllFolders {
public:
    explicit AllFolders(const std::string& all) : m_file(lockedFile(all + "/lock", 0)) {}
    AllFolders(const AllFolders&) = delete;
    AllFolders& operator=(const AllFolders&) = delete;
    ~AllFolders() {
        if (m_file >= 0)
            ::close(m_file);
    }

private:
    int m_file;
};

std::string lockIn(const std::string& folder) {
    return folder + "/lock";
}

[[noreturn]] void refuse(const std::string& path, int error) {
    SaveReport(path).refuse("cannot be made: " + std::generic_category().message(error),
                            "accepted is a folder that can be written");
}

void makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        refuse(path, errno);
}

std::string joined(const JournalState& state) {
    std::string bytes(journalMark);
    for (const JournalBytes& section : state.sections) {
        JournalBytes size;
        size.number(section.size());
        size.appendTo(bytes);
        section.appendTo(bytes);
    }
    return bytes;
}

void writeText(const std::string& folder, const JournalState::Beside& beside) {
    makeFolder(folder);
    const SaveReport report(folder + '/' + beside.textName);
    const SourceText& text = *beside.text;
    if (text.gzipped().empty())
        replaceFile(report, text.unpack()->text());
    else
        replaceFile(report, text.gzipped());
}

void writeBeside(const std::string& path, const JournalState::Beside& beside) {
    if (beside.text) {
        writeText(path, beside);
        return;
    }
    std::string bytes;
    beside.bytes.appendTo(bytes);
    writeJournalFile(path, bytes);
}

} // namespace

std::string journalIn(const std::string& folder) {
    return folder + "/journal";
}

JournalFolder::JournalFolder(JournalFolder&& other) noexcept
    : m_path(std::move(other.m_path)), m_lock(std::exchange(other.m_lock, -1)),
      m_time(other.m_time), m_written(std::move(other.m_written)) {}

JournalFolder& JournalFolder::operator=(JournalFolder&& other) noexcept {
    std::swap(m_path, other.m_path);
    std::swap(m_lock, other.m_lock);
    std::swap(m_time, other.m_time);
    m_written.swap(other.m_written);
    return *this;
}

JournalFolder::~JournalFolder() {
    if (m_lock >= 0)
        ::close(m_lock);
}

JournalFolder JournalFolder::make(const std::string& all) {
    std::error_code problem;
    fs::create_directories(fs::path(all).parent_path(), problem);
    makeFolder(all);
    const AllFolders alone(all);
    JournalFolder made;
    made.m_path = all + '/' + std::to_string(::getpid()) + ".XXXXXX";
    if (!::mkdtemp(made.m_path.data()))
        refuse(made.m_path, errno);
    made.m_lock = lockedFile(lockIn(made.m_path), LOCK_NB);
    if (made.m_lock < 0)
        refuse(made.m_path, errno);
    return made;
}

std::vector<JournalFolder> JournalFolder::abandoned(const std::string& all) noexcept try {
    std::error_code problem;
    std::vector<JournalFolder> found;
    if (!fs::is_directory(all, problem))
        return found;
    const AllFolders alone(all);
    for (fs::directory_iterator it(all, problem), end; !problem && it != end;
         it.increment(problem)) {
        std::error_code none;
        if (!it->is_directory(none) || it->is_symlink(none))
            continue;
        JournalFolder folder;
        folder.m_path = it->path().string();
        folder.m_lock = lockedFile(lockIn(folder.m_path), LOCK_NB);
        struct stat journal {};
        if (folder.m_lock < 0)
            continue;
        if (::stat(folder.journal().c_str(), &journal) != 0) {
            folder.remove();
            continue;
        }
        folder.m_time = journal.st_mtim.tv_sec;
        found.push_back(std::move(folder));
    }
    std::ranges::sort(found, {}, &JournalFolder::m_time);
    return found;
} catch (const std::exception&) {
    return {};
}

bool JournalFolder::isThere() const {
    std::error_code problem;
    return fs::is_directory(m_path, problem);
}

void JournalFolder::write(JournalState& state) {
    if (state.isAsRead) {
        ::unlink(journal().c_str());
    } else {
        for (const JournalState::Beside& beside : state.besides) {
            writeBeside(m_path + '/' + beside.name, beside);
            m_written.insert(beside.name);
        }
        writeJournalFile(journal(), joined(state));
    }
    removeUnneeded(state.needed);
}

void JournalFolder::removeUnneeded(const std::set<std::string>& needed) {
    std::erase_if(m_written, [&](const std::string& name) {
        std::error_code problem;
        return !needed.contains(name) && fs::remove_all(m_path + '/' + name, problem) > 0;
    });
}

void JournalFolder::remove() noexcept try {
    std::error_code problem;
    // First, as nobody is to be offered what lacks files beside it.
    fs::remove(journal(), problem);
    fs::remove_all(m_path, problem);
    if (m_lock >= 0)
        ::close(std::exchange(m_lock, -1));
} catch (const std::bad_alloc&) { // The next start finds it, and removes it or asks.
}

} // namespace memory_host
