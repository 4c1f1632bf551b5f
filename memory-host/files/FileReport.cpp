#include "FileReport.h"

#include <algorithm>

namespace memory_host {

namespace {

const char* pluralOf(FileReport::Kind kind) {
    switch (kind) {
    case FileReport::Kind::Coordinates:
        return "atoms whose coordinates are no numbers";
    case FileReport::Kind::NoCoordinates:
        return "atoms without coordinates";
    case FileReport::Kind::Temperature:
        return "temperature factors that are no numbers";
    case FileReport::Kind::Charge:
        return "partial charges and radii that are no numbers";
    case FileReport::Kind::Row:
        return "records of atoms in a wrong form";
    case FileReport::Kind::Name:
        return "names that were changed";
    case FileReport::Kind::Residue:
        return "residues with very many atoms or names";
    case FileReport::Kind::Bonds:
        return "models with atoms that are packed too closely for bonds";
    case FileReport::Kind::ListedBonds:
        return "entries that list bonds which were left out";
    case FileReport::Kind::Cut:
        return "signs that the file was cut";
    case FileReport::Kind::Map:
        return "oddities of the map's header";
    }
    return "";
}

} // namespace

FileError::~FileError() = default;

std::string oneLine(std::string_view text, std::size_t longest) {
    std::string line(text.substr(0, longest));
    if (line.size() < text.size())
        line += " ...";
    std::replace_if(
        line.begin(), line.end(),
        [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return byte < 0x20 || byte == 0x7f;
        },
        ' ');
    return line;
}

std::string inQuotes(std::string_view text) {
    return '"' + oneLine(text, 40) + '"';
}

std::string FileReport::place(std::size_t line) const {
    // A path may be of any length, and is shortened to leave the message in sight.
    return oneLine(m_path, 4096) + (line ? ':' + std::to_string(line) : std::string()) + ": ";
}

FileReport::FileReport(std::string path)
    : m_path(std::move(path)),
      m_noMemory(refusal(0, "there is not enough memory to open it", acceptedFiles())) {}

FileError FileReport::refusal(std::size_t line, const std::string& what,
                              const std::string& accepted) const {
    return FileError(place(line) + oneLine(what) + "; " + oneLine(accepted));
}

void FileReport::refuse(std::size_t line, const std::string& what,
                        const std::string& accepted) const {
    throw refusal(line, what, accepted);
}

void FileReport::refuseForMemory() const {
    throw m_noMemory; // NOLINT: a copy, which needs none
}

FileReport::Tally& FileReport::tallyOf(Kind kind) {
    const auto found = std::find_if(m_tallies.begin(), m_tallies.end(),
                                    [kind](const Tally& tally) { return tally.kind == kind; });
    return found != m_tallies.end() ? *found : m_tallies.emplace_back(Tally{kind, 0, {}});
}

std::vector<std::string> FileReport::remarks() const {
    std::vector<std::string> lines;
    for (const Tally& tally : m_tallies) {
        lines.insert(lines.end(), tally.lines.begin(), tally.lines.end());
        if (tally.count > tally.lines.size())
            lines.push_back(place(0) + std::to_string(tally.count - tally.lines.size()) + " more " +
                            pluralOf(tally.kind));
    }
    return lines;
}

} // namespace memory_host
