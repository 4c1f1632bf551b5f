#include "HydrogenBonds.h"

#include "Vectors.h"
#include "render/Camera.h"

#include <algorithm>
#include <cmath>

namespace view {

namespace {

constexpr double energyPerCharges = 332.0;  // kcal/mol Å, of two electrons
constexpr double chargeOfCarbonyl = 0.42;   // electrons, at C and, negative, at O
constexpr double chargeOfAmide = 0.20;      // electrons, at H and, negative, at N
constexpr double highestBondEnergy = -0.5;  // kcal/mol
constexpr double lowestBondEnergy = -9.9;   // kcal/mol
constexpr double shortestDistance = 0.5;    // Å, between two atoms
constexpr double farthestAlphaCarbon = 9.0; // Å, between the two residues of a bond

bool isComplete(const BackboneResidue& residue) {
    return isPlace(residue.n) && isPlace(residue.ca) && isPlace(residue.c) && isPlace(residue.o);
}

double energy(const Vector& n, const Vector& h, const Vector& o, const Vector& c) {
    const double on = distance(o, n);
    const double ch = distance(c, h);
    const double oh = distance(o, h);
    const double cn = distance(c, n);
    if (std::min({on, ch, oh, cn}) < shortestDistance)
        return lowestBondEnergy;
    const double charges = chargeOfCarbonyl * chargeOfAmide * energyPerCharges;
    return std::max(charges * (1 / on + 1 / ch - 1 / oh - 1 / cn), lowestBondEnergy);
}

// Residues sorted by the cell of their CA. A key has 21 bits for each axis, x lowest, so that the
// cells at x - 1, x and x + 1 of one row follow each other.
struct PlacedResidue {
    std::uint64_t cell;
    std::uint32_t residue;
};
constexpr std::uint64_t nextInX = 1;
constexpr std::uint64_t nextInY = std::uint64_t(1) << 21;
constexpr std::uint64_t nextInZ = std::uint64_t(1) << 42;
constexpr double cellLength = 10.0; // Å; longer than the distance of two neighbours
// The smallest amino acid takes up 60 Å³, so that 17 fill a cell. With a limit the search is
// linear.
constexpr std::size_t mostInCell = 64;

std::uint64_t cellOf(const Point& place) {
    constexpr double middle = 1 << 20;
    static_assert(farthest / cellLength + 2 < middle && cellLength > farthestAlphaCarbon);
    std::uint64_t key = 0;
    for (std::size_t i = 3; i-- > 0;) {
        const double along = std::floor(place[i] / cellLength) + middle;
        key = key << 21 | static_cast<std::uint64_t>(along);
    }
    return key;
}

std::vector<PlacedResidue> sortedByCell(std::span<const BackboneResidue> residues) {
    std::vector<PlacedResidue> placed;
    placed.reserve(residues.size());
    for (std::uint32_t i = 0; i < residues.size(); ++i)
        if (isComplete(residues[i]))
            placed.push_back({cellOf(residues[i].ca), i});
    std::sort(placed.begin(), placed.end(), [](const PlacedResidue& a, const PlacedResidue& b) {
        return a.cell != b.cell ? a.cell < b.cell : a.residue < b.residue;
    });
    auto kept = placed.begin();
    for (auto from = placed.begin(); from != placed.end();) {
        const auto to = std::find_if(from, placed.end(), [cell = from->cell](const auto& other) {
            return other.cell != cell;
        });
        if (static_cast<std::size_t>(to - from) <= mostInCell)
            kept = std::copy(from, to, kept);
        from = to;
    }
    placed.erase(kept, placed.end());
    return placed;
}

// Calls `visit` once for each two residues that are in the same cell or in adjacent ones.
template <class Visit>
void visitNeighbours(const std::vector<PlacedResidue>& placed, const Visit& visit) {
    // The rows of three cells around a cell that come after it. They move on as the cell does, so
    // that each needs one walk over all residues.
    struct Row {
        std::uint64_t offset; // from a cell to the middle of the row
        std::size_t first;    // the first residue in the row, or after it
    };
    std::array<Row, 4> rows = {
        {{nextInY, 0}, {nextInZ - nextInY, 0}, {nextInZ, 0}, {nextInZ + nextInY, 0}}};
    for (std::size_t i = 0; i < placed.size(); ++i) {
        const std::uint64_t cell = placed[i].cell;
        for (std::size_t j = i + 1; j < placed.size() && placed[j].cell <= cell + nextInX; ++j)
            visit(placed[i].residue, placed[j].residue);
        for (Row& row : rows) {
            const std::uint64_t middle = cell + row.offset;
            while (row.first < placed.size() && placed[row.first].cell < middle - nextInX)
                ++row.first;
            for (std::size_t j = row.first; j < placed.size() && placed[j].cell <= middle + nextInX;
                 ++j)
                visit(placed[i].residue, placed[j].residue);
        }
    }
}

struct Bonds {
    Acceptors acceptors = {noResidue, noResidue};
    std::array<double, 2> energies = {highestBondEnergy, highestBondEnergy};

