#include "MmcifRows.h"

#include "AlternativeLetters.h"

#include <algorithm>

namespace memory_host::mmcif {

RowPlan::RowPlan(std::span<const SavedStructure> structures,
                 std::span<const std::string_view> letters, std::span<const std::uint32_t> lastRows)
    : m_fileLetters(letters), m_atoms(letters.size()) {
    for (const SavedStructure& structure : structures)
        for (const SavedModel& model : structure.models)
            takeModel(model, lastRows[structure.block]);
    std::ranges::stable_sort(m_added, {}, &AddedAtom::behind);
    std::ranges::sort(m_letters, {}, &NewLetter::row);
}

void RowPlan::takeModel(const SavedModel& model, std::uint32_t lastRow) {
    const auto first = std::ranges::find_if(
        model.atoms, [](const SavedAtom& atom) { return atom.row != SavedAtom::newRow; });
    m_lastRow = first == model.atoms.end() ? lastRow : first->row;
    for (std::size_t residue = 0; residue != model.residues.size(); ++residue)
        takeResidue(model, residue);
}

void RowPlan::takeResidue(const SavedModel& model, std::size_t residue) {
    const std::span<const SavedAtom> atoms(model.atoms.data() + model.residues[residue].firstAtom,
                                           model.atoms.data() + model.atomEnd(residue));
    const ResidueLetters letters(atoms,
                                 [this](const SavedAtom& atom) { return m_fileLetters[atom.row]; });
    bool isInFile = false;
    std::uint32_t last = 0;
    for (const SavedAtom& atom : atoms) {
        if (atom.row == SavedAtom::newRow)
            continue;
        last = std::max(last, atom.row);
        isInFile = true;
        m_atoms[atom.row] = &atom;
        if (const std::string_view letter = letters.of(atom.model);
            m_fileLetters[atom.row] != letter)
            m_letters.push_back({atom.row, std::string(letter)});
    }
    if (isInFile)
        m_lastRow = last;
    for (const SavedAtom& atom : atoms)
        if (atom.row == SavedAtom::newRow)
            m_added.push_back({m_lastRow, isInFile, &atom, &model.residues[residue], &model,
                               std::string(letters.of(atom.model))});
}

} // namespace memory_host::mmcif
