#include "Relettering.h"

#include "ListedBonds.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <unordered_map>

namespace memory_host {

bool isInReach(const SavedAtom& a, const SavedAtom& b) {
    double squared = 0.0;
    for (std::size_t axis = 0; axis != a.position.size(); ++axis) {
        const double step =
            static_cast<double>(a.position[axis]) - static_cast<double>(b.position[axis]);
        squared += step * step;
    }
    return a.hasPosition && b.hasPosition && squared <= longestListedBond * longestListedBond;
}

bool areApart(char a, char b) {
    return a != b && a != 0 && b != 0;
}

std::string namesOf(const SavedModel& model, const SavedResidue& residue,
                    const std::vector<std::string>& names) {
    std::string text;
    for (const std::uint32_t part :
         {model.chains[residue.chain], residue.number, residue.insertion, residue.name})
        text.append(names[part]) += '\n';
    return text;
}

namespace {

using BondPair = std::pair<std::uint32_t, std::uint32_t>;

// The atoms that have the same names as one of a listed bond: mostly that one alone.
struct Namesakes {
    std::vector<std::uint32_t> atoms; ///< by their letters
    bool haveChanged = false; ///< one is new, or in another alternative location than in the file
};

class Relettering {
public:
    Relettering(SavedModel& model, const std::vector<std::string>& names,
                const std::vector<char>& letters, const KnownBonds& known)
        : m_model(model), m_names(names), m_letters(letters), m_known(known), m_lost(known.lost) {
        std::ranges::sort(m_lost);
    }

    void mark() {
        if (std::ranges::none_of(m_model.bonds, &SavedBond::isListed))
            return;
        const ResidueNumbers changed = changedResidues();
        if (changed.empty()) // mostly
            return;
        findResidues(changed);
        findNamesakes();
        for (SavedBond& bond : m_model.bonds)
            if (isConcerned(bond))
                mark(bond, m_namesakes.at(keyOf(bond.first)), m_namesakes.at(keyOf(bond.second)));
    }

private:
    auto letterOf() const {
        return [this](std::uint32_t atom) { return m_letters[atom]; };
    }
    bool isChanged(std::uint32_t atom) const {
        return m_model.atoms[atom].row == SavedAtom::newRow ||
               m_letters[atom] != m_model.atoms[atom].details.alternative;
    }
    using ResidueNumbers = std::unordered_map<std::string, std::uint32_t>;
    // The residues in which atoms have changed, by their names.
    ResidueNumbers changedResidues() const {
        ResidueNumbers changed;
        for (std::uint32_t i = 0; i != m_model.residues.size(); ++i) {
            std::uint32_t atom = m_model.residues[i].firstAtom;
            const std::uint32_t end = m_model.atomEnd(i);
            while (atom != end && !isChanged(atom))
                ++atom;
            if (atom != end)
                changed.emplace(namesOf(m_model, m_model.residues[i], m_names), i);
        }
        return changed;
    }
    // Residues of the same names are one where a file names atoms.
    void findResidues(const ResidueNumbers& changed) {
        m_residues.resize(m_model.atoms.size());
        m_haveChanged.resize(m_model.residues.size());
        for (std::uint32_t i = 0; i != m_model.residues.size(); ++i) {
            const auto found = changed.find(namesOf(m_model, m_model.residues[i], m_names));
            const std::uint32_t first = found == changed.end() ? i : found->second;
            m_haveChanged[first] = m_haveChanged[first] || found != changed.end();
            std::fill(m_residues.begin() + m_model.residues[i].firstAtom,
                      m_residues.begin() + m_model.atomEnd(i), first);
        }
    }
    bool isConcerned(const SavedBond& bond) const {
        return bond.isListed &&
               (m_haveChanged[m_residues[bond.first]] || m_haveChanged[m_residues[bond.second]]);
    }
    std::uint64_t keyOf(std::uint32_t atom) const {
        return std::uint64_t{m_residues[atom]} << 32 | m_model.atoms[atom].name;
    }
    void findNamesakes() {
        for (const SavedBond& bond : m_model.bonds)
            if (isConcerned(bond))
                for (const std::uint32_t atom : {bond.first, bond.second})
                    m_namesakes[keyOf(atom)];
        for (std::uint32_t i = 0; i != m_model.atoms.size(); ++i)
            if (const auto found = m_namesakes.find(keyOf(i)); found != m_namesakes.end()) {
                found->second.atoms.push_back(i);
                found->second.haveChanged = found->second.haveChanged || isChanged(i);
            }
        for (auto& [key, namesakes] : m_namesakes)
            std::ranges::stable_sort(namesakes.atoms, {}, letterOf());
    }
    // The atom is one of the namesakes.
    bool isAmbiguous(std::uint32_t atom, const Namesakes& namesakes) const {
        const char letter = m_letters[atom];
        const auto next = std::ranges::lower_bound(namesakes.atoms, letter, {}, letterOf()) + 1;
        return next != namesakes.atoms.end() && m_letters[*next] == letter;
    }
    bool areAnyAmbiguous(const Namesakes& namesakes) const {
        return std::ranges::adjacent_find(namesakes.atoms, {}, letterOf()) != namesakes.atoms.end();
    }
    void mark(SavedBond& bond, const Namesakes& first, const Namesakes& second) const {
        bond.isRelettered = first.haveChanged || second.haveChanged;
        if (!bond.isRelettered)
            return;
        bond.isAmbiguous = isAmbiguous(bond.first, first) || isAmbiguous(bond.second, second);
        bond.needsLetter = {areAnyAmbiguous(first), areAnyAmbiguous(second)};
        if (!bond.needsLetter[0] && !bond.needsLetter[1])
            bond.joined = static_cast<std::uint16_t>(std::min<std::size_t>(
                countJoined(bond, first, second), std::numeric_limits<std::uint16_t>::max()));
    }
    // There are no more namesakes than letters.
    std::size_t countJoined(const SavedBond& bond, const Namesakes& first,
                            const Namesakes& second) const {
        std::size_t count = 0;
        for (const std::uint32_t a : first.atoms)
            for (const std::uint32_t b : second.atoms)
                if ((a == bond.first || isChanged(a)) && (b == bond.second || isChanged(b)))
                    count += isJoined(std::minmax(a, b)) ? 1 : 0;
        return count;
    }
    bool isJoined(const BondPair& pair) const {
        return isInReach(m_model.atoms[pair.first], m_model.atoms[pair.second]) &&
               !areApart(m_letters[pair.first], m_letters[pair.second]) &&
               !std::ranges::binary_search(m_known.there, pair) &&
               !std::ranges::binary_search(m_known.again, pair) &&
               !std::ranges::binary_search(m_lost, pair);
    }

    SavedModel& m_model;
    const std::vector<std::string>& m_names;
    const std::vector<char>& m_letters;
    const KnownBonds& m_known;
    std::vector<BondPair> m_lost; ///< ascending
    std::vector<std::uint32_t>
        m_residues;                  ///< by atom: the first one of these names, if any has changed
    std::vector<bool> m_haveChanged; ///< by such a residue
    std::unordered_map<std::uint64_t, Namesakes> m_namesakes; ///< by such a residue and atom's name
};

} // namespace

void markRelettered(SavedModel& model, const std::vector<std::string>& names,
                    const std::vector<char>& letters, const KnownBonds& known) {
    Relettering(model, names, letters, known).mark();
}

} // namespace memory_host
