// Where the dynamic loader looks for the libraries of a built program.
#pragma once

#include <QStringList>

namespace end_to_end {

/// The programs and shared libraries below a folder.
QStringList binariesBelow(const QString& folder);

/// A line for each of them whose run path has an entry that does not begin at its own place; an
/// empty entry stands for the working directory.
QStringList wrongRunPaths(const QStringList& binaries);

} // namespace end_to_end
