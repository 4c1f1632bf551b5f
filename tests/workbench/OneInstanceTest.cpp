// A second start that hands its files to the first one.
#include "OneInstance.h"
#include "Remembered.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>

#include <future>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using workbench::OneInstance;
using workbench::Remembered;

class OneInstanceTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;
    QString socket() const { return m_folder.filePath("socket"); }

    /// Hands over on another thread, as another process would; the events of this one go on.
    bool handOver(const QStringList& files) {
        auto result = std::async(std::launch::async,
                                 [this, files] { return OneInstance::handOver(socket(), files); });
        const bool isReady = QTest::qWaitFor([&result] {
            return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
        return isReady && result.get();
    }

    /// What a program leaves that was killed while it listened.
    void leaveStaleSocket() {
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray path = QFile::encodeName(socket());
        std::copy(path.begin(), path.end(), address.sun_path);
        QCOMPARE(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ::close(descriptor);
        QVERIFY(QFile::exists(socket()));
    }

private slots:
    void filesGoToTheOneThatRuns() {
        OneInstance first(socket());
        QStringList came;
        int times = 0;
        connect(&first, &OneInstance::filesCame, this, [&](const QStringList& files) {
            came << files;
            ++times;
        });
        QVERIFY(first.listen());
        QVERIFY(handOver({"/a/1ubq.pdb", "relative file.cif"}));
        QTRY_COMPARE(came,
                     QStringList({"/a/1ubq.pdb", QDir::current().filePath("relative file.cif")}));
        QVERIFY(handOver({}));
        QTRY_COMPARE(times, 2);
        QVERIFY(handOver(QStringList(50'000, "/one/of/many/structures.pdb")));
        QTRY_COMPARE(came.size(), 50'002);
    }

    // Opening files does, and the other side is gone long before it ends.
    void whoTakesThemMayRunAnEventLoop() {
        OneInstance first(socket());
        int times = 0;
        connect(&first, &OneInstance::filesCame, this, [&times] {
            QTest::qWait(100);
            ++times;
        });
        QVERIFY(first.listen());
        for (int i = 1; i <= 3; ++i) {
            QVERIFY(handOver({"/a.pdb"}));
            QTRY_COMPARE(times, i);
        }
    }

    void withoutOneThereIsNobodyToTakeThem() {
        QVERIFY(!handOver({"/a.pdb"}));
        QVERIFY(!OneInstance::handOver(QString(), {"/a.pdb"}));
        leaveStaleSocket();
        QVERIFY(!handOver({"/a.pdb"}));
    }

    void aStaleSocketIsNoObstacle() {
        if (!QFile::exists(socket()))
            leaveStaleSocket();
        OneInstance first(socket());
        QVERIFY(first.listen());
        QVERIFY(handOver({"/a.pdb"}));
    }

    void aSecondOneDoesNotListenBesideTheFirst() {
        OneInstance first(socket());
        QVERIFY(first.listen());
        OneInstance second(socket());
        QVERIFY(!second.listen());
        QVERIFY(handOver({}));
    }

    void whatIsNoRequestIsNotAnswered() {
        OneInstance first(socket());
        int times = 0;
        connect(&first, &OneInstance::filesCame, this, [&times] { ++times; });
        QVERIFY(first.listen());
        for (const QByteArray& bytes :
             {QByteArray("hello\n"), QByteArray(100, '\xff'), QByteArray("\0\0\0\4abcd", 8),
              QByteArray(20'000'000, 'x')}) {
            QLocalSocket other;
            other.connectToServer(socket());
            QVERIFY(other.waitForConnected());
            other.write(bytes);
            other.flush();
            QTest::qWait(20);
            QCOMPARE(other.bytesAvailable(), 0);
        }
        QCOMPARE(times, 0);
        QVERIFY(handOver({}));
        QTRY_COMPARE(times, 1);
    }

    void aPipeCannotBeHandedOver() {
        const QString pipe = m_folder.filePath("pipe");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!OneInstance::canBeHandedOver({"a.pdb", pipe}));
        QVERIFY(!OneInstance::canBeHandedOver({"/dev/stdin"}));
        QVERIFY(!OneInstance::canBeHandedOver({"/proc/self/fd/0"}));
        QVERIFY(OneInstance::canBeHandedOver({"missing.pdb", SOURCE_DIR "/data/sample.pdb"}));
        QVERIFY(OneInstance::canBeHandedOver({}));
    }

    void theLastFilesAreRememberedOnce() {
        const QString file = m_folder.filePath("folder that is not there/window.ini");
        {
            Remembered memory(file);
            QVERIFY(memory.files().isEmpty());
            for (int i = 0; i != 12; ++i)
                memory.addFile("/a, b/" + QString::number(i) + ".pdb");
            memory.addFile("/a, b/5.pdb");
            memory.setWindow("geometry", QByteArray("do\0cks", 6));
        }
        Remembered memory(file);
        QCOMPARE(memory.files().size(), 10);
        QCOMPARE(memory.files().mid(0, 3),
                 QStringList({"/a, b/5.pdb", "/a, b/11.pdb", "/a, b/10.pdb"}));
        QCOMPARE(memory.geometry(), "geometry");
        QCOMPARE(memory.docks(), QByteArray("do\0cks", 6));
        memory.forgetFiles();
        QVERIFY(memory.files().isEmpty());
        Remembered nowhere("/proc/nowhere/window.ini");
        nowhere.addFile("/a.pdb");
        QCOMPARE(nowhere.files(), QStringList("/a.pdb"));
    }
};

REGISTER_TEST(OneInstanceTest)
#include "OneInstanceTest.moc"
