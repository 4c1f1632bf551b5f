// Compares the window and the data with the plain model.
#pragma once

#include "Driver.h"

namespace random_use {

/// A line for each thing that differs; empty when all is the same. Long lists are cut.
QStringList differences(Model& model, const Driver& driver);
/// The changes that can be taken back, or done again, the oldest first: 's' for each that only
/// selects, 'd' for each other.
QString historyText(bool back);
/// The same for what was written, told and asked.
QStringList differences(const Said& expected, const Said& real);

} // namespace random_use
