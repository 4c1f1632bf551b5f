#include "StopSignals.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

/// What a signal leaves as it was.
class StopSignalsTest : public test_support::TestCase {
    Q_OBJECT

    static QSet<QString> openFiles() {
        const QStringList files = QDir("/proc/self/fd").entryList(QDir::Files | QDir::System);
        return {files.begin(), files.end()};
    }

private slots:
    void theHandlerKeepsErrno() {
        const QSet<QString> before = openFiles();
        const workbench::StopSignals signals_;
        // Fill the pipe that the handler writes to, so that its own call fails.
        int filled = 0;
        for (const QString& name : openFiles() - before) {
            const int descriptor = name.toInt();
            if ((fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_WRONLY)
                continue;
            while (write(descriptor, "x", 1) == 1)
                ++filled;
            QCOMPARE(errno, EAGAIN);
        }
        QVERIFY(filled > 0);
        errno = ERANGE;
        std::raise(SIGTERM);
        QCOMPARE(errno, ERANGE);
    }
};

REGISTER_TEST(StopSignalsTest)
#include "StopSignalsTest.moc"
