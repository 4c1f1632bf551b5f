#include "OneInstance.h"

#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocalSocket>

#include <sys/stat.h>
#include <unistd.h>

namespace workbench {

namespace {

constexpr quint32 mark = 0x57424631; // "WBF1", the protocol and its version
constexpr qint64 largest = 1 << 24;  // bytes of a request: tens of thousands of paths
constexpr int connectWithin = 1000;  // ms
constexpr int confirmWithin = 15'000;
constexpr char confirmation = 'k';

QByteArray requestOf(const QStringList& files) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_0);
    out << mark;
    QStringList absolute;
    for (const QString& file : files)
        absolute << QFileInfo(file).absoluteFilePath();
    out << absolute;
    return bytes;
}

/// A folder that nobody else can look into.
bool isOwn(const QString& folder) {
    struct stat found {};
    return lstat(QFile::encodeName(folder).constData(), &found) == 0 && S_ISDIR(found.st_mode) &&
           found.st_uid == getuid() && (found.st_mode & 077) == 0;
}

} // namespace

OneInstance::OneInstance(const QString& socket, QObject* parent)
    : QObject(parent), m_socket(socket) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &OneInstance::takeConnection);
}

QString OneInstance::usualSocket() {
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!QDir::isAbsolutePath(folder) || !isOwn(folder)) {
        folder =
            QDir::tempPath() + QStringLiteral("/structure-editor-") + QString::number(getuid());
        (void)mkdir(QFile::encodeName(folder).constData(), 0700);
        if (!isOwn(folder))
            return {};
    }
    QString screen = qEnvironmentVariable("WAYLAND_DISPLAY", qEnvironmentVariable("DISPLAY"));
    for (QChar& c : screen)
        if (!c.isLetterOrNumber() && c != u'.' && c != u':')
            c = u'_';
    return folder + QStringLiteral("/structure-editor-") + QGuiApplication::platformName() + screen;
}

bool OneInstance::canBeHandedOver(const QStringList& files) {
    for (const QString& file : files) {
        struct stat found {};
        if (stat(QFile::encodeName(file).constData(), &found) == 0 && !S_ISREG(found.st_mode) &&
            !S_ISDIR(found.st_mode))
            return false;
        // What stands for an open descriptor of this process is another file elsewhere.
        if (file.startsWith(QStringLiteral("/dev/")) || file.startsWith(QStringLiteral("/proc/")))
            return false;
    }
    return true;
}

bool OneInstance::handOver(const QString& socket, const QStringList& files) {
    const QByteArray request = requestOf(files);
    if (socket.isEmpty() || request.size() > largest)
        return false;
    QLocalSocket other;
    other.connectToServer(socket);
    if (!other.waitForConnected(connectWithin))
        return false;
    QDataStream out(&other);
    out.setVersion(QDataStream::Qt_6_0);
    out << request;
    QElapsedTimer since;
    since.start();
    while (other.bytesAvailable() == 0) {
        const auto left = static_cast<int>(confirmWithin - since.elapsed());
        if (left <= 0 || !other.waitForReadyRead(left))
            return other.bytesAvailable() > 0 && other.read(1) == QByteArray(1, confirmation);
    }
    return other.read(1) == QByteArray(1, confirmation);
}

bool OneInstance::listen() {
    if (m_socket.isEmpty())
        return false;
    // The server itself would take the place of one that listens.
    QLocalSocket other;
    other.connectToServer(m_socket);
    if (other.waitForConnected(connectWithin))
        return false;
    QLocalServer::removeServer(m_socket);
    return m_server.listen(m_socket);
}

void OneInstance::takeConnection() {
    while (QLocalSocket* const other = m_server.nextPendingConnection()) {
        connect(other, &QLocalSocket::disconnected, other, &QObject::deleteLater);
        const auto read = [this, other] {
            if (other->bytesAvailable() > largest + 16) {
                other->abort();
                return;
            }
            QDataStream in(other);
            in.setVersion(QDataStream::Qt_6_0);
            in.startTransaction();
            QByteArray request;
            in >> request;
            if (!in.commitTransaction())
                return;
            QDataStream content(request);
            content.setVersion(QDataStream::Qt_6_0);
            quint32 found = 0;
            QStringList files;
            content >> found >> files;
            if (found != mark || content.status() != QDataStream::Ok) {
                other->abort();
                return;
            }
            other->write(&confirmation, 1);
            other->flush();
            // Later: who opens them may run an event loop, in which the socket is deleted.
            QMetaObject::invokeMethod(
                this, [this, files] { emit filesCame(files); }, Qt::QueuedConnection);
        };
        connect(other, &QLocalSocket::readyRead, other, read);
        read();
    }
}

} // namespace workbench
