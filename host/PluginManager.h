// Commands from one plug-in to another.
#pragma once

#include "HostExport.h"

#include <string>

/// A call of a plug-in. The entry points receive only the command and the data; the other fields
/// can be read here during the call.
struct HOST_EXPORT PluginCall {
    std::string type;                ///< type of the plug-in that is called, as "Create"
    std::string name;                ///< its name, as "SolidVolume"
    std::string sender;              ///< who calls
    std::string command;             ///< the action that is asked for
    std::string argument;            ///< empty when the call carries none
    void* data = nullptr;            ///< set when the data may be written
    const void* constData = nullptr; ///< set when they are read-only
    void* more = nullptr;            ///< second pointer of Execute
};

/// A loaded plug-in, as FindPlugin answers it.
class Plugin;

/// Finds plug-ins by type and name and runs their commands, synchronously and on the GUI thread. A
/// plug-in that is absent, does not know the command or throws is an error in the log, with the
/// plug-in's name; nothing is thrown at the caller. Data pointers need to live for the call only.
class HOST_EXPORT PluginManager {
public:
    /// Runs a command on writable data, through the plug-in's entry point `Command`.
    static void Command(const std::string& type, const std::string& name, const std::string& sender,
                        const std::string& command, const std::string& argument, void* data);
    /// Runs a command on read-only data, through the plug-in's entry point `CommandC`.
    static void Command(const std::string& type, const std::string& name, const std::string& sender,
                        const std::string& command, const std::string& argument, const void* data);
    /// Runs a command that takes two data pointers, through the entry point `Command` with the
    /// first; the second stands in CurrentCall().
    static void Execute(const std::string& type, const std::string& name, const std::string& sender,
                        const std::string& command, void* data, void* more);
    /// The loaded plug-in of that type and name, or null.
    static Plugin* FindPlugin(const std::string& type, const std::string& name);
    /// The innermost call in progress, or null outside of one.
    static const PluginCall* CurrentCall();
};
