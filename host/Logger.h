// The host's log.
#pragma once

#include "HostExport.h"

#include <string>

class HOST_EXPORT Logger {
public:
    /// Appends one line; a line break inside it is written as a blank.
    static void Write(const std::string& line);
};
