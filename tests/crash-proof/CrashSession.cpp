// A random session in the workbench's window, which others kill, and the start after it:
//   crash-session run FOLDER SEED SECONDS FILE...
//   crash-session recover FOLDER END
// The session writes into FOLDER/log what the data are after each change, and when the journal has
// what was changed until then. The next start opens what the journal has, and looks whether that is
// a state of the session, no older than the last one that is said to be written, and than 10 s
// before END (when the session was killed, in ms). It ends with status 0 then.
#include "Session.h"

#include "CrashJournal.h"
#include "DataLines.h"
#include "Logger.h"
#include "MainWindow.h"
#include "Opening.h"
#include "Recovery.h"
#include "journal/JournalState.h"
#include "services/PluginFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <set>
#include <string>

namespace {

using workbench::CrashJournal;

QByteArray stateNow() {
    return QCryptographicHash::hash(test_support::comparableLines().join(u'\n').toUtf8(),
                                    QCryptographicHash::Sha1)
        .toHex();
}

/// Where all is as it was read, there is no journal: the next start opens nothing.
const QByteArray nothing(40, '0');

bool isAsRead() {
    const std::set<std::string> written;
    memory_host::JournalGathering gathering(written);
    while (gathering.advance(std::chrono::seconds(1)) !=
           memory_host::JournalGathering::Progress::Done) {
    }
    return gathering.take()->isAsRead;
}

/// The states that a start may bring back for the present one: the program may be killed after it
/// removed the journal, and before it says so.
QByteArray statesNow() {
    return isAsRead() ? stateNow() + ' ' + nothing : stateNow();
}

bool hasJournal(const QString& folder) {
    const QDir all(folder + QStringLiteral("/journal"));
    const QStringList folders = all.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::ranges::any_of(folders, [&all](const QString& each) {
        return QFile::exists(all.filePath(each + QStringLiteral("/journal")));
    });
}

std::string journalsIn(const QString& folder) {
    return (folder + QStringLiteral("/journal")).toStdString();
}

/// Lines that are there at once, whatever happens to the program.
class SessionLog {
public:
    explicit SessionLog(const QString& folder) : m_file(folder + QStringLiteral("/log")) {
        if (!m_file.open(QIODevice::Append | QIODevice::Unbuffered))
            qFatal("the log cannot be written");
    }
    void write(const char* kind, const QByteArray& state) {
        m_file.write(QByteArray(kind) + ' ' +
                     QByteArray::number(QDateTime::currentMSecsSinceEpoch()) + ' ' + state + '\n');
    }

private:
    QFile m_file;
};

std::chrono::milliseconds secondsIn(const char* text) {
    return std::chrono::milliseconds(static_cast<int>(QByteArray(text).toDouble() * 1000));
}

int runSession(const QString& folder, char** arguments, int count) {
    const QStringList plugins = memory_host::loadPlugins(QStringLiteral(STAGE_PLUGINS));
    SessionLog log(folder);
    CrashJournal journal(journalsIn(folder), secondsIn(arguments[1]));
    crash_proof::Session session{QByteArray(arguments[0]).toUInt()};
    for (int i = 2; i != count; ++i)
        session.open(arguments[i]);
    workbench::MainWindow window(
        {plugins, QStringLiteral(SOURCE_DIR "/data"), folder + QStringLiteral("/window.ini")});
    if (!window.startPlugins())
        return 1;
    window.show();
    log.write("state", nothing);
    QByteArray state = statesNow();
    log.write("state", state);
    QObject::connect(&journal, &CrashJournal::written, &window, [&](bool isAll) {
        if (isAll)
            log.write("written", hasJournal(folder) ? state.first(nothing.size()) : nothing);
    });
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &window, [&] {
        if (session.change())
            journal.changed();
        state = statesNow();
        log.write("state", state);
        timer.start(session.pause());
    });
    timer.start(0);
    return QApplication::exec();
}

/// Presses "Open" in each question.
void answer() {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box)
        return;
    for (QAbstractButton* const button : box->buttons())
        if (button->text().remove(u'&') == QStringLiteral("Open"))
            return QTest::mouseClick(button, Qt::LeftButton);
}

bool hasBegun(const QString& folder) {
    QFile file(folder + QStringLiteral("/log"));
    return file.open(QIODevice::ReadOnly) && file.readAll().contains('\n');
}

/// What is wrong with a state that was brought back; empty if nothing is.
QString problemOf(const QByteArray& state, const QString& folder, qint64 end) {
    QFile file(folder + QStringLiteral("/log"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("there is no log");
    qint64 foundAt = -1;
    qint64 leftAt = -1;         // when the data were others
    bool isNeededNewer = false; // a later one is said to be written
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() < 3 || words[2].size() != state.size())
            continue;
        const bool isFound = words.indexOf(state, 2) > 0;
        if (isFound) {
            foundAt = words[1].toLongLong();
            leftAt = -1;
            isNeededNewer = false;
        } else if (words[0] == "written") {
            isNeededNewer = true;
        } else if (leftAt < 0) {
            leftAt = words[1].toLongLong();
        }
    }
    if (foundAt < 0)
        return QStringLiteral("what was brought back was no state of the session");
    if (isNeededNewer)
        return QStringLiteral("a state that was written was not brought back");
    constexpr qint64 most = 10'000; // ms
    if (leftAt >= 0 && leftAt < end - most)
        return QStringLiteral("what was brought back is %1 ms older than it may be")
            .arg(end - most - leftAt);
    return {};
}

int recover(const QString& folder, const char* end) {
    if (!hasBegun(folder)) {
        std::printf("killed before it began\n");
        return 0;
    }
    CrashJournal journal(journalsIn(folder), std::chrono::milliseconds(0));
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, &answer);
    answering.start(5);
    workbench::Opening opening(Logger::Write);
    const QString opened = workbench::Recovery(nullptr, opening).run(journalsIn(folder), journal);
    const QString problem =
        problemOf(opened.isEmpty() ? nothing : stateNow(), folder, QByteArray(end).toLongLong());
    std::printf("%s\n", problem.isEmpty() ? "brought back" : qPrintable(problem));
    return problem.isEmpty() ? 0 : 1;
}

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    const QByteArray mode(count > 2 ? arguments[1] : "");
    const QString folder = QFile::decodeName(count > 2 ? arguments[2] : "");
    if (mode == "run" && count > 4)
        return runSession(folder, arguments + 3, count - 3);
    if (mode == "recover" && count == 4)
        return recover(folder, arguments[3]);
    std::fprintf(stderr, "usage: crash-session run FOLDER SEED SECONDS FILE...\n"
                         "       crash-session recover FOLDER END\n");
    return 2;
}
