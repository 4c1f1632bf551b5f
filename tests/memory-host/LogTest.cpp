#include "services/Log.h"
#include "Logger.h"
#include "TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace memory_host;

namespace {

/// Catches what the process writes to standard error.
class StandardError {
public:
    StandardError() : m_file(std::tmpfile()), m_before(dup(STDERR_FILENO)) {
        std::fflush(stderr);
        dup2(fileno(m_file), STDERR_FILENO);
    }
    ~StandardError() {
        giveBack();
        std::fclose(m_file);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    QByteArray text() {
        giveBack();
        std::rewind(m_file);
        QByteArray bytes(4096, '\0');
        bytes.resize(static_cast<qsizetype>(std::fread(bytes.data(), 1, 4096, m_file)));
        return bytes;
    }

private:
    void giveBack() {
        if (m_before < 0)
            return;
        std::fflush(stderr);
        dup2(m_before, STDERR_FILENO);
        close(m_before);
        m_before = -1;
    }

    std::FILE* m_file;
    int m_before;
};

} // namespace

class LogTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QByteArray logFile(const QString& name = "log.txt") {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    /// The lines of the log file without the time before each.
    QList<QByteArray> logFileLines() {
        QList<QByteArray> lines = logFile().split('\n');
        for (QByteArray& line : lines)
            line = line.mid(line.indexOf(' ') + 1);
        return lines;
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }
    void cleanup() override {
        setLogFile(QString());
        m_folder.reset();
        TestCase::cleanup();
    }

    void aLineReachesTheSinkAsItIs() {
        Logger::Write("a line");
        Logger::Write("");
        Logger::Write("100% \\n \xe9");
        QCOMPARE(takeHostLog(), QStringList({"a line", "", QString::fromLatin1("100% \\n \xe9")}));
    }

    void aListenerHearsBesideTheSinkButNothingAtDebugLevel() {
        QStringList heard;
        LogSink before = setLogListener(
            [&heard](const std::string& line) { heard << QString::fromStdString(line); });
        QVERIFY(!before);
        setLogLevel(LogLevel::Debug);
        Logger::Write("two\nlines");
        Logger::Debug("a change");
        setLogLevel(LogLevel::Usual);
        setLogListener({});
        Logger::Write("later");
        QCOMPARE(heard, QStringList("two lines"));
        QCOMPARE(takeHostLog(), QStringList({"two lines", "a change", "later"}));
    }

    void lineBreaksAreBlanks() {
        Logger::Write("a\nb\rc\r\nd\n\ne\n");
        QCOMPARE(takeHostLog(), QStringList("a b c d  e "));
    }

    void withoutASinkALineGoesToStandardError() {
        LogSink tests = setLogSink({});
        StandardError standardError;
        Logger::Write("one");
        Logger::Write("two\nlines");
        QCOMPARE(standardError.text(), QByteArray("one\ntwo lines\n"));
        setLogSink(tests);
    }

    void aSinkReplacesStandardErrorOnly() {
        setLogFile(m_folder->filePath("log.txt"));
        StandardError standardError;
        Logger::Write("one");
        QCOMPARE(standardError.text(), QByteArray());
        QCOMPARE(takeHostLog(), QStringList("one"));
        QCOMPARE(logFileLines(), QList<QByteArray>({"one", ""}));
    }

    void theSinkBeforeIsHandedBack() {
        QStringList seen;
        LogSink tests = setLogSink([&](const std::string& line) { seen << line.c_str(); });
        Logger::Write("for the second");
        LogSink second = setLogSink(std::move(tests));
        Logger::Write("for the first");
        QVERIFY(second);
        second("by hand");
        QCOMPARE(seen, QStringList({"for the second", "by hand"}));
        QCOMPARE(takeHostLog(), QStringList("for the first"));
    }

    void aSinkMayWriteAndBeReplacedWhileItHears() {
        LogSink tests;
        bool again = true;
        tests = setLogSink([&](const std::string& line) {
            if (std::exchange(again, false))
                Logger::Write("inside of " + line);
            else
                setLogSink(tests);
        });
        Logger::Write("a");
        Logger::Write("b");
        QCOMPARE(takeHostLog(), QStringList("b"));
    }

