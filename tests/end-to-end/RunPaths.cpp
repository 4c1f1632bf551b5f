#include "RunPaths.h"

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <elf.h>

namespace end_to_end {

QStringList binariesBelow(const QString& folder) {
    QStringList binaries;
    QDirIterator files(folder, QDir::Files | QDir::NoSymLinks | QDir::Hidden,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        const QByteArray start = file.open(QIODevice::ReadOnly) ? file.read(18) : QByteArray();
        // Object files are of another type.
        if (start.size() == 18 && start.startsWith(ELFMAG) &&
            (start[16] == ET_EXEC || start[16] == ET_DYN))
            binaries << file.fileName();
    }
    return binaries;
}

QStringList wrongRunPaths(const QStringList& binaries) {
    static const QRegularExpression runPath(QStringLiteral("\\((?:RUNPATH|RPATH)\\).*\\[(.*)\\]"));
    QStringList wrong;
    for (const QString& binary : binaries) {
        QProcess readelf;
        readelf.start(QStringLiteral("readelf"), {QStringLiteral("-dW"), binary});
        if (!readelf.waitForFinished() || readelf.exitCode() != 0) {
            wrong << binary + QStringLiteral(" cannot be read");
            continue;
        }
        const QString text = QString::fromUtf8(readelf.readAllStandardOutput());
        for (auto found = runPath.globalMatch(text); found.hasNext();) {
            const QString path = found.next().captured(1);
            for (const QString& entry : path.split(u':'))
                if (entry != u"$ORIGIN" && !entry.startsWith(u"$ORIGIN/"))
                    wrong << binary + QStringLiteral(": \"%1\" in %2").arg(entry, path);
        }
    }
    return wrong;
}

} // namespace end_to_end
