#include "FileStamp.h"

#include <sys/stat.h>

namespace memory_host {

namespace {

FileStamp stampOf(const struct stat& state) {
    if (!S_ISREG(state.st_mode))
        return {};
    return {state.st_dev, state.st_ino, state.st_size, state.st_mtim.tv_sec, state.st_mtim.tv_nsec};
}

} // namespace

FileStamp stampOf(int file) {
    struct stat state {};
    return ::fstat(file, &state) == 0 ? stampOf(state) : FileStamp();
}

FileStamp stampOf(const std::string& path) {
    struct stat state {};
    return ::stat(path.c_str(), &state) == 0 ? stampOf(state) : FileStamp();
}

} // namespace memory_host
