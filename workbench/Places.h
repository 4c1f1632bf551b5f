// Where the workbench finds what it ships, and where it keeps what is the user's.
#pragma once

#include <QString>
#include <QStringList>

namespace workbench {

/// The folders that are installed with the program, found from where it stands.
QString installedPluginFolder();
QString installedDataFolder();

/// The samples of a data folder; empty when it holds none.
QStringList samples(const QString& dataFolder);

/// The user's settings, which need not exist.
QString settingsFile();
/// Where the program keeps what it remembers of its window; it need not exist.
QString memoryFile();
/// The folder with the journals of all programs of the user, which need not exist.
QString journalFolder();
/// The user's log, which need not exist; one that has grown large is put aside first.
QString logFile();

} // namespace workbench
