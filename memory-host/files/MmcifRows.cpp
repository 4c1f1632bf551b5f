#include "MmcifRows.h"

#include <algorithm>

namespace memory_host::mmcif {

namespace {

// One character each, as many programs read no more. Those that mean something in CIF are left out.
constexpr std::string_view singleLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcdefghijklmnopqrstuvwxyz!%&()*+,-/:<=>@^`{|}~";

} // namespace

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
    findLetters(atoms);
    bool isInFile = false;
    std::uint32_t last = 0;
    for (const SavedAtom& atom : atoms) {
        if (atom.row == SavedAtom::newRow)
            continue;
        last = std::max(last, atom.row);
        isInFile = true;
        m_atoms[atom.row] = &atom;
        if (m_fileLetters[atom.row] != m_residueLetters[atom.model])
            m_letters.push_back({atom.row, m_residueLetters[atom.model]});
    }
    if (isInFile)
        m_lastRow = last;
    for (const SavedAtom& atom : atoms)
        if (atom.row == SavedAtom::newRow)
            m_added.push_back({m_lastRow, isInFile, &atom, &model.residues[residue], &model,
                               m_residueLetters[atom.model]});
}

// The first atom of the file in a model gives its letter, unless another model has it.
void RowPlan::findLetters(std::span<const SavedAtom> atoms) {
    const std::uint16_t models = std::ranges::max_element(atoms, {}, &SavedAtom::model)->model;
    m_residueLetters.assign(models + std::size_t{1}, std::string());
    if (models == 0)
        return;
    m_usedLetters.clear();
    std::vector<bool> isUsed(m_residueLetters.size());
    for (const SavedAtom& atom : atoms) {
        isUsed[atom.model] = true;
        if (atom.model == 0 || atom.row == SavedAtom::newRow || m_fileLetters[atom.row].empty() ||
            !m_residueLetters[atom.model].empty())
            continue;
        std::string letter(m_fileLetters[atom.row]);
        if (m_usedLetters.insert(letter).second)
            m_residueLetters[atom.model] = std::move(letter);
    }
    std::size_t next = 0;
    for (std::size_t model = 1; model != m_residueLetters.size(); ++model)
        if (isUsed[model] && m_residueLetters[model].empty())
            m_residueLetters[model] = freeLetter(next);
}

// Beyond single characters, numbers.
std::string RowPlan::freeLetter(std::size_t& next) const {
    std::string letter;
    do {
        letter = next < singleLetters.size() ? std::string(singleLetters.substr(next, 1))
                                             : "X" + std::to_string(next);
        ++next;
    } while (m_usedLetters.contains(letter));
    return letter;
}

} // namespace memory_host::mmcif
