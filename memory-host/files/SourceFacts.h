// What the text of a file says beside its items, for saving in another format: metadata as gemmi
// reads it, residue names and anisotropic displacements by row of an atom.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <gemmi/model.hpp>

#include <map>
#include <string>
#include <vector>

namespace memory_host {

struct SourceFacts {
    /// U11, U22, U33, U12, U13, U23 in Å².
    using Anisotropic = std::array<double, 6>;

    gemmi::Structure metadata; ///< with the models of the file
    /// Record or category names of the file, and how many lines or rows each has.
    std::map<std::string, std::size_t> kinds;
    /// By row of an atom among all of the file; may end before the last one.
    std::vector<std::string> residues;
    std::vector<std::pair<std::uint32_t, Anisotropic>> anisotropic; ///< ascending by row
    std::size_t segments = 0; ///< number of atoms with a segment name, which only PDB has

    /// Tells the residue name in a row; empty where it is not known.
    auto namesInRows() const {
        return [this](std::uint32_t row) {
            return row < residues.size() ? std::string_view(residues[row]) : std::string_view();
        };
    }
    /// The displacement of a row, or null.
    const Anisotropic* anisotropicOf(std::uint32_t row) const;
};

/// Reads the text of a structure's file; nothing for a structure without one. What gemmi cannot
/// read is remarked on.
SourceFacts readFacts(const SavedStructure& structure, SaveReport& report);

/// An atom in the order in which it is written.
struct WrittenAtom {
    std::uint32_t atom = 0; ///< in the model
    std::uint32_t residue = 0;
    std::string_view residueName;
    char alternative = '\0';    ///< letter, or 0
    bool startsResidue = false; ///< another residue, or another name, than the atom before it
};

/// The atoms of a model by residue, then as the file has them; new ones come last. The texts live
/// as long as both. Refuses more alternative models than there are letters.
std::vector<WrittenAtom> writtenAtoms(const SavedModel& model, const SavedContent& content,
                                      const SourceFacts& facts, const SaveReport& report);

} // namespace memory_host
