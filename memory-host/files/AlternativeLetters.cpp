#include "AlternativeLetters.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace memory_host {

namespace {

constexpr std::string_view letters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcdefghijklmnopqrstuvwxyz";

// Gives letters to the models of one residue.
class ResidueLetters {
public:
    explicit ResidueLetters(std::span<const SavedAtom> atoms) : m_atoms(atoms) {}

    /// False when there are too few letters.
    bool find() {
        takeFromFile();
        std::vector<std::uint16_t> models;
        for (const SavedAtom& atom : m_atoms)
            if (atom.model != 0)
                models.push_back(atom.model);
        std::ranges::sort(models);
        models.erase(std::unique(models.begin(), models.end()), models.end());
        return std::ranges::all_of(models, [this](std::uint16_t model) { return giveNext(model); });
    }
    char of(const SavedAtom& atom) const { return atom.model == 0 ? '\0' : letterOf(atom.model); }

private:
    char letterOf(std::uint16_t model) const {
        const auto found = std::ranges::find(m_given, model, &Given::first);
        return found == m_given.end() ? '\0' : found->second;
    }
    bool isGiven(char letter) const {
        return std::ranges::find(m_given, letter, &Given::second) != m_given.end();
    }
    // The first atom in the file that says it decides.
    void takeFromFile() {
        std::vector<const SavedAtom*> inFile;
        for (const SavedAtom& atom : m_atoms)
            if (atom.row != SavedAtom::newRow && atom.model != 0 && atom.details.alternative != 0)
                inFile.push_back(&atom);
        std::ranges::sort(inFile, {}, &SavedAtom::row);
        for (const SavedAtom* atom : inFile)
            if (letterOf(atom->model) == '\0' && !isGiven(atom->details.alternative))
                m_given.emplace_back(atom->model, atom->details.alternative);
    }
    bool giveNext(std::uint16_t model) {
        if (letterOf(model) != '\0')
            return true;
        const auto free = std::ranges::find_if(letters, [this](char c) { return !isGiven(c); });
        if (free == letters.end())
            return false;
        m_given.emplace_back(model, *free);
        return true;
    }

    using Given = std::pair<std::uint16_t, char>;
    std::span<const SavedAtom> m_atoms;
    std::vector<Given> m_given; ///< at most as many as there are letters
};

} // namespace

std::vector<char> alternativeLetters(const SavedModel& model, const std::vector<std::string>& names,
                                     const SaveReport& report) {
    std::vector<char> result(model.atoms.size());
    const std::span<const SavedAtom> all(model.atoms);
    for (std::size_t i = 0; i != model.residues.size(); ++i) {
        const SavedResidue& residue = model.residues[i];
        const std::size_t first = residue.firstAtom;
        const auto atoms = all.subspan(first, model.atomEnd(i) - first);
        if (std::ranges::all_of(atoms, [](const SavedAtom& atom) { return atom.model == 0; }))
            continue;
        ResidueLetters found(atoms);
        if (!found.find())
            report.refuse("residue " + names[residue.name] + ' ' + names[residue.number] +
                              " has more alternative models than there are letters",
                          "accepted are up to 62");
        std::ranges::transform(atoms, result.begin() + static_cast<std::ptrdiff_t>(first),
                               [&found](const SavedAtom& atom) { return found.of(atom); });
    }
    return result;
}

} // namespace memory_host
