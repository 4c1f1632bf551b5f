// Opening files of structures and maps, in the formats of Formats.h, also gzipped. The content
// decides the format; the file's ending only where the content fits several.
//
// An entry is a composite with the lower-case identifier of the file, or else the file's name
// without endings; several models are entries of their own, as "1d3z.1". If an item of that name is
// there, the entry gets a number, as "1ubq-2" or "1d3z-2.1". Chains have the author's
// names, and residues the author's numbers and insertion codes. What has no name is called "_".
// Names are Latin-1: UTF-8 is decoded, and what does not fit becomes "_", with a remark.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace memory_host {

/// Why a file could not be opened, as one line: the file, the line in it where there is one, what
/// is wrong, and what is accepted.
class HOST_EXPORT FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~FileError() override;
};

/// Called while a file is opened, with the current stage ("building the atoms") and its progress (0
/// to 1, or negative if unknown).
using Progress = std::function<void(const std::string& stage, double fraction)>;

/// The content of a file, read but not yet in the data space.
class ParsedFile;
struct HOST_EXPORT ParsedFileDeleter {
    void operator()(ParsedFile* file) const;
};
using ParsedFilePtr = std::unique_ptr<ParsedFile, ParsedFileDeleter>;

/// Reads and checks a file. Touches nothing of the data space, so that it may run on any thread.
/// `stop` ends the reading of a long file, or of a pipe that brings nothing, with a FileError.
/// Throws FileError; std::bad_alloc if there is not even memory for its line.
HOST_EXPORT ParsedFilePtr parseFile(const std::string& path, std::stop_token stop = {});

/// The result of opening a file.
struct OpenedFile {
    std::vector<TAVIK::Compound*> items; ///< the new top-level items
    /// A line for everything that was read other than as written (replaced characters, atoms
    /// without a usable position ...), in the form of a FileError's; at most ten of one kind, and
    /// then a line with the number of the others.
    std::vector<std::string> remarks;
};

/// Builds the items of a parsed file outside of the space, and attaches them in one step under a
/// guard that tells every subscriber. Throws FileError when the guard is refused or memory runs
/// out; the space is then unchanged. The content is moved out of `file`, which opens only once.
/// `progress`, which may be empty, must not change the data space. If it throws, the space is
/// unchanged; a std::exception arrives as a FileError, any other as it is.
HOST_EXPORT OpenedFile openParsed(ParsedFile& file, const Progress& progress);

/// parseFile() and openParsed().
HOST_EXPORT OpenedFile openFile(const std::string& path);

} // namespace memory_host
