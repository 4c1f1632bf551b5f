#include "Logger.h"
#include "Services.h"
#include "Text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>
#include <utility>

namespace memory_host {

namespace {

struct Log {
    std::mutex mutex;
    std::FILE* file = nullptr;
    QString fileName;
    LogSink sink;
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

/// What a terminal or an editor can show: a name out of a file must not drive a terminal.
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

/// Writes a line. Without memory for more, '?' stands for what is no plain text.
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

/// Gives the file up, so that the line about it does not go there.
void closeFile(Log& log) {
    if (log.file)
        std::fclose(log.file);
    log.file = nullptr;
}

std::string cannotWrite(const QString& fileName, int error) {
    return "Log file " + fileName.toStdString() +
           ": it cannot be written: " + std::strerror(error) + "; the log goes on without it";
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
            QDir().mkpath(QFileInfo(file).absolutePath());
            log.file = std::fopen(QFile::encodeName(file).constData(), "ae");
            if (!log.file)
                problem = cannotWrite(file, errno);
        }
    }
    if (!problem.empty())
        Logger::Write(problem);
}

LogSink setLogSink(LogSink sink) {
    Log& log = theLog();
    const std::lock_guard lock(log.mutex);
    return std::exchange(log.sink, std::move(sink));
}

} // namespace memory_host

void Logger::Write(const std::string& line) {
    using namespace memory_host;
    Log& log = theLog();
    LogSink sink;
    std::string problem;
    std::string oneLine;
    const std::string* text = &oneLine;
    try {
        oneLine = onOneLine(line);
    } catch (const std::bad_alloc&) {
        text = &line; // That memory has run out is the last thing to be kept silent about.
    }
    {
        const std::lock_guard lock(log.mutex);
        if (log.file &&
            (std::fprintf(log.file, "%s ", timeNow().data()) < 0 || !put(log.file, *text))) {
            problem = cannotWrite(log.fileName, errno);
            closeFile(log);
        }
        sink = log.sink;
        if (!sink)
            put(stderr, *text);
    }
    // Outside of the lock: a sink may write lines of its own.
    if (sink)
        sink(*text);
    if (!problem.empty())
        Write(problem);
}
