// The file of a plug-in: whether it can be loaded at all, and which objects belong to its code.
#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <cstddef>
#include <string>

namespace memory_host {

/// Why `path` is no complete shared library; empty when it is one. To be called before loading: the
/// system's loader ends the process on a truncated library.
std::string libraryProblem(const QString& path);

/// Whether the class of `widget` is defined in the library that contains `address`.
bool isOfLibrary(const QWidget& widget, const void* address);
/// The windows and other widgets whose class is defined in the library that contains `address`.
QList<QPointer<QWidget>> widgetsOfLibrary(const void* address);
/// The number of subscribers and observers whose class is defined in the library that contains
/// `address`. Its static objects are not counted: unloading destroys them.
std::size_t subscribersOfLibrary(const void* address);

} // namespace memory_host
