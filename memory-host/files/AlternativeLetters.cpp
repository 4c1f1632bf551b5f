#include "AlternativeLetters.h"

#include <algorithm>
#include <map>
#include <utility>

namespace memory_host {

namespace {

constexpr std::string_view letters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcdefghijklmnopqrstuvwxyz";

std::string_view letterInFile(const SavedAtom& atom) {
    const char& letter = atom.details.alternative;
    return letter == '\0' ? std::string_view() : std::string_view(&letter, 1);
}

} // namespace

ResidueLetters::ResidueLetters(std::span<const SavedAtom> atoms, const InFile& inFile) {
    for (const SavedAtom& atom : atoms)
        if (atom.model != 0)
            m_models.push_back(atom.model);
    if (m_models.empty()) // mostly
        return;
    std::ranges::sort(m_models);
    m_models.erase(std::unique(m_models.begin(), m_models.end()), m_models.end());
    m_letters.resize(m_models.size());
    takeFromFile(atoms, inFile);
    for (std::string& letter : m_letters)
        if (letter.empty())
            letter = freeLetter();
}

// So that an atom which is put into another model changes its letter, and not those of all others.
void ResidueLetters::takeFromFile(std::span<const SavedAtom> atoms, const InFile& inFile) {
    struct Rows {
        std::uint32_t count = 0;
        std::uint32_t first = SavedAtom::newRow;
    };
    std::map<std::pair<std::uint16_t, std::string_view>, Rows> found;
    for (const SavedAtom& atom : atoms)
        if (atom.row != SavedAtom::newRow && atom.model != 0 && !inFile(atom).empty()) {
            Rows& rows = found[{atom.model, inFile(atom)}];
            ++rows.count;
            rows.first = std::min(rows.first, atom.row);
        }
    std::vector<std::pair<std::pair<std::uint16_t, std::string_view>, Rows>> order(found.begin(),
                                                                                   found.end());
    std::ranges::sort(order, [](const auto& a, const auto& b) {
        return a.second.count != b.second.count ? a.second.count > b.second.count
                                                : a.second.first < b.second.first;
    });
    for (const auto& [use, rows] : order) {
        std::string& letter = m_letters[indexOf(use.first)];
        if (letter.empty() && m_used.emplace(use.second).second)
            letter = use.second;
    }
}

std::size_t ResidueLetters::indexOf(std::uint16_t model) const {
    return static_cast<std::size_t>(std::ranges::lower_bound(m_models, model) - m_models.begin());
}

std::string_view ResidueLetters::of(std::uint16_t model) const {
    return model == 0 ? std::string_view() : m_letters[indexOf(model)];
}

std::string ResidueLetters::freeLetter() {
    std::string letter;
    do {
        m_areLetters = m_next < letters.size();
        letter = m_areLetters ? std::string(letters.substr(m_next, 1)) : std::to_string(m_next);
        ++m_next;
    } while (m_used.contains(letter));
    return letter;
}

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
        const ResidueLetters found(atoms, letterInFile);
        if (!found.areLetters())
            report.refuse("residue " + names[residue.name] + ' ' + names[residue.number] +
                              " has more alternative models than there are letters",
                          "accepted are up to 62");
        std::ranges::transform(atoms, result.begin() + static_cast<std::ptrdiff_t>(first),
                               [&found](const SavedAtom& atom) {
                                   return atom.model == 0 ? '\0' : found.of(atom.model).front();
                               });
    }
    return result;
}

} // namespace memory_host
