#include "ResidueRotamers.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace rotamer {

namespace {

using TAVIK::Compound;

// Models have numbers up to this.
constexpr std::size_t mostModels = 65535;
// Å. Models that were made from the same conformation differ by rounding alone.
constexpr double samePlace = 2e-3;
// The farthest atom of a side chain is 7.5 Å from CA, in ARG, and its hydrogens 1 Å more; what two
// atoms of proteins, nucleic acids and ligands need is less than the rest.
static_assert(ResidueRotamers::reach > 8.5 + 4.4);

QString text(std::string_view latin1) {
    return QString::fromLatin1(latin1.data(), static_cast<qsizetype>(latin1.size()));
}

} // namespace

ResidueRotamers::ResidueRotamers(TAVIK::Residue* residue)
    : m_residue(residue), m_conformation(readConformation(residue)),
      m_sideChain(sideChainOf(m_conformation)), m_models(residue, m_conformation, m_sideChain) {
    for (const Rotamer& rotamer : m_sideChain.rotamers())
        if (!isThere(m_sideChain.turned(rotamer)))
            m_candidates.push_back({&rotamer});
    for (const ConformationAtom& atom : m_conformation.atoms) {
        m_balls.push_back(ballOf(*atom.item, atom.position));
        std::ranges::copy(bondedTo(*atom.item), std::back_inserter(m_bonded));
    }
}

// Whether some model has the moved atoms at these places.
bool ResidueRotamers::isThere(const std::vector<Point>& points) const {
    return std::ranges::any_of(m_conformation.later, [&](const auto& later) {
        for (std::size_t i = 0; i != points.size(); ++i) {
            if (!m_sideChain.isTurned(i))
                continue;
            const auto found = later.second.find(m_conformation.atoms[i].name);
            if (found == later.second.end())
                return false;
            for (std::size_t axis = 0; axis != 3; ++axis)
                if (!(std::abs(found->second[axis] - points[i][axis]) <= samePlace))
                    return false;
        }
        return true;
    });
}

QString ResidueRotamers::fault() const {
    if (!m_conformation.fault.empty())
        return text(m_conformation.fault);
    if (!m_sideChain.fault().empty())
        return text(m_sideChain.fault());
    if (const Compound* const anchor = m_models.anchor())
        return "its side chain is bonded to " + text(anchor->GetFQName());
    if (m_candidates.empty())
        return QStringLiteral("they are among its models already");
    if (m_conformation.lastModel() + count() > mostModels)
        return QStringLiteral("it has as many models as there can be");
    return {};
}

const Point& ResidueRotamers::centre() const {
    return std::ranges::find(m_conformation.atoms, "CA", &ConformationAtom::name)->position;
}

void ResidueRotamers::judge(const NearAtoms& near) {
    auto neighbours = near.neighbours(centre(), m_residue);
    std::erase_if(neighbours, [this](const NearAtoms::Neighbour& neighbour) {
        return std::ranges::find(m_bonded, neighbour.atom) != m_bonded.end();
    });
    std::vector<Ball> others;
    for (const NearAtoms::Neighbour& neighbour : neighbours)
        others.push_back(neighbour.ball);
    for (Candidate& candidate : m_candidates) {
        const std::vector<Point> points = m_sideChain.turned(*candidate.rotamer);
        std::vector<Ball> balls;
        for (std::size_t i = 0; i != points.size(); ++i)
            if (m_sideChain.isTurned(i)) {
                balls.push_back(m_balls[i]);
                balls.back().position = points[i];
            }
        candidate.clashes = findClashes(balls, others);
        if (candidate.clashes.count > 0)
            candidate.worst = neighbours[candidate.clashes.other].atom;
    }
}

void ResidueRotamers::add() {
    std::vector<const Rotamer*> rotamers;
    for (const Candidate& candidate : m_candidates)
        rotamers.push_back(candidate.rotamer);
    m_models.add(rotamers, firstNew());
}

// "model 4, mt (59 %), with 2 clashes, the worst of 0.62 Å with /1cbs/A/Groups/PHE 65/CZ"
QString ResidueRotamers::told(const Candidate& candidate) const {
    const auto place = static_cast<unsigned int>(&candidate - m_candidates.data());
    const QString line = QStringLiteral("model %1, %2 (%3 %), with ")
                             .arg(firstNew() + place)
                             .arg(text(candidate.rotamer->name))
                             .arg(candidate.rotamer->percent);
    const Clashes& clashes = candidate.clashes;
    if (clashes.count == 0)
        return line + "no clash";
    const QString worst = QStringLiteral("of %1 Å with %2")
                              .arg(clashes.worst, 0, 'f', 2)
                              .arg(text(candidate.worst->GetFQName()));
    return line + (clashes.count == 1
                       ? "a clash " + worst
                       : QStringLiteral("%1 clashes, the worst ").arg(clashes.count) + worst);
}

QString ResidueRotamers::nearest() const {
    const auto apart = [this](const Rotamer& rotamer) { return m_sideChain.deviation(rotamer); };
    const auto found = std::ranges::min_element(m_sideChain.rotamers(), {}, apart);
    return QStringLiteral("model %1 is %2° from %3")
        .arg(m_conformation.firstModel)
        .arg(std::round(apart(*found)))
        .arg(text(found->name));
}

QString ResidueRotamers::report() const {
    const auto badness = [](const Candidate& candidate) {
        return std::tuple(candidate.clashes.count, candidate.clashes.worst,
                          -candidate.rotamer->percent);
    };
    const QString which =
        count() == 1
            ? QStringLiteral("A rotamer of %1 is its model %2").arg(text(name())).arg(firstNew())
            : QStringLiteral("%1 rotamers of %2 are its models %3 to %4")
                  .arg(count())
                  .arg(text(name()))
                  .arg(firstNew())
                  .arg(firstNew() + count() - 1);
    return which + "; " + nearest() +
           ". Best: " + told(*std::ranges::min_element(m_candidates, {}, badness)) + ".";
}

QString ResidueRotamers::details() const {
    QString line = "Rotamers of " + text(m_residue->GetFQName()) + ": ";
    for (const Candidate& candidate : m_candidates)
        line += (&candidate == m_candidates.data() ? QString() : QStringLiteral("; ")) +
                told(candidate);
    return line;
}

} // namespace rotamer
