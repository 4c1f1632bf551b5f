// Standard input, output and error as the program finds them: closed, full, or with nobody at the
// other end.
#pragma once

#include <string>

namespace workbench {

/// Makes the three safe to use; call it before anything else opens a file. If one is closed, the
/// next file that is opened would get its descriptor, and what is written to the stream would end
/// up in that file. From here on, writing to a pipe without a reader or beyond the file size limit
/// fails, and does not end the process.
void secureStandardStreams();

/// Writes all of `text` to standard output and returns whether that succeeded. If not, the reason
/// goes to standard error, as one line.
bool writeToStandardOutput(const std::string& text);

} // namespace workbench
