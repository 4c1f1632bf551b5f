#include "RecordingPlugins.h"

#include "PluginManager.h"
#include "services/PluginFolder.h"

#include <QtGlobal>

RecordingPlugins::RecordingPlugins() {
    const QStringList loaded =
        memory_host::loadPlugins(QStringLiteral(EDITOR_TEST_PLUGINS "/recording"));
    if (loaded != QStringList({"Calculate/Electrostatics", "Create/SolidVolume"}))
        qFatal("the recording plug-ins are not built");
}

RecordingPlugins::~RecordingPlugins() {
    memory_host::unloadPlugins();
}

void RecordingPlugins::during(std::function<void()> action) {
    m_action = std::move(action);
    for (const auto& [type, name] :
         {std::pair("Create", "SolidVolume"), std::pair("Calculate", "Electrostatics")})
        PluginManager::Command(type, name, "Test", "RunInCommands", "",
                               static_cast<void*>(&m_action));
}

QString RecordingPlugins::sent(const QString& command, const QString& argument,
                               const QString& value) {
    return QStringLiteral("Command Create|SolidVolume|Vuxo|%1|%2|%3").arg(command, argument, value);
}
