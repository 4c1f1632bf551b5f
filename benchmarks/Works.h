// The works that are timed, a function a concern. Each opens the structure of `path` itself and
// leaves an empty data space.
#pragma once

#include <string>

namespace benchmarks {

/// Opening the file, and what an atom takes in memory.
void benchmarkFiles(const std::string& path, int turns);
/// Saving it with a residue less: its text edited, and all of it written anew; and with bonds less.
void benchmarkSaving(const std::string& path, int turns);
/// What is kept for the case of a crash, with a colour of its own for each atom.
void benchmarkJournal(const std::string& path, int turns);
/// Filling the tree, refreshing it, clicking in it, and what a row takes in memory.
void benchmarkTree(const std::string& path, int turns);

/// The commands of the menus, timed from the slot, or from the end of its dialog, to the painted
/// window.
void benchmarkCommands(const std::string& path, int turns);

/// Pictures in several representations.
void benchmarkPictures(const std::string& path, int turns);
/// Surfaces of balls around the atoms.
void benchmarkSurfaces(const std::string& path, int turns);
/// How much of atoms is exposed.
void benchmarkAreas(const std::string& path, int turns);
/// The charges of the atoms, and their potential on a surface around them.
void benchmarkPotentials(const std::string& path, int turns);
/// Contours of a real map in `folder`, and of a made one that is written there.
void benchmarkContours(const std::string& folder, int turns);

/// The view's window after a click and after commands, and what it takes in memory.
void benchmarkView(const std::string& path, int turns);

/// Adding rotamers of many residues through the built plug-in, timed from the slot to the painted
/// window.
void benchmarkRotamers(const std::string& path, int turns);

/// Finding what is typed in the find box, timed from the key to the list of hits.
void benchmarkFind(const std::string& path, int turns);

} // namespace benchmarks
