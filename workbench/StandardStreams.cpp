#include "StandardStreams.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace workbench {

void secureStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() returns the lowest free descriptor, which is this one. It is opened for the wrong
        // direction, so that using it is an error.
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
}

bool writeToStandardOutput(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    std::fprintf(stderr, "workbench: standard output cannot be written: %s\n",
                 std::strerror(errno));
    return false;
}

} // namespace workbench
