// Reading and writing whole files in tests.
#pragma once

#include <QByteArray>
#include <QString>

namespace test_support {

/// The bytes of a file; empty where there is none.
QByteArray contentOf(const QString& path);
/// Makes a file, or replaces what is in it; returns whether that was possible.
[[nodiscard]] bool writeFile(const QString& path, const QByteArray& content);

} // namespace test_support
