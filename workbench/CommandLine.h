// What the user asked for on the command line. Knows no Qt, so that the program can answer --help
// and --version, and refuse a wrong option, where there is no display.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace workbench {

struct CommandLine {
    enum class Task { Run, Help, Version };
    Task task = Task::Run;
    std::vector<std::string> files;
    std::optional<std::string> plugins; ///< folder of plug-ins instead of the installed one
    std::optional<std::string> data;    ///< folder of data instead of the installed one
    std::optional<std::string>
        picture;                     ///< file of a picture that is made instead of opening windows
    std::string size = "1280x960";   ///< of the picture, in pixels
    std::optional<std::string> save; ///< file that all files are saved to instead
    bool asShown = false;            ///< of which only the active models
    bool windows = false;            ///< each plug-in has a window of its own
    bool isNew = false;              ///< not handed to a program that is running
    bool verbose = false;            ///< debug stream to standard error, changes to the log
};

/// Reads the arguments, without the program's name. Returns what is wrong with them, as one line;
/// empty when nothing is.
std::string readCommandLine(const std::vector<std::string>& arguments, CommandLine& out);

/// What --help prints.
std::string helpText();

} // namespace workbench
