#include "NearAtoms.h"

#include "ActiveModel.h"
#include "Ancestry.h"
#include "AtomBonds.h"
#include "Conformation.h"
#include "ManyAtoms.h"
#include "Space.h"
#include "VanDerWaals.h"
#include "Waters.h"

#include <algorithm>
#include <cmath>

namespace rotamer {

namespace {

using TAVIK::Compound;

// Å; about what is near a side chain.
constexpr double side = 8;
// Beyond it all is one cell, whose atoms are told apart by distance.
constexpr double farthest = 1e6;

std::array<std::int32_t, 3> cellOf(double x, double y, double z) {
    const auto index = [](double v) {
        return static_cast<std::int32_t>(std::floor(std::clamp(v, -farthest, farthest) / side));
    };
    return {index(x), index(y), index(z)};
}

bool isPolar(std::string_view element) {
    return element == "N" || element == "O";
}

const Compound* topLevelOf(const Compound* item) {
    const Compound* const space = TAVIK::Space::instance();
    for (const Compound* parent = item; parent && parent != space;
         parent = TAVIK::GetParent(parent))
        item = parent;
    return item;
}

} // namespace

std::vector<const Compound*> bondedTo(const TAVIK::Atom& atom) {
    std::vector<TAVIK::Bond*> bonds;
    TAVIK::GetBonds(&atom, bonds);
    std::vector<const Compound*> others;
    for (TAVIK::Bond* bond : bonds) {
        Compound** const ends = bond->PartBegin();
        others.push_back(ends[ends[0] == &atom ? 1 : 0]);
    }
    return others;
}

Ball ballOf(const TAVIK::Atom& atom, const Point& position) {
    const std::string element = atom.GetType();
    BondRole role = isPolar(element) ? BondRole::Heavy : BondRole::None;
    if (element == "H" || element == "D")
        for (const Compound* other : bondedTo(atom))
            if (isPolar(other->GetType()))
                role = BondRole::Hydrogen;
    return {position, vanDerWaalsRadius(atomicNumber(element)), role};
}

std::size_t NearAtoms::CellHash::operator()(const Cell& cell) const {
    std::size_t hash = 0;
    for (const std::int32_t part : cell)
        hash = hash * 0x9E3779B97F4A7C15U + static_cast<std::uint32_t>(part);
    return hash ^ hash >> 32U;
}

NearAtoms::NearAtoms(std::span<const Point> points, double radius) : m_radius(radius) {
    readPlaces(points);
    m_descriptions.resize(m_places.size());
    for (const Point& point : points)
        forEachNear(point, [this](std::uint32_t i) {
            if (!m_descriptions[i].topLevel)
                m_descriptions[i] = described(m_places[i]);
        });
}

template <class Function>
void NearAtoms::forEachCell(const Point& point, const Function& function) const {
    const Cell low = cellOf(point[0] - m_radius, point[1] - m_radius, point[2] - m_radius);
    const Cell high = cellOf(point[0] + m_radius, point[1] + m_radius, point[2] + m_radius);
    for (std::int32_t x = low[0]; x <= high[0]; ++x)
        for (std::int32_t y = low[1]; y <= high[1]; ++y)
            for (std::int32_t z = low[2]; z <= high[2]; ++z)
                function(Cell{x, y, z});
}

// Only atoms in the cells around the points are kept: few of a large structure are near some
// residues.
void NearAtoms::readPlaces(std::span<const Point> points) {
    for (const Point& point : points)
        forEachCell(point, [this](const Cell& cell) { m_cells.try_emplace(cell); });
    struct Reader : TAVIK::AtomPlaceVisitor {
        explicit Reader(NearAtoms& all) : near(all) {}
        void Visit(std::span<Compound* const> atoms,
                   std::span<const TAVIK::AtomPlace> found) override {
            for (std::size_t i = 0; i != atoms.size(); ++i) {
                const auto& at = found[i].position;
                if (found[i].isValid && near.m_cells.contains(cellOf(at[0], at[1], at[2])))
                    near.m_places.push_back({at, atoms[i]});
            }
        }
        NearAtoms& near;
    };
    Reader reader(*this);
    for (const bool selected : {true, false})
        TAVIK::VisitAtomPlaces(TAVIK::Space::instance(), selected, reader);
    const auto cell = [](const Place& place) {
        return cellOf(place.position[0], place.position[1], place.position[2]);
    };
    std::ranges::sort(m_places, {}, cell);
    for (std::size_t i = 0; i != m_places.size(); ++i) {
        const auto at = static_cast<std::uint32_t>(i);
        auto& [first, last] = m_cells.find(cell(m_places[i]))->second;
        first = last == 0 ? at : first;
        last = at + 1;
    }
}

template <class Function>
void NearAtoms::forEachNear(const Point& point, const Function& function) const {
    const auto square = [](double v) { return v * v; };
    forEachCell(point, [&](const Cell& cell) {
        const auto range = m_cells.find(cell);
        if (range == m_cells.end())
            return;
        for (std::uint32_t i = range->second.first; i != range->second.second; ++i) {
            const auto& place = m_places[i].position;
            if (square(place[0] - point[0]) + square(place[1] - point[1]) +
                    square(place[2] - point[2]) <=
                square(m_radius))
                function(i);
        }
    });
}

std::vector<const Compound*> NearAtoms::within(const Point& point) const {
    std::vector<const Compound*> found;
    forEachNear(point, [&](std::uint32_t i) { found.push_back(m_places[i].atom); });
    return found;
}

const NearAtoms::Around& NearAtoms::around(const Compound* residue, const Compound* atom) {
    const auto [found, isNew] = m_residues.try_emplace(residue ? residue : atom);
    Around& result = found->second;
    if (!isNew)
        return result;
    const std::string name = residue ? residue->GetName() : std::string();
    result.topLevel = topLevelOf(found->first);
    result.activeModel = TAVIK::GetActiveModel(residue);
    result.isWater = TAVIK::isWater(std::string_view(name).substr(0, name.find(' ')));
    return result;
}

NearAtoms::Description NearAtoms::described(const Place& place) {
    const Compound* const residue = residueOf(place.atom);
    const Around& common = around(residue, place.atom);
    Description result{.residue = residue, .topLevel = common.topLevel};
    const auto* const atom = dynamic_cast<const TAVIK::Atom*>(place.atom);
    if (!atom || common.isWater)
        return result;
    const unsigned int model = modelOf(*atom);
    result.isObstacle = model == 0 || !residue || model == common.activeModel;
    const Ball ball = ballOf(*atom, {});
    result.radius = static_cast<float>(ball.radius);
    result.role = ball.role;
    return result;
}

std::vector<NearAtoms::Neighbour> NearAtoms::neighbours(const Point& point,
                                                        const Compound* residue) const {
    std::vector<Neighbour> found;
    const auto own = m_residues.find(residue);
    if (own == m_residues.end())
        return found;
    forEachNear(point, [&](std::uint32_t i) {
        const Description& other = m_descriptions[i];
        if (!other.isObstacle || other.residue == residue || other.topLevel != own->second.topLevel)
            return;
        const auto& place = m_places[i].position;
        found.push_back(
            {m_places[i].atom, {{place[0], place[1], place[2]}, other.radius, other.role}});
    });
    return found;
}

} // namespace rotamer
