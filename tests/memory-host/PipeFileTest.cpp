// Structures that come through a pipe, as from /dev/stdin or a process substitution.
#include "FileTestCase.h"
#include "Space.h"
#include "TestFiles.h"
#include "files/FileLimits.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace file_testing;
using memory_host::fileLimits;
using test_support::contentOf;

namespace {

void writeAll(int file, const QByteArray& content, qsizetype portion) {
    for (qsizetype at = 0; at < content.size();) {
        const ssize_t done =
            ::write(file, content.constData() + at,
                    static_cast<std::size_t>(std::min(portion, content.size() - at)));
        if (done <= 0)
            return;
        at += done;
        std::this_thread::yield();
    }
}

} // namespace

class PipeFileTest : public FileTestCase {
    Q_OBJECT

    memory_host::FileLimits m_usual = fileLimits();

    std::string makePipe() const {
        const std::string name = path("pipe").toStdString();
        if (::mkfifo(name.c_str(), 0600) != 0)
            qFatal("no pipe");
        return name;
    }

    // Opens what another thread writes into a pipe of that name.
    memory_host::OpenedFile openedFromPipe(const QByteArray& content, qsizetype portion) {
        const std::string name = makePipe();
        std::thread writer([&] {
            const int file = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
            writeAll(file, content, portion);
            ::close(file);
        });
        auto result = opened(name);
        writer.join();
        return result;
    }

private slots:
    void cleanup() override {
        fileLimits() = m_usual;
        FileTestCase::cleanup();
        ::unlink(path("pipe").toLocal8Bit().constData());
    }

    void aPipeIsReadToItsEnd_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("portion");
        QTest::newRow("in small pieces") << "1ubq.pdb" << 100;
        QTest::newRow("more than a megabyte") << "1d3z.pdb" << 65536;
        QTest::newRow("gzipped") << "1cbs.cif.gz" << 1000;
        QTest::newRow("a map") << "1jzv.ccp4" << 65536;
    }
    void aPipeIsReadToItsEnd() {
        QFETCH(QString, file);
        QFETCH(int, portion);
        const auto result = openedFromPipe(contentOf(structure(file)), portion);
        const auto expected = opened(structure(file).toStdString());
        QCOMPARE(result.items.size(), expected.items.size());
        QCOMPARE(sortedAtoms(result.items), sortedAtoms(expected.items));
    }

    void aPipeByItsDescriptorIsCalledAPipe() {
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        const QByteArray text = atomAt(" CA ", 0);
        writeAll(ends[1], text, text.size());
        ::close(ends[1]);
        opened("/dev/fd/" + std::to_string(ends[0]));
        ::close(ends[0]);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("pipe"));
    }

    void standardInputIsCalledSo() {
        const int before = ::dup(STDIN_FILENO);
        for (const char* name : {"/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"}) {
            int ends[2] = {};
            QCOMPARE(::pipe(ends), 0);
            const QByteArray text = atomAt(" CA ", 0);
            writeAll(ends[1], text, text.size());
            ::close(ends[1]);
            ::dup2(ends[0], STDIN_FILENO);
            ::close(ends[0]);
            opened(name);
        }
        ::dup2(before, STDIN_FILENO);
        ::close(before);
        QCOMPARE(childNames(TAVIK::Space::instance()),
                 QStringList({"stdin", "stdin-2", "stdin-3"}));
    }

    // Whoever sits there would have to type the file.
    void aTerminalIsRefused() {
        const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        QVERIFY(terminal >= 0);
        QVERIFY(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
        const std::string name = ::ptsname(terminal);
        const int other = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        writeAll(terminal, QByteArray(1, '\4'), 1); // the end, for one that reads
        QVERIFY(refusal(name).endsWith(": is a terminal; accepted are files and pipes"));
        ::close(other);
        ::close(terminal);
    }

    void aPipeThatNobodyWritesToIsRefusedInTime() {
        fileLimits().patience = std::chrono::milliseconds(100);
        QVERIFY(
            refusal(makePipe()).contains("pipe: is a pipe that nobody writes to; accepted are "));
    }

    void aPipeThatEndsWithoutAByteIsEmpty() {
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        ::close(ends[1]);
        QVERIFY(
            refusal("/dev/fd/" + std::to_string(ends[0])).contains(": is empty; accepted are "));
        ::close(ends[0]);
        QVERIFY(refusal("/dev/null").startsWith("/dev/null: is empty; accepted are "));
    }

    void anEndlessPipeEndsAtTheLimit() {
        fileLimits().bytes = 3'000'000;
        QVERIFY(refusal("/dev/zero").contains(": holds binary data of an unknown kind; "));
        const std::string name = makePipe();
        std::thread writer([&] {
            const int file = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
            writeAll(file, QByteArray("REMARK\n").repeated(1'000'000), 65536);
            ::close(file);
        });
        std::signal(SIGPIPE, SIG_IGN);
        QVERIFY(refusal(name).contains(": is too large; accepted are files of up to 4 GiB"));
        writer.join();
    }

    void readingAPipeThatBringsNothingCanBeStopped() {
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        std::stop_source stop;
        std::string said;
        std::thread reader([&] {
            try {
                memory_host::parseFile("/dev/fd/" + std::to_string(ends[0]), stop.get_token());
            } catch (const memory_host::FileError& error) {
                said = error.what();
            }
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop.request_stop();
        reader.join();
        QVERIFY(QString::fromStdString(said).contains(": reading it was cancelled; "));
        ::close(ends[0]);
        ::close(ends[1]);
    }
};

REGISTER_TEST(PipeFileTest)
#include "PipeFileTest.moc"
