// Standard input, output and error as the program finds them: closed, full, or with nobody at the
// other end.
#pragma once

#include <string>

namespace workbench {

/// Makes the three safe to use; called before anything else opens a file. A closed one would be the
/// number of the next file that is opened, and what is meant for a reader would go there. Writing
/// where nobody reads, or beyond the largest file that is allowed, fails from here on; it does not
/// end the process.
void secureStandardStreams();

/// Writes all of `text` to standard output; returns whether it went there. Why it did not is a line
/// on standard error.
bool writeToStandardOutput(const std::string& text);

} // namespace workbench
