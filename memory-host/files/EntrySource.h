// What an entry's file says of its items: its text, and the row of each atom in it.
#pragma once

#include "FileStamp.h"
#include "SourceText.h"
#include "items/Origins.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace memory_host {

/// A file on the disk. Entries that are in one file share it.
struct FileOnDisk {
    FileStamp stamp;                    ///< when it was read or last saved
    std::vector<std::uint32_t> entries; ///< then in it: identifiers, ascending
};

/// One reading of a file, from which the entries were made that share this. The same text gives the
/// same items in the same order.
struct FileReading {
    std::string path;
    FileStamp stamp;             ///< when it was read
    std::uint32_t firstItem = 0; ///< identifiers of its items follow one another
    std::uint32_t itemCount = 0;
};

class EntrySource : public ItemSource {
public:
    /// An item of the file: its identifier, and its place among the rows of all atoms of the text.
    struct Row {
        std::uint32_t id = 0;
        std::uint32_t row = 0;
    };
    /// A bond that the file lists, and the rows of its atoms.
    struct ListedBond {
        std::uint32_t id = 0;
        std::uint32_t first = 0;
        std::uint32_t second = 0;
    };

    std::shared_ptr<const SourceText> text; ///< null for maps, and for what was not read
    std::shared_ptr<FileOnDisk> file;       ///< in which the entry is
    std::shared_ptr<FileReading> reading;   ///< null for what was not read
    std::uint32_t block = 0;                ///< which structure of the file, from 0
    std::uint32_t model = 0;                ///< which of its models, from 0
    std::uint32_t lastBond = 0;             ///< identifier; bonds beyond were made later
    std::uint32_t foundBonds = 0;           ///< how many were found by distance
    std::vector<Row> atoms;                 ///< ascending by identifier
    std::vector<ListedBond> bonds;          ///< likewise
};

} // namespace memory_host
