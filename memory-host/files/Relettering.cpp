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

namespace {

using BondPair = std::pair<std::uint32_t, std::uint32_t>;

class Relettering {
public:
    Relettering(SavedModel& model, const std::vector<char>& letters,
                const std::vector<BondPair>& there, const std::vector<BondPair>& again)
        : m_model(model), m_letters(letters), m_there(there), m_again(again) {
        findNamesakes();
    }

    void mark() const {
        for (SavedBond& bond : m_model.bonds) {
            if (!bond.isListed)
                continue;
            const std::vector<std::uint32_t>& first = namesakesOf(bond.first);
            const std::vector<std::uint32_t>& second = namesakesOf(bond.second);
            bond.isRelettered = hasOtherLetter(bond.first) || hasOtherLetter(bond.second) ||
                                !first.empty() || !second.empty();
            if (!first.empty() || !second.empty())
                bond.joined = static_cast<std::uint16_t>(std::min<std::size_t>(
                    countJoined(bond, first, second), std::numeric_limits<std::uint16_t>::max()));
        }
    }

private:
    // By atom of the file: those of its name in its residue that no file has.
    void findNamesakes() {
        for (std::size_t i = 0; i != m_model.residues.size(); ++i) {
            std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> made;
            const std::uint32_t first = m_model.residues[i].firstAtom;
            const std::uint32_t end = m_model.atomEnd(i);
            for (std::uint32_t k = first; k != end; ++k)
                if (m_model.atoms[k].row == SavedAtom::newRow)
                    made[m_model.atoms[k].name].push_back(k);
            for (std::uint32_t k = first; k != end && !made.empty(); ++k)
                if (const auto found = made.find(m_model.atoms[k].name);
                    found != made.end() && m_model.atoms[k].row != SavedAtom::newRow)
                    m_namesakes[k] = found->second;
        }
    }
    const std::vector<std::uint32_t>& namesakesOf(std::uint32_t atom) const {
        static const std::vector<std::uint32_t> noAtoms;
        const auto found = m_namesakes.find(atom);
        return found == m_namesakes.end() ? noAtoms : found->second;
    }
    bool hasOtherLetter(std::uint32_t atom) const {
        return m_letters[atom] != m_model.atoms[atom].details.alternative;
    }
    std::size_t countJoined(const SavedBond& bond, std::vector<std::uint32_t> first,
                            std::vector<std::uint32_t> second) const {
        first.push_back(bond.first);
        second.push_back(bond.second);
        std::size_t count = 0;
        for (const std::uint32_t a : first)
            for (const std::uint32_t b : second)
                count += isJoined(std::minmax(a, b)) ? 1 : 0;
        return count;
    }
    bool isJoined(const BondPair& pair) const {
        return isInReach(m_model.atoms[pair.first], m_model.atoms[pair.second]) &&
               !areApart(m_letters[pair.first], m_letters[pair.second]) &&
               !std::ranges::binary_search(m_there, pair) &&
               !std::ranges::binary_search(m_again, pair);
    }

    SavedModel& m_model;
    const std::vector<char>& m_letters;
    const std::vector<BondPair>& m_there; ///< ascending
    const std::vector<BondPair>& m_again; ///< likewise
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> m_namesakes;
};

} // namespace

void markRelettered(SavedModel& model, const std::vector<char>& letters,
                    const std::vector<BondPair>& there, const std::vector<BondPair>& again) {
    Relettering(model, letters, there, again).mark();
}

} // namespace memory_host