    void bytesAreShownAsTextInFileAndStandardError() {
        LogSink tests = setLogSink({});
        setLogFile(m_folder->filePath("log.txt"));
        StandardError standardError;
        // Latin-1, UTF-8, both in one line, and sequences that are cut off or too long.
        Logger::Write("caf\xe9 3\xc5");
        Logger::Write("caf\xc3\xa9 \xe2\x82\xac");
        Logger::Write("\xe9 \xc3\xa9");
        Logger::Write("\xe2\x82");
        Logger::Write("\xc0\xaf");
        const QByteArray shown = QString::fromLatin1("caf\xe9 3\xc5\ncaf\xe9 ").toUtf8() +
                                 "\xe2\x82\xac\n" +
                                 QString::fromLatin1("\xe9 \xe9\n\xe2?\n\xc0\xaf\n").toUtf8();
        QCOMPARE(standardError.text(), shown);
        QCOMPARE(logFileLines().join('\n'), shown);
        setLogSink(tests);
    }

    void controlCharactersDoNotReachTheTerminal() {
        LogSink tests = setLogSink({});
        StandardError standardError;
        Logger::Write(std::string("a\x1b[2Jb\tc\x7f\x9b"
                                  "d\0e",
                                  13) +
                      "\xe2\x80\xa8"
                      "f");
        QCOMPARE(standardError.text(), QByteArray("a?[2Jb\tc??d?e f\n"));
        setLogSink(tests);
    }

    void theFileIsAppendedToWithTheTime() {
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        setLogFile(m_folder->filePath("log.txt"));
        Logger::Write("one");
        setLogFile(QString());
        Logger::Write("not in the file");
        setLogFile(m_folder->filePath("log.txt"));
        Logger::Write("two");
        QCOMPARE(logFileLines(), QList<QByteArray>({"one", "two", ""}));
        const QByteArray time = logFile().left(logFile().indexOf(' '));
        const QDateTime written = QDateTime::fromString(time, Qt::ISODate);
        QVERIFY2(written.isValid() && written >= before && written <= QDateTime::currentDateTime(),
                 time.constData());
        takeHostLog();
    }

    void theFilesFolderIsMade() {
        setLogFile(m_folder->filePath("a/b/log.txt"));
        Logger::Write("one");
        QVERIFY(logFile("a/b/log.txt").endsWith(" one\n"));
        takeHostLog();
    }

    void aFileThatCannotBeOpenedIsOneLine() {
        QFile file(m_folder->filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QString log = m_folder->filePath("file/log.txt");
        setLogFile(log);
        Logger::Write("goes on");
        setLogFile(m_folder->path());
        QCOMPARE(takeHostLog(),
                 QStringList({"Log file " + log +
                                  ": it cannot be written: Not a directory; the log "
                                  "goes on without it",
                              "goes on",
                              "Log file " + m_folder->path() +
                                  ": it cannot be written: Is a directory; the log goes on "
                                  "without it"}));
    }

    void aFolderThatCannotBeMadeIsOneLine() {
        setLogFile("/proc/nowhere/log.txt");
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.constFirst().startsWith("Log file /proc/nowhere/log.txt: it cannot be "
                                             "written: No such file or directory;"),
                 qPrintable(log.constFirst()));
    }

    void aPipeIsNoPlaceForTheLog() {
        const QString pipe = m_folder->filePath("pipe");
        const QByteArray name = QFile::encodeName(pipe);
        QCOMPARE(mkfifo(name.constData(), 0600), 0);
        const QString line = "Log file " + pipe +
                             ": it cannot be written: it is no regular file; the log goes on "
                             "without it";
        // Nobody reads: that must not hold the program up.
        setLogFile(pipe);
        QCOMPARE(takeHostLog(), QStringList(line));
        const int reader = open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        QVERIFY(reader >= 0);
        setLogFile(pipe);
        QCOMPARE(takeHostLog(), QStringList(line));
        close(reader);
    }

    void standardErrorThatNobodyReadsIsToldOnceInTheFile() {
        const auto before = std::signal(SIGPIPE, SIG_IGN);
        LogSink tests = setLogSink({});
        setLogFile(m_folder->filePath("log.txt"));
        {
            StandardError standardError;
            int ends[2];
            QCOMPARE(pipe(ends), 0);
            dup2(ends[1], STDERR_FILENO);
            close(ends[1]);
            Logger::Write("read");
            close(ends[0]);
            Logger::Write("one");
            Logger::Write("two");
        }
        setLogSink(tests);
        (void)std::signal(SIGPIPE, before);
        QCOMPARE(logFileLines(),
                 QList<QByteArray>(
                     {"read", "one", "Standard error cannot be written: Broken pipe", "two", ""}));
    }

    void aFullDiskIsToldOnce() {
        setLogFile("/dev/full");
        Logger::Write("one");
        Logger::Write("two");
        QCOMPARE(takeHostLog(),
                 QStringList({"one",
                              "Log file /dev/full: it cannot be written: No space left on device; "
                              "the log goes on without it",
                              "two"}));
    }
};

REGISTER_TEST(LogTest)
#include "LogTest.moc"
