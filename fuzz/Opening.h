// What must hold when a file of any content is opened, used and destroyed again.
#pragma once

#include "Fuzzing.h"

namespace fuzzing {

/// Requires that the data space agrees with itself.
void requireInvariants();
/// Opens the content as a file, as a user does; stops the program where something does not hold.
void openInput(const InputFile& file, std::string_view content);

} // namespace fuzzing
