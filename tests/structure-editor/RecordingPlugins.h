// The plug-ins that surface and contour commands are sent to, replaced by ones that record what
// they are sent.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class RecordingPlugins {
public:
    /// Loads them as the host loads any plug-in.
    RecordingPlugins();
    ~RecordingPlugins();
    RecordingPlugins(const RecordingPlugins&) = delete;
    RecordingPlugins& operator=(const RecordingPlugins&) = delete;

    /// "Type/Name" of each.
    static QStringList names();
    /// Runs `action` inside each command from now on.
    void during(std::function<void()> action);

    /// The line in the host's log of a command to the solid-volume plug-in.
    static QString sent(const QString& command, const QString& argument, const QString& value);

private:
    std::function<void()> m_action;
};
