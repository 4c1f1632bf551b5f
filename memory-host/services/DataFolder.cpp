#include "DataFolder.h"

namespace memory_host {

namespace {

QString& dataFolderPath() {
    static QString* const folder = new QString;
    return *folder;
}

} // namespace

void setDataFolder(const QString& folder) {
    dataFolderPath() = folder;
}

QString dataFolder() {
    return dataFolderPath();
}

} // namespace memory_host
