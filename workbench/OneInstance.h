// Lets a second start of the program hand its files to the one that is running.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

namespace workbench {

/// The running program's side: receives the files of others.
class OneInstance : public QObject {
    Q_OBJECT
public:
    /// Nothing is received before listen().
    explicit OneInstance(const QString& socket, QObject* parent = nullptr);

    /// The socket of this user on this screen, in the user's folder for such things. Empty where
    /// there is no such folder that is the user's alone.
    static QString usualSocket();
    /// Whether another program could open these files as well: they are regular files, or missing,
    /// and no pipe that can be read only once.
    static bool canBeHandedOver(const QStringList& files);
    /// Hands over files, by their absolute paths, to the program that listens there. Returns
    /// whether it has confirmed; false where there is none, or it does not answer within some
    /// seconds.
    static bool handOver(const QString& socket, const QStringList& files);

    /// Listens; a socket that a program left behind when it ended is no obstacle. Returns whether
    /// it does: without, a second start is a program of its own.
    bool listen();

signals:
    /// Another start has brought files, or none, and ends now.
    void filesCame(const QStringList& files);

private:
    void takeConnection();

    QString m_socket;
    QLocalServer m_server;
};

} // namespace workbench
