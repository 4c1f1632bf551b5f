#include "Log.h"
#include "Logger.h"
#include "TextFile.h"

#include <QFile>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace memory_host {

namespace {

struct Log {
    std::mutex mutex;
    std::FILE* file = nullptr;
    QString fileName;
    LogSink sink;
    LogSink listener;
    bool isErrorLost = false; ///< a line could not be written to standard error
    std::atomic<LogLevel> level = LogLevel::Usual;
};

Log& theLog() {
    // Never destroyed: a plug-in's static objects may still write while the process ends.
    static Log* const log = new Log;
    return *log;
}

std::string onOneLine(const std::string& line) {
    std::string text;
    text.reserve(line.size());
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\r' && i + 1 < line.size() && line[i + 1] == '\n')
            continue;
        text += line[i] == '\n' || line[i] == '\r' ? ' ' : line[i];
    }
    return text;
}

/// Replaces line separators and control characters: a name out of a file must not drive a terminal.
std::string shown(const std::string& line) {
    QString text = decodeText(line);
    for (QChar& c : text) {
        if (c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph)
            c = u' ';
        else if (c.category() == QChar::Other_Control && c != u'\t')
            c = u'?';
    }
    return text.toStdString();
}

/// Local time as 2001-02-03T04:05:06. From the C library, which works until the process is gone.
std::array<char, 32> timeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::array<char, 32> text{};
    localtime_r(&now, &local);
    std::strftime(text.data(), text.size(), "%FT%T", &local);
    return text;
}

/// Writes a line. If memory runs out, '?' stands for each character that is not plain ASCII.
bool put(std::FILE* file, const std::string& line) {
    bool good = true;
    try {
        const std::string text = shown(line) + "\n";
        good = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    } catch (const std::bad_alloc&) {
        for (const char c : line)
            good = good && std::fputc(c >= ' ' && c <= '~' ? c : '?', file) != EOF;
        good = good && std::fputc('\n', file) != EOF;
    }
    return std::fflush(file) == 0 && good;
}

/// Closes the file, so that the line about its failure is not written to it.
void closeFile(Log& log) {
    if (log.file)
        std::fclose(log.file);
    log.file = nullptr;
}

std::string cannotWrite(const QString& fileName, const std::string& reason) {
    return "Log file " + fileName.toStdString() + ": it cannot be written: " + reason +
           "; the log goes on without it";
}

/// Opens a file for appending, and makes its folder; null and a reason if that fails.
std::FILE* openAtEnd(const QString& fileName, std::string& reason) {
    const std::filesystem::path path(QFile::encodeName(fileName).toStdString());
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::absolute(path).parent_path(), error);
    if (error) {
        reason = error.message();
        return nullptr;
    }
    // Without O_NONBLOCK, opening a pipe without a reader would block for ever.
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
    reason = std::strerror(errno);
    const bool isUnread = descriptor < 0 && errno == ENXIO;
    struct stat found {};
    const bool isLasting = descriptor >= 0 && fstat(descriptor, &found) == 0 &&
                           (S_ISREG(found.st_mode) || S_ISCHR(found.st_mode));
    std::FILE* const file = isLasting ? fdopen(descriptor, "a") : nullptr;
    if (file) {
        fcntl(descriptor, F_SETFL, O_APPEND);
        return file;
    }
    if (isUnread || (descriptor >= 0 && !isLasting))
        reason = "it is no regular file";
    if (descriptor >= 0)
        close(descriptor);
    return nullptr;
}

} // namespace

void setLogFile(const QString& file) {
    Log& log = theLog();
    std::string problem;
    {
        const std::lock_guard lock(log.mutex);
        closeFile(log);
        log.fileName = file;
        if (!file.isEmpty()) {
            std::string reason;
            log.file = openAtEnd(file, reason);
            if (!log.file)
                problem = cannotWrite(file, reason);
        }
    }
    if (!problem.empty())
        Logger::Write(problem);
}

void setLogLevel(LogLevel level) {
    theLog().level = level;
}

LogSink setLogSink(LogSink sink) {
    Log& log = theLog();
    const std::lock_guard lock(log.mutex);
    return std::exchange(log.sink, std::move(sink));
}

LogSink setLogListener(LogSink listener) {
    Log& log = theLog();
    const std::lock_guard lock(log.mutex);
    return std::exchange(log.listener, std::move(listener));
}

namespace {

void writeLine(const std::string& line, bool isHeard) {
    Log& log = theLog();
    LogSink sink;
    LogSink listener;
    std::string problem;
    std::string errorProblem;
    std::string oneLine;
    const std::string* text = &oneLine;
    try {
        oneLine = onOneLine(line);
    } catch (const std::bad_alloc&) {
        text = &line; // An unedited line is better than none.
    }
    {
        const std::lock_guard lock(log.mutex);
        if (log.file &&
            (std::fprintf(log.file, "%s ", timeNow().data()) < 0 || !put(log.file, *text))) {
            problem = cannotWrite(log.fileName, std::strerror(errno));
            closeFile(log);
        }
        sink = log.sink;
        if (isHeard)
            listener = log.listener;
        // Standard error cannot report its own failure, so that the file does, once.
        if (!sink && !put(stderr, *text) && !std::exchange(log.isErrorLost, true))
            errorProblem = std::string("Standard error cannot be written: ") + std::strerror(errno);
    }
    // Called without the lock, because they may write lines of its own.
    if (sink)
        sink(*text);
    if (listener)
        listener(*text);
    for (const std::string& later : {problem, errorProblem})
        if (!later.empty())
            writeLine(later, isHeard);
}

} // namespace

} // namespace memory_host

void Logger::Write(const std::string& line) {
    memory_host::writeLine(line, true);
}

void Logger::Debug(const std::string& line) {
    using namespace memory_host;
    if (theLog().level == LogLevel::Debug)
        writeLine(line, false);
}
