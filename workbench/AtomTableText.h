// Atoms as a table in CSV, for spreadsheets.
#pragma once

#include "Compound.h"

#include <QByteArray>
#include <QString>

#include <vector>

class QIODevice;

namespace workbench {

/// Writes a line of titles and one for each atom, in UTF-8, as RFC 4180 has it: name, element, x,
/// y, z (Å; empty without a position), occupancy, temperature factor (Å²), alternative location,
/// formal charge, partial charge (empty where it is not known). Returns whether all could be
/// written.
bool writeAtomTable(const std::vector<TAVIK::Compound*>& atoms, QIODevice& out);

/// The same to a file, which is replaced only when all is written. Returns what went wrong, in one
/// line; empty if nothing did.
QString saveAtomTable(const std::vector<TAVIK::Compound*>& atoms, const QString& file);

} // namespace workbench
