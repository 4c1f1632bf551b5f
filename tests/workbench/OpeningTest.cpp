// Opening the files of the command line while a window shows how far it is.
#include "Opening.h"
#include "TestSupport.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

class OpeningTest : public test_support::TestCase {
    Q_OBJECT

    static memory_host::ProgressWindow* progressWindow() {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* window = qobject_cast<memory_host::ProgressWindow*>(widget))
                return window;
        return nullptr;
    }

private slots:
    // It could bring nothing for ever, and the program has to end.
    void whoCancelsEndsTheReadingOfAPipe() {
        const QTemporaryDir folder;
        const QString name = folder.filePath("pipe");
        const QByteArray path = QFile::encodeName(name);
        QCOMPARE(mkfifo(path.constData(), 0600), 0);
        int writer = -1;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            // This succeeds when somebody reads.
            writer = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (writer < 0)
                return;
            timer.stop();
            progressWindow()->reject();
        });
        timer.start(1);
        QStringList lines;
        workbench::Opening opening(
            [&lines](const std::string& line) { lines << QString::fromStdString(line); });
        QCOMPARE(opening.open({path.toStdString(), "missing.pdb"}), std::size_t{0});
        QCOMPARE(lines, QStringList(name + ": opening was cancelled"));
        const bool isClosed = QTest::qWaitFor([writer] {
            pollfd end{writer, 0, 0};
            return ::poll(&end, 1, 0) == 1 && end.revents & POLLERR; // nobody reads any more
        });
        ::close(writer); // a reader that is left ends now
        QVERIFY(isClosed);
    }
};

REGISTER_TEST(OpeningTest)
#include "OpeningTest.moc"
