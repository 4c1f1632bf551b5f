// The letters of alternative locations: those of the file, and new ones for models that were made.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace memory_host {

/// The letters of the alternative models of one residue: that of most of the rows of the file that
/// are in the model, or of the first of them, unless another model has it, or else the first free
/// one of A to Z, 0 to 9 and a to z. Beyond these, numbers.
class ResidueLetters {
public:
    /// `inFile` gives the letter that the file has for an atom of it, or an empty text.
    using InFile = std::function<std::string_view(const SavedAtom&)>;
    ResidueLetters(std::span<const SavedAtom> atoms, const InFile& inFile);

    /// Of a model of one of the atoms; empty for 0.
    std::string_view of(std::uint16_t model) const;
    /// Whether there were enough letters.
    bool areLetters() const { return m_areLetters; }

private:
    void takeFromFile(std::span<const SavedAtom> atoms, const InFile& inFile);
    std::size_t indexOf(std::uint16_t model) const;
    std::string freeLetter();

    std::vector<std::uint16_t> m_models; ///< ascending
    std::vector<std::string> m_letters;  ///< of the models
    std::unordered_set<std::string> m_used;
    std::size_t m_next = 0; ///< letter to try
    bool m_areLetters = true;
};

/// The letter of each atom of a model; 0 for atoms that all alternative models share. Refuses a
/// residue that has more alternative models than there are letters. `names` are those of the
/// content.
std::vector<char> alternativeLetters(const SavedModel& model, const std::vector<std::string>& names,
                                     const SaveReport& report);

} // namespace memory_host
