// Where the log is written, and who receives its lines.
#pragma once

#include "HostExport.h"

#include <QString>

#include <functional>
#include <string>

namespace memory_host {

/// The file that the log is appended to, beside standard error; empty for none.
HOST_EXPORT void setLogFile(const QString& file);

/// Which lines the log takes: those at debug level say what each change was.
enum class LogLevel { Usual, Debug };
HOST_EXPORT void setLogLevel(LogLevel level);

/// Receives each line of the log instead of standard error; an empty sink restores standard error.
/// Returns the previous sink.
using LogSink = std::function<void(const std::string& line)>;
HOST_EXPORT LogSink setLogSink(LogSink sink);

/// Hears each line of the log beside all that is done with it, but for those at debug level; on the
/// thread that writes it. Returns the previous one; an empty one hears nothing.
HOST_EXPORT LogSink setLogListener(LogSink listener);

} // namespace memory_host
