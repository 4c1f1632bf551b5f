// The table of file formats: the source of what can be opened, what messages and help say of it,
// and which reader a file gets.
#pragma once

#include "HostExport.h"

#include <span>
#include <string>
#include <string_view>

namespace memory_host {

class Bytes;
class FileReport;
struct FileContent;
struct FileSample;
struct SavedContent;
class SaveReport;

/// A file format: a row of the table. It is defined in the source file of its reader.
struct FileFormat {
    enum class Holds { Structure, Map };
    enum class Form { Text, Binary };

    std::string_view name; ///< as messages say it: "PDB"
    Holds holds;
    Form form;
    std::span<const std::string_view> endings; ///< of file names, in lower case: ".pdb"
    /// The mark by which a binary format is recognised, in words for a message; else empty.
    std::string_view mark = {};

    /// Whether a file's content is of this format. See Readers.h for both.
    bool (*recognises)(const FileSample& sample);
    FileContent (*read)(Bytes bytes, const std::string& stem, FileReport& report);
    bool holdsSeveral = false; ///< structures that are no models of one another
    /// The text of a file of this format, from the items and what other formats' texts say. On any
    /// thread; see SavedTables.h. Null for a format that is not written.
    std::string (*write)(const SavedContent& content, SaveReport& report) = nullptr;
    /// The same for entries of one file that was of this format: its text, edited.
    std::string (*edit)(const SavedContent& content, SaveReport& report) = nullptr;
    bool addsBonds = false; ///< edit() lists bonds that were made, by the atoms' numbers
};

/// All formats, in the order in which they are listed.
HOST_EXPORT std::span<const FileFormat* const> fileFormats();
/// The names of the formats that hold structures, or maps, as "PDB, PQR or mmCIF".
HOST_EXPORT std::string formatNames(FileFormat::Holds holds);

/// Which files can be opened, as the end of a sentence.
std::string acceptedFiles();

} // namespace memory_host
