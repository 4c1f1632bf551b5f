// What an editor must know of a PDB file before it writes the first line: its rows, what refers to
// what, and how many records there are.
#pragma once

#include "PdbConect.h"
#include "PdbReferences.h"
#include "PdbRelisting.h"
#include "SavedTables.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace memory_host::pdb {

/// Whether a record tells more of an atom: ANISOU, SIGATM or SIGUIJ.
bool isPartOfAtom(std::string_view line);

/// How many records there are of the kinds that MASTER counts.
class PdbCounts {
public:
    void add(std::string_view record);
    /// Brings a MASTER record up to date where it has the counts of before.
    void update(std::string& master, const PdbCounts& before) const;

    std::int64_t atoms = 0;
    std::int64_t ends = 0; ///< of chains

private:
    std::array<std::int64_t, 6> m_others{};
};

/// Puts a number into columns that hold the one of before.
void putCount(std::string& record, std::size_t first, std::size_t last, std::int64_t before,
              std::int64_t now);

/// Where the atom of a row is in the models.
struct RowPlace {
    std::uint32_t model = SavedAtom::newRow;
    std::uint32_t atom = 0;

    bool isKept() const { return model != SavedAtom::newRow; }
};

struct PdbSurvey {
    /// Looks at all lines of a text, which lives longer than this. `letters` are those of the
    /// alternative locations, by model and atom.
    void look(std::string_view text, const SavedStructure& structure,
              const std::vector<std::vector<char>>& letters);

    std::vector<std::string_view> rows; ///< those of all atoms, without their line ends
    std::vector<RowPlace> places;       ///< by row
    std::int32_t lastSerial = 0;        ///< the highest serial number
    bool areSerialsDecimal = false;     ///< also those beyond 99,999
    std::string_view lineEnd = "\n";
    std::int64_t models = 0; ///< with atoms
    std::int64_t modelsLeft = 0;
    PdbCounts counts;
    References references;
    Conect conect;
    Relisting relisting;
    std::unordered_set<std::string_view> droppedAtoms; ///< columns 7 to 27 of their rows

private:
    void placeAtoms(const SavedStructure& structure);
    void readLines(std::string_view text);
    void readAtom(std::string_view line);
    void readOther(std::string_view line);
    using Letters = std::vector<std::vector<char>>;
    template <class Use>
    void forListed(const SavedStructure& structure, const Letters& letters, const Use& use) const;
    void findFatesOfBonds(const SavedStructure& structure, const Letters& letters);
    void findFates(const SavedStructure& structure, const Letters& letters);

    bool m_hasModelRows = false; ///< of the model that is read
    bool m_isModelLeft = false;
};

} // namespace memory_host::pdb
