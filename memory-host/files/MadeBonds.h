// Bonds that were made, stretched or destroyed, in files that do not list them.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace memory_host {

/// The bonds that are found by the distance of their atoms when a model is read again, ascending.
std::vector<std::pair<std::uint32_t, std::uint32_t>>
bondsFoundAgain(const SavedModel& model, const std::vector<std::string>& names,
                const SaveReport& report);

/// The names by which a file knows both atoms of a bond.
std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names);
/// Likewise, with the letters that the atoms of the model get; see alternativeLetters().
std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names, const std::vector<char>& letters);

/// Where a file lists bonds.
enum class BondRecords : std::uint8_t {
    Kept,   ///< in its text, which lists no others
    Added,  ///< in its text, and in further records that know atoms by their numbers
    Written ///< in records that know the atoms of the first model by their names
};

/// Finds out what reading the file will make of the bonds of edited models: bonds that were made
/// know whether they are found again, and those that were found when the file was read, but are not
/// any more, join them. Remarks on bonds that come back although they were destroyed, on those that
/// further models get, as records hold for all models, and on those that no file keeps. Records
/// that are kept stay as long as any model has the bond.
void settleBonds(SavedContent& content, BondRecords records, SaveReport& report);

/// What reading the file takes from records which list the bonds of several alternative locations.
struct BondsOfSharedRecords {
    std::size_t comingBack = 0; ///< that were destroyed
    std::size_t joined = 0;     ///< of new atoms
};
/// Adds a line on bonds that no record keeps, if there are any.
void remarkOnUnkept(std::size_t count, const std::string& why, SaveReport& report);
/// Likewise, as neither the number nor the names of an atom tell it from others.
void remarkOnAmbiguous(std::size_t count, SaveReport& report);
/// Adds a line for each count that is not 0.
void remarkOnSharedRecords(const BondsOfSharedRecords& bonds, SaveReport& report);

/// Whether reading the file brings a bond back only if the file lists it, which it does not yet.
inline bool isToBeListed(const SavedBond& bond) {
    return !bond.isListed && !bond.isFoundAgain;
}

} // namespace memory_host
