#include "SecondaryStructure.h"

#include "Ladders.h"
#include "Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace view {

namespace {

using enum SecondaryStructure;

// Helices by the number of residues in their turns.
struct HelixKind {
    std::size_t turn;
    SecondaryStructure letter;
};
constexpr std::array<HelixKind, 3> helixKinds = {{{4, AlphaHelix}, {3, Helix3}, {5, HelixPi}}};

// Whether a pattern gives way to a helix that is assigned after it.
bool givesWay(SecondaryStructure letter, SecondaryStructure helix) {
    return helix == AlphaHelix || (helix == HelixPi && letter == AlphaHelix);
}

constexpr double smallestBend = 70.0 / 180.0 * std::numbers::pi;
const double bendCosine = std::cos(smallestBend);

class Assignment {
public:
    explicit Assignment(std::span<const BackboneResidue> residues)
        : m_residues(residues), m_segments(chainSegments(residues)),
          m_acceptors(hydrogenBonds(residues, m_segments)), m_letters(residues.size(), Coil) {}

    std::vector<SecondaryStructure> run() {
        assignLadders();
        const std::size_t count = m_residues.size();
        std::vector<std::uint8_t> isTurn(count, 0);
        for (const HelixKind& kind : helixKinds) {
            const std::vector<std::uint8_t> starts = turnStarts(kind.turn);
            for (std::size_t i = 0; i < count; ++i)
                if (starts[i])
                    std::fill_n(isTurn.begin() + static_cast<std::ptrdiff_t>(i) + 1, kind.turn - 1,
                                1);
            assignHelices(kind, starts);
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (m_letters[i] == Coil)
                m_letters[i] = isTurn[i] ? Turn : isBend(i) ? Bend : Coil;
        }
        return std::move(m_letters);
    }

private:
    void assignLadders() {
        for (const Ladder& ladder : ladders(m_acceptors, m_segments)) {
            const SecondaryStructure letter = ladder.bridges > 1 ? Strand : Bridge;
            for (const ResidueRange& range : {ladder.first, ladder.second})
                for (std::size_t i = range.from; i <= range.to; ++i)
                    if (m_letters[i] != Strand)
                        m_letters[i] = letter;
        }
    }

    // Whether an n-turn starts at a residue: the N-H of the residue n further on is bonded to its
    // C=O.
    std::vector<std::uint8_t> turnStarts(std::size_t n) const {
        std::vector<std::uint8_t> starts(m_residues.size(), 0);
        for (std::size_t i = 0; i + n < m_residues.size(); ++i)
            starts[i] = m_segments[i] == m_segments[i + n] && isBonded(m_acceptors, i + n, i);
        return starts;
    }

    // Two turns in a row make a helix of the residues within both.
    void assignHelices(const HelixKind& kind, const std::vector<std::uint8_t>& starts) {
        for (std::size_t i = 1; i + kind.turn < m_residues.size(); ++i) {
            if (!starts[i - 1] || !starts[i])
                continue;
            const auto from = m_letters.begin() + static_cast<std::ptrdiff_t>(i);
            const auto to = from + static_cast<std::ptrdiff_t>(kind.turn);
            // A helix that would be cut short by a stronger pattern is none.
            if (std::all_of(from, to, [&](SecondaryStructure letter) {
                    return letter == Coil || letter == kind.letter || givesWay(letter, kind.letter);
                }))
                std::fill(from, to, kind.letter);
        }
    }

    bool isBend(std::size_t i) const {
        if (i < 2 || i + 2 >= m_residues.size() || m_segments[i - 2] != m_segments[i + 2])
            return false;
        const Vector here = vectorOf(m_residues[i].ca);
        const Vector before = here - vectorOf(m_residues[i - 2].ca);
        const Vector after = vectorOf(m_residues[i + 2].ca) - here;
        return dot(before, after) < bendCosine * length(before) * length(after);
    }

    std::span<const BackboneResidue> m_residues;
    std::vector<std::uint32_t> m_segments;
    std::vector<Acceptors> m_acceptors;
    std::vector<SecondaryStructure> m_letters;
};

} // namespace

std::vector<SecondaryStructure> secondaryStructure(std::span<const BackboneResidue> residues) {
    return Assignment(residues).run();
}

} // namespace view
