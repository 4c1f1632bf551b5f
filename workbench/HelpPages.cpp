#include "HelpPages.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace workbench {

namespace {

constexpr QLatin1String firstPage("first-ten-minutes");
constexpr qint64 longestTitle = 200; // bytes

QString titleOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString line = QString::fromUtf8(file.readLine(longestTitle)).trimmed();
    return line.startsWith(QStringLiteral("# ")) ? line.mid(2).trimmed() : QString();
}

} // namespace

std::vector<HelpPage> helpPages(const QString& dataFolder) {
    const QDir folder(dataFolder + QStringLiteral("/help"));
    std::vector<HelpPage> pages;
    for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.md")}, QDir::Files)) {
        const QString name = file.completeBaseName();
        const QString title = titleOf(file.filePath());
        pages.push_back({name, title.isEmpty() ? name : title});
    }
    std::stable_sort(pages.begin(), pages.end(), [](const HelpPage& a, const HelpPage& b) {
        const bool isFirst = a.name == firstPage;
        const bool isSecond = b.name == firstPage;
        return isFirst != isSecond ? isFirst : a.title.localeAwareCompare(b.title) < 0;
    });
    return pages;
}

} // namespace workbench
