#include "RecordingPlugins.h"

#include "PluginManager.h"
#include "services/PluginFolder.h"

#include <QtGlobal>

RecordingPlugins::RecordingPlugins() {
    const QStringList loaded =
        memory_host::loadPlugins(QStringLiteral(EDITOR_TEST_PLUGINS "/recording"));
    if (loaded != names())
        qFatal("the recording plug-ins are not built");
}

RecordingPlugins::~RecordingPlugins() {
    memory_host::unloadPlugins();
}

QStringList RecordingPlugins::names() {
    return {QStringLiteral("Calculate/Electrostatics"), QStringLiteral("Create/SolidVolume")};
}

void RecordingPlugins::during(std::function<void()> action) {
    m_action = std::move(action);
    for (const QString& plugin : names())
        PluginManager::Command(plugin.section(u'/', 0, 0).toStdString(),
                               plugin.section(u'/', 1).toStdString(), "Test", "RunInCommands", "",
                               static_cast<void*>(&m_action));
}

QString RecordingPlugins::sent(const QString& command, const QString& argument,
                               const QString& value) {
    return QStringLiteral("Command Create|SolidVolume|Vuxo|%1|%2|%3").arg(command, argument, value);
}
