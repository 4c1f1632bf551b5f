// The file of a plug-in: whether it can be loaded at all, and what in the process comes out of it.
#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <cstddef>
#include <string>

namespace memory_host {

/// What keeps `path` from being a complete shared library; empty when it is one. The system's
/// loader ends the process on a library whose end is missing, so this is asked first.
std::string libraryProblem(const QString& path);

/// The windows and other widgets whose class stands in the library that holds `address`.
QList<QPointer<QWidget>> widgetsOfLibrary(const void* address);
/// How many subscribers and observers there are whose class stands in the library that holds
/// `address`, beside those among its static objects, which go with it.
std::size_t subscribersOfLibrary(const void* address);

} // namespace memory_host
