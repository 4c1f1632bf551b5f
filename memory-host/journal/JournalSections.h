// What a journal holds: bytes by section, in this order. Items are named by the identifiers that
// they had; those of a file that was read follow one another, and those of other items are said
// with the item. Numbers are JournalBytes', identifiers mostly as the difference to the one before.
#pragma once

#include "JournalBytes.h"
#include "files/FileStamp.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace memory_host {

enum class JournalSection : std::uint8_t {
    Texts,    ///< of names, numbered from 1; 0 is the empty one
    Files,    ///< the files that entries are in, numbered from 1: stamp, what is in them
    Readings, ///< the files that were read: path, stamp, first identifier, number of items, whether
              ///< the journal has the text
    Entries,  ///< the top-level items, in order: name, path, file, whether it is unsaved
    Made,     ///< items that no file gives, with their values
    Members,  ///< of sets
    Looks,    ///< runs of items that are there and look the same: what is in no run is gone
    Atoms,    ///< atoms of files that were changed: all values
    Values,   ///< grids of files that got other values: version
    Models,   ///< residues whose active model is not the first one
    Bounds    ///< grids of which a part is shown
};
inline constexpr std::size_t journalSectionCount = 11;
using JournalSections = std::array<JournalBytes, journalSectionCount>;

inline constexpr std::string_view journalMark = "structure-editor journal 2\n";

/// Bits of a look.
namespace journal_look {
inline constexpr std::uint8_t selected = 1;
inline constexpr std::uint8_t hidden = 2;
inline constexpr std::uint8_t coloured = 4;  ///< not in the default colour
inline constexpr std::uint8_t newColour = 8; ///< the colour follows; else it is the last one
} // namespace journal_look

/// Bits of an atom.
namespace journal_atom {
inline constexpr std::uint8_t hasPosition = 1;
inline constexpr std::uint8_t hasCharge = 2;
inline constexpr std::uint8_t isHetero = 4;
} // namespace journal_atom

/// What is too large to be written anew each time stands in files of its own.
inline std::string meshFile(std::uint32_t item, std::uint32_t version) {
    return "mesh-" + std::to_string(item) + '-' + std::to_string(version);
}
inline std::string gridFile(std::uint32_t item, std::uint32_t version) {
    return "grid-" + std::to_string(item) + '-' + std::to_string(version);
}
/// The text of a file has its name, by which it may be told what it is.
inline std::string textFolder(std::uint32_t firstItem) {
    return "text-" + std::to_string(firstItem);
}
inline std::string_view fileNameOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

void writeStamp(JournalBytes& bytes, const FileStamp& stamp);
FileStamp readStamp(JournalReader& reader);

} // namespace memory_host
