// Saving entries to files, in the formats of Formats.h that have a writer, also gzipped. The ending
// of the file's name decides the format.
//
// An entry that is saved in the format it was read in keeps its file's text: rows of atoms that are
// gone, and what refers to them, are dropped; changed values are written into their columns; new
// atoms get rows in their residue. Another format is written from the items.
//
// The models of one file are saved as the models of one. Entries of several files are the data
// blocks of an mmCIF file; a PDB file takes only one of them, and a map file one grid.
#pragma once

#include "Compound.h"
#include "Files.h"
#include "HostExport.h"

#include <memory>
#include <span>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace memory_host {

/// Why something could not be saved, as one line: the file, what is wrong, and what is accepted.
/// What was there before is as it was.
class HOST_EXPORT SaveError : public std::runtime_error {
public:
    enum class Reason {
        Other,
        /// The file is not the one that the entries were read from or saved to any more; whether to
        /// replace it is the user's to say (SaveOptions::replaceChanged).
        ChangedByOthers,
        /// Entries that the file holds are closed, and it would lose them; likewise
        /// (SaveOptions::dropClosed).
        LosesClosed
    };

    explicit SaveError(const std::string& line, Reason reason = Reason::Other)
        : runtime_error(line), m_reason(reason) {}
    ~SaveError() override;
    Reason reason() const { return m_reason; }

private:
    Reason m_reason;
};

struct SaveOptions {
    bool onlySelected = false; ///< leave out the atoms that are not selected
    bool onlyActiveModels =
        false;                   ///< leave out the atoms of alternative models that are not active
    bool replaceChanged = false; ///< even if someone else changed the file meanwhile
    bool dropClosed = false;     ///< even if entries that the file holds are closed
};

/// What is to be saved, read from the items as plain tables.
class SavePlan;
struct HOST_EXPORT SavePlanDeleter {
    void operator()(SavePlan* plan) const;
};
using SavePlanPtr = std::unique_ptr<SavePlan, SavePlanDeleter>;

/// The top-level items that are in the same file as `entry`, in the order of the list: those that
/// were read from it and are still there, or were saved to it; `entry` alone where it has no file.
/// "Save" saves all of them.
HOST_EXPORT std::vector<TAVIK::Compound*> entriesOfFile(TAVIK::Compound* entry);

/// Whether the data of a top-level item are not those in its file: they were changed, or the file
/// was saved without them, or with a part of them only.
HOST_EXPORT bool isUnsaved(const TAVIK::Compound* entry);

/// Reads what is to be saved of top-level items, on the GUI thread, and checks that the format of
/// `path` can hold it. Throws SaveError; std::bad_alloc if there is not even memory for its line.
HOST_EXPORT SavePlanPtr planSaving(std::span<TAVIK::Compound* const> items, const std::string& path,
                                   const SaveOptions& options = {});

/// Writes the file, on any thread: touches no item. The old file is replaced when the new one is
/// complete on disk, and stays as it was if anything fails or `stop` is asked for. Returns a line
/// for each kind of thing that the file does not keep. Throws SaveError; std::bad_alloc as above.
HOST_EXPORT std::vector<std::string> writePlan(SavePlan& plan, const Progress& progress = {},
                                               std::stop_token stop = {});

/// How many atoms a plan saves.
HOST_EXPORT std::size_t atomCount(const SavePlan& plan);

/// Tells the items of a written plan, on the GUI thread, that they are in this file now; not those
/// that were saved in part, or destroyed meanwhile. What the file held before is unsaved from then
/// on. Throws as above.
HOST_EXPORT void markSaved(const SavePlan& plan);

/// planSaving(), writePlan() and markSaved().
HOST_EXPORT std::vector<std::string> saveFile(std::span<TAVIK::Compound* const> items,
                                              const std::string& path,
                                              const SaveOptions& options = {});

/// Which files can be saved, as the end of a sentence.
HOST_EXPORT std::string savableFiles();

} // namespace memory_host
