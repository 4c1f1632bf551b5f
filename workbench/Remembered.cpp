#include "Remembered.h"

#include <QFileInfo>

namespace workbench {

namespace {
const QString filesKey = QStringLiteral("files");
const QString geometryKey = QStringLiteral("window/geometry");
const QString docksKey = QStringLiteral("window/docks");
} // namespace

Remembered::Remembered(const QString& file) : m_settings(file, QSettings::IniFormat) {}

QStringList Remembered::files() const {
    return m_settings.value(filesKey).toStringList().mid(0, mostFiles);
}

void Remembered::addFile(const QString& file) {
    // Another program of the same user may have added some meanwhile.
    m_settings.sync();
    const QString path = QFileInfo(file).absoluteFilePath();
    QStringList all = files();
    all.removeAll(path);
    all.prepend(path);
    m_settings.setValue(filesKey, all.mid(0, mostFiles));
}

void Remembered::forgetFiles() {
    m_settings.remove(filesKey);
}

QByteArray Remembered::geometry() const {
    return m_settings.value(geometryKey).toByteArray();
}

QByteArray Remembered::docks() const {
    return m_settings.value(docksKey).toByteArray();
}

void Remembered::setWindow(const QByteArray& geometry, const QByteArray& docks) {
    m_settings.setValue(geometryKey, geometry);
    m_settings.setValue(docksKey, docks);
}

void Remembered::forgetWindow() {
    m_settings.remove(geometryKey);
    m_settings.remove(docksKey);
}

} // namespace workbench
