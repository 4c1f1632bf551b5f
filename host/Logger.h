// The host's log.
#pragma once

#include "HostExport.h"

#include <string>

class HOST_EXPORT Logger {
public:
    /// Appends one line; a line break inside it is written as a blank.
    static void Write(const std::string& line);
    /// The same for a line at debug level, which a host may leave out.
    static void Debug(const std::string& line);
};