    // Of equal energies the residue that comes first, whatever the order of the search.
    void offer(std::uint32_t acceptor, double energy) {
        for (std::size_t i = 0; i < acceptors.size(); ++i) {
            if (energy < energies[i] ||
                (energy == energies[i] && acceptor < acceptors[i] && acceptors[i] != noResidue)) {
                std::swap(acceptor, acceptors[i]);
                std::swap(energy, energies[i]);
            }
        }
    }
};

} // namespace

double hydrogenBondEnergy(const Point& n, const Point& h, const Point& o, const Point& c) {
    return energy(vectorOf(n), vectorOf(h), vectorOf(o), vectorOf(c));
}

std::vector<std::uint32_t> chainSegments(std::span<const BackboneResidue> residues) {
    std::vector<std::uint32_t> segments(residues.size());
    bool isPreviousComplete = !residues.empty() && isComplete(residues[0]);
    for (std::size_t i = 1; i < residues.size(); ++i) {
        const bool isThisComplete = isComplete(residues[i]);
        const bool isLinked =
            isPreviousComplete && isThisComplete && residues[i].isLinkedToPrevious;
        segments[i] = segments[i - 1] + (isLinked ? 0 : 1);
        isPreviousComplete = isThisComplete;
    }
    return segments;
}

std::vector<Acceptors> hydrogenBonds(std::span<const BackboneResidue> residues,
                                     std::span<const std::uint32_t> segments) {
    struct Amide {
        Vector h;
        bool isThere = false;
    };
    std::vector<Amide> amides(residues.size());
    for (std::size_t i = 1; i < residues.size(); ++i) {
        if (segments[i] != segments[i - 1] || residues[i].isProline)
            continue;
        const Vector fromOxygen = vectorOf(residues[i - 1].c) - vectorOf(residues[i - 1].o);
        const double bond = length(fromOxygen);
        if (bond > 0)
            amides[i] = {vectorOf(residues[i].n) + fromOxygen * (1 / bond), true};
    }

    std::vector<Bonds> bonds(residues.size());
    const auto offer = [&](std::uint32_t donor, std::uint32_t acceptor) {
        // The C=O before N is in the same peptide bond.
        if (!amides[donor].isThere || acceptor + 1 == donor)
            return;
        bonds[donor].offer(acceptor,
                           energy(vectorOf(residues[donor].n), amides[donor].h,
                                  vectorOf(residues[acceptor].o), vectorOf(residues[acceptor].c)));
    };
    visitNeighbours(sortedByCell(residues), [&](std::uint32_t a, std::uint32_t b) {
        if (distance(vectorOf(residues[a].ca), vectorOf(residues[b].ca)) >= farthestAlphaCarbon)
            return;
        offer(a, b);
        offer(b, a);
    });

    std::vector<Acceptors> acceptors;
    acceptors.reserve(bonds.size());
    for (const Bonds& bond : bonds)
        acceptors.push_back(bond.acceptors);
    return acceptors;
}

} // namespace view
