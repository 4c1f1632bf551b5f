// What must hold when a file of any content is opened, used and destroyed again.
#pragma once

#include "Fuzzing.h"

namespace fuzzing {

/// Opens the file as a user does; stops the program where something does not hold.
void openAndDestroy(const InputFile& file);

} // namespace fuzzing
