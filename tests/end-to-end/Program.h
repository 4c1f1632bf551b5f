// The built workbench as a process of its own, with settings and log in a folder that goes with it.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace end_to_end {

/// What a program left behind when it ended.
struct Ended {
    bool normally = false; ///< false: a signal ended it, as after an abort
    int status = -1;
    QStringList output;
    QStringList errors; ///< lines of standard error
};

class Program {
public:
    /// The workbench of the build tree, or another one; it draws where nobody sees it.
    explicit Program(const QString& path = QStringLiteral(WORKBENCH));
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Sets an environment variable for the next start; a null value takes it away.
    void set(const QString& variable, const QString& value);
    void setWorkingFolder(const QString& folder) { m_process.setWorkingDirectory(folder); }
    /// The folder below which the program keeps what is the user's.
    QString home() const { return m_home.path(); }

    void start(const QStringList& arguments);
    /// Waits until a line of standard error holds `text`; false when the program ends without it.
    bool waitForError(const QString& text);
    /// Waits until the Structure Editor has got its first command; needs the option --verbose.
    bool waitUntilStarted();
    /// Asks the program to end, as the end of a session does.
    void terminate() { m_process.terminate(); }
    bool isRunning();
    qint64 pid() const { return m_process.processId(); }
    /// Waits until the program has ended; one that does not is killed.
    Ended finish();
    /// start() and finish().
    Ended run(const QStringList& arguments);

private:
    QStringList errorLines() const;

    QTemporaryDir m_home;
    QString m_path;
    QProcessEnvironment m_environment;
    QProcess m_process;
    QByteArray m_errors;
};

} // namespace end_to_end
