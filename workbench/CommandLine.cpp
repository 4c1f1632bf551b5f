#include "CommandLine.h"
#include "files/Formats.h"

#include <sstream>

namespace workbench {

namespace {

// The words wrapped to the width of the help.
std::string inLines(const std::string& words) {
    constexpr std::size_t width = 84;
    std::string text;
    std::string line;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > width) {
            text += line + '\n';
            line.clear();
        }
        line += line.empty() ? word : ' ' + word;
    }
    return text + line + '\n';
}

struct Value {
    const char* needed;
    std::string* place; ///< null for an option without a value
};

// Where the value of an option goes.
Value valueOf(const std::string& name, CommandLine& out) {
    if (name == "--plugins")
        return {"a folder", &out.plugins.emplace()};
    if (name == "--data")
        return {"a folder", &out.data.emplace()};
    if (name == "--picture")
        return {"a file", &out.picture.emplace()};
    if (name == "--save")
        return {"a file", &out.save.emplace()};
    if (name == "--size")
        return {"a width and a height in pixels, as 1600x1200", &out.size};
    return {"", nullptr};
}

// Whether `text` is two numbers with an x between; how large they may be is for others to say.
bool isSize(const std::string& text) {
    const std::size_t cross = text.find('x');
    const auto isNumber = [](const std::string& digits) {
        return !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
    };
    return cross != std::string::npos && isNumber(text.substr(0, cross)) &&
           isNumber(text.substr(cross + 1));
}

// What is wrong with options that stand together; empty when nothing is.
std::string conflictIn(const CommandLine& line) {
    if (line.save && line.picture)
        return "--save and --picture are two commands";
    if (line.save && line.files.empty())
        return "--save needs a FILE to be saved";
    if (line.asShown && !line.save)
        return "--as-shown is for --save";
    return {};
}

} // namespace

std::string readCommandLine(const std::vector<std::string>& arguments, CommandLine& out) {
    bool options = true;
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        if (it->empty())
            return "an argument is empty (--help lists what there is)";
        if (!options || it->size() < 2 || it->front() != '-') {
            out.files.push_back(*it);
            continue;
        }
        const std::size_t equals = it->find('=');
        const std::string name = it->substr(0, equals);
        if (const auto [needed, value] = valueOf(name, out); value) {
            if (equals != std::string::npos)
                *value = it->substr(equals + 1);
            else if (++it != arguments.end())
                *value = *it;
            else
                return name + " needs " + needed;
            if (value->empty())
                return name + " needs " + needed;
            if (name == "--size" && !isSize(*value))
                return "--size needs " + std::string(needed) + ", not " + *value;
        } else if (*it == "--help" || *it == "-h") {
            out.task = CommandLine::Task::Help;
            return {};
        } else if (*it == "--version") {
            out.task = CommandLine::Task::Version;
            return {};
        } else if (*it == "--verbose") {
            out.verbose = true;
        } else if (*it == "--as-shown") {
            out.asShown = true;
        } else if (*it == "--windows") {
            out.windows = true;
        } else if (*it == "--new") {
            out.isNew = true;
        } else if (*it == "--") {
            options = false;
        } else {
            return "unknown option " + *it + " (--help lists the options)";
        }
    }
    return conflictIn(out);
}

std::string helpText() {
    using memory_host::FileFormat;
    using memory_host::formatNames;
    return "Usage: workbench [OPTION...] [FILE...]\n"
           "\n"
           "Opens molecular structures and density maps in the workbench. Without a FILE it\n"
           "opens a sample. Where it runs already, it opens the files there.\n"
           "\n" +
           inLines("FILE is a structure as " + formatNames(FileFormat::Holds::Structure) +
                   ", or a map as " + formatNames(FileFormat::Holds::Map) +
                   ", each also gzipped.") +
           "It may come through a pipe, as /dev/stdin.\n"
           "\n"
           "  --plugins DIR  load the plug-ins of this folder instead of the installed ones\n"
           "  --data DIR     take colour maps, help pages and the sample from this folder\n"
           "  --picture FILE write a picture of the files (PNG) and end; needs no display\n"
           "  --size WxH     the width and height of the picture in pixels (1280x960)\n"
           "  --save FILE    save the files as this one, in the format of its ending, and end;\n"
           "                 what it does not keep is said; needs no display\n"
           "  --as-shown     save only the active ones of alternative models\n"
           "  --new          start anew, also where the workbench runs already\n"
           "  --windows      give every plug-in a window of its own, and start anew\n"
           "  --verbose      write the debug stream to standard error, and changes to the log\n"
           "  --version      print the version and end\n"
           "  --help         print this and end\n"
           "\n"
           "The exit status is 0 when the windows were closed, 1 when no file could be opened or\n"
           "no window be shown or nothing be written, and 2 when the command line was wrong.\n";
}

} // namespace workbench
