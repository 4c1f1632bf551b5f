#include "PluginFolder.h"

#include "LoadedPlugins.h"
#include "Logger.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QVersionNumber>

#include <map>
#include <memory>
#include <utility>

namespace memory_host {

namespace {

struct PluginFile {
    QString path;
    QVersionNumber version; ///< null for a name without one
};

/// The plug-in files of a folder by the plug-ins' names. Of several versions the file without a
/// version is taken, else the newest; most often they are links to one file.
std::map<QString, PluginFile> pluginFiles(const QDir& folder) {
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("lib(.+?)\\.so((?:\\.\\d+)*)")));
    std::map<QString, PluginFile> files;
    for (const QFileInfo& info : folder.entryInfoList(QDir::Files)) {
        const QRegularExpressionMatch match = pattern.match(info.fileName());
        if (!match.hasMatch())
            continue;
        const PluginFile file{info.absoluteFilePath(),
                              QVersionNumber::fromString(match.captured(2).mid(1))};
        const auto [found, isNew] = files.try_emplace(match.captured(1), file);
        if (isNew)
            continue;
        PluginFile& other = found->second;
        const bool better =
            file.version.isNull() || (!other.version.isNull() && other.version < file.version);
        const PluginFile left = better ? std::exchange(other, file) : file;
        if (QFileInfo(left.path).canonicalFilePath() != QFileInfo(other.path).canonicalFilePath())
            Logger::Write("Plug-in file " + left.path.toStdString() + " is left out for " +
                          other.path.toStdString());
    }
    return files;
}

/// Loads one plug-in, unless there is one of that type and name.
bool loadPlugin(const QString& type, const QString& name, const QString& path) {
    auto plugin = std::make_unique<Plugin>(type, name, path);
    auto& loaded = loadedPlugins().byName;
    if (const auto found = loaded.find({type, name}); found != loaded.end()) {
        if (found->second->file() != plugin->file())
            plugin->report("is left out: it is loaded from " + found->second->file().toStdString());
        return false;
    }
    if (!plugin->load())
        return false;
    loaded[{type, name}] = std::move(plugin);
    return true;
}

} // namespace

QStringList loadPlugins(const QString& folder) {
    QStringList names;
    const QDir root(QDir(folder).absolutePath());
    if (loadedPlugins().unloading) {
        Logger::Write("Plug-in folder " + root.path().toStdString() +
                      " is not loaded: plug-ins are being unloaded");
        return names;
    }
    if (folder.isEmpty() || !root.exists()) {
        Logger::Write("Plug-in folder " + folder.toStdString() + " does not exist");
        return names;
    }
    QStringList types = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    types.sort();
    for (const QString& type : types) {
        for (const auto& [name, file] : pluginFiles(QDir(root.filePath(type)))) {
            if (loadPlugin(type, name, file.path))
                names << type + u'/' + name;
        }
    }
    return names;
}

bool startPlugin(const QString& typeAndName) {
    const std::string what = "default action";
    const Plugin* const plugin =
        findOrReport(typeAndName.section(u'/', 0, 0), typeAndName.section(u'/', 1), what);
    return plugin &&
           plugin->run(what, [&](PluginResult* result) { plugin->entryPoints().execute0(result); });
}

bool commandPlugin(const std::string& type, const std::string& name, const std::string& sender,
                   const std::string& command, const std::string& argument) {
    return sendWritable({type, name, sender, command, argument, nullptr, nullptr, nullptr});
}

bool allPluginsDone() {
    bool done = true;
    for (const auto& [name, plugin] : loadedPlugins().byName)
        done = plugin->isDone() && done;
    return done;
}

void unloadPlugins() {
    LoadedPlugins& all = loadedPlugins();
    if (runningEntryPoints() > 0 || all.unloading) {
        Logger::Write("Plug-ins are not unloaded: one of them is running");
        return;
    }
    const QScopedValueRollback unloading(all.unloading, true);
    // From here on no plug-in is found: a command to one that has cleaned up would start it again.
    const auto leaving = std::exchange(all.byName, {});
    for (const auto& [name, plugin] : leaving)
        plugin->cleanUp();
    for (const auto& [name, plugin] : leaving)
        plugin->unload();
}

} // namespace memory_host
