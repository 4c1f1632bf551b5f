// Files in the plainest way: lists of lines, one an atom, as they are when they are written. It
// shares no code with what writes and reads files.
#pragma once

#include "PlainItems.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace plain {

/// What a file says of an atom.
struct FileRow {
    std::string chain;   ///< "_" where there is none
    std::string residue; ///< as "MET 1"
    std::string name;
    std::string element;
    std::array<float, 3> position{};
    bool hasPosition = false;
    float temperature = 0.0F;
    AtomDetails details;

    std::string text() const;
};

/// What a file holds: a list of lines for each entry.
struct FileContent {
    std::vector<std::vector<std::string>> entries;
    std::vector<int> structures; ///< by entry: of which it is a model, from 0
    bool isInOrder = false; ///< the lines are as the items stand; else new ones may be anywhere
};

/// What to save of entries, and what the user has agreed to.
struct SaveChoice {
    bool onlySelected = false;
    bool onlyActive = false;
    bool replaceChanged = false;
    bool dropClosed = false;
};

enum class SaveOutcome { Saved, Refused, ChangedByOthers, LosesClosed };

/// Why saving is refused, and what its line then says among other things.
enum class Refused { Ending, NotAlone, NoAtoms, Nowhere, Map, Structure, Several, Columns, Empty };
inline constexpr const char* refusedTexts[] = {"the ending of its name tells no format",
                                               "cannot stand in one file",
                                               "there is no atom to be saved",
                                               "no atom to be saved has a position",
                                               "hold no maps",
                                               "hold no structures",
                                               "are not models of one structure",
                                               "does not fit the columns of a PDB file",
                                               "nothing of a map is within its bounds"};

class Files {
public:
    /// What a file holds; null if it is as it was before the session.
    const FileContent* at(const std::string& name) const;
    std::vector<std::string> names() const;
    /// Top-level items were made of a file.
    void opened(const std::string& name, const Items& entries);
    /// `why` is set where it is refused.
    SaveOutcome save(const Items& entries, const std::string& name, const SaveChoice& choice,
                     Refused& why);

    /// The file that a top-level item was read from or saved to last; empty for none.
    std::string nameOf(const Item& entry) const;
    /// Those of `topLevel` that came to that file, or from it, with the entry.
    Items together(Item* entry, const Items& topLevel) const;
    bool hasChanged(const Item& entry) const;
    bool isUnsaved(const Item& entry) const;
    /// Whether there is something in a top-level item that files hold.
    bool isSavable(const Item& entry) const;

private:
    /// Entries that share a file.
    struct Group {
        std::string file;
        std::vector<unsigned int> entries; ///< that are in it now
        unsigned int writing = 0;          ///< of the file, the last one that is known of
    };
    /// Where an entry comes from. Saving in the same format edits the file's text.
    struct Reading {
        unsigned int number = 0; ///< 0 where it comes from no file
        int structure = 0;
        std::string format;
    };

    /// What would be written.
    struct Draft {
        FileContent content;
        bool isMap = false;
        bool isEmpty = false;   ///< a map of which nothing is shown
        bool leavesOut = false; ///< a part of the entries
        bool hasPosition = false;
        bool fitsColumns = true;
    };

    const Group* groupOf(const Item& entry) const;
    bool editsText(const Items& entries, const SaveChoice& choice, const std::string& format) const;
    Draft draftOf(const Items& entries, const std::string& format, const SaveChoice& choice) const;
    static std::string mapLine(const Item& grid, Draft& draft);
    static std::optional<Refused> refusal(const Draft& draft, std::size_t entries,
                                          const std::string& format);
    void leaveOldFiles(const Group& written, const std::vector<unsigned int>& moved);

    std::map<std::string, FileContent> m_contents;
    std::map<std::string, unsigned int> m_writings;
    std::map<unsigned int, std::shared_ptr<Group>> m_groups; ///< by identifier
    std::map<unsigned int, Reading> m_readings;              ///< likewise
    std::map<unsigned int, unsigned int> m_saved;            ///< the version that is in a file
    unsigned int m_lastReading = 0;
};

/// The lines of what an entry holds, in the order in which a file has them that is written anew.
std::vector<FileRow> fileRows(const Item& entry, const SaveChoice& choice = {});

} // namespace plain
