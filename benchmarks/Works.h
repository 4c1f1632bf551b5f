// The works that are timed, a function a concern. Each finds the structure of `path` unopened and
// leaves an empty data space.
#pragma once

#include <string>

namespace benchmarks {

/// Opening the file, and what an atom takes in memory.
void benchmarkFiles(const std::string& path, int turns);
/// Filling the tree, refreshing it, clicking in it, and what a row takes in memory.
void benchmarkTree(const std::string& path, int turns);

/// The commands of the menus, from the slot, or from the dialog's end, to the painted
/// window.
void benchmarkCommands(const std::string& path, int turns);

} // namespace benchmarks
