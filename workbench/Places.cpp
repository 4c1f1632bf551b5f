#include "Places.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace workbench {

namespace {

constexpr qint64 largestLog = 1 << 20;

QString fromProgram(const char* relative) {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u'/' +
                           QString::fromLatin1(relative));
}

QString stateFolder() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + u'/' + QCoreApplication::applicationName();
}

} // namespace

QString installedPluginFolder() {
    return fromProgram(PLUGINS_FROM_BIN);
}

QString installedDataFolder() {
    return fromProgram(DATA_FROM_BIN);
}

QStringList samples(const QString& dataFolder) {
    QStringList files;
    const QDir folder(dataFolder);
    for (const QString& name : folder.entryList({QStringLiteral("sample.*")}, QDir::Files))
        files << folder.filePath(name);
    return files;
}

QString settingsFile() {
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
           QStringLiteral("/settings.ini");
}

QString memoryFile() {
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
           QStringLiteral("/window.ini");
}

QString journalFolder() {
    return stateFolder() + QStringLiteral("/journal");
}

QString logFile() {
    const QString file = stateFolder() + QStringLiteral("/workbench.log");
    if (QFile(file).size() > largestLog) {
        QFile::remove(file + QStringLiteral(".old"));
        QFile::rename(file, file + QStringLiteral(".old"));
    }
    return file;
}

} // namespace workbench
