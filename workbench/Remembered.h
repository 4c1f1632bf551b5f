// What the workbench remembers from one run to the next: its window, and the files that were
// opened.
#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QStringList>

namespace workbench {

class Remembered {
public:
    static constexpr int mostFiles = 10;

    /// An INI file of the program's own, which need not exist.
    explicit Remembered(const QString& file);

    /// Files that were opened, the last one first.
    QStringList files() const;
    /// Puts a file, by its absolute path, before the others.
    void addFile(const QString& file);
    void forgetFiles();

    /// As QMainWindow gives them.
    QByteArray geometry() const;
    QByteArray docks() const;
    void setWindow(const QByteArray& geometry, const QByteArray& docks);
    void forgetWindow();

private:
    mutable QSettings m_settings;
};

} // namespace workbench
