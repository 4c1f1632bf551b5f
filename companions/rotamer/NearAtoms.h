// The atoms of the data space as the side chains of many residues meet them.
#pragma once

#include "Kinds.h"
#include "sidechain/Clashes.h"

#include <array>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace rotamer {

/// The ball of an atom: its radius by the element; its role in hydrogen bonds by the element and,
/// for a hydrogen, by what it is bonded to.
Ball ballOf(const TAVIK::Atom& atom, const Point& position);

/// The atoms that `atom` is bonded to.
std::vector<const TAVIK::Compound*> bondedTo(const TAVIK::Atom& atom);

/// The atoms near some points, with what side chains need to know of them, read from the items
/// once. Valid until the data change. What is const touches no item.
class NearAtoms {
public:
    /// What side chains may clash with: items are told apart by their addresses alone.
    struct Neighbour {
        const TAVIK::Compound* atom = nullptr;
        Ball ball;
    };

    /// Reads the atoms within `radius`, in Å, of each of these points.
    NearAtoms(std::span<const Point> points, double radius);

    /// The atoms within the radius of one of the points in the same top-level item as `residue`
    /// that a side chain may clash with: not those of the residue itself, nor waters, which give
    /// way; and of residues with alternative models, those of the active one.
    std::vector<Neighbour> neighbours(const Point& point, const TAVIK::Compound* residue) const;
    /// All atoms within the radius of one of the points.
    std::vector<const TAVIK::Compound*> within(const Point& point) const;

private:
    using Cell = std::array<std::int32_t, 3>;
    struct CellHash {
        std::size_t operator()(const Cell& cell) const;
    };
    struct Place {
        std::array<float, 3> position;
        TAVIK::Compound* atom;
    };
    struct Description {
        const TAVIK::Compound* residue = nullptr;  ///< null where there is none
        const TAVIK::Compound* topLevel = nullptr; ///< null: not described
        float radius = 0;
        BondRole role = BondRole::None;
        bool isObstacle = false;
    };
    /// What is the same for all atoms of a residue.
    struct Around {
        const TAVIK::Compound* topLevel = nullptr;
        unsigned int activeModel = 0;
        bool isWater = false;
    };

    template <class Function> void forEachCell(const Point& point, const Function& function) const;
    template <class Function> void forEachNear(const Point& point, const Function& function) const;
    void readPlaces(std::span<const Point> points);
    Description described(const Place& place);
    const Around& around(const TAVIK::Compound* residue, const TAVIK::Compound* atom);

    double m_radius;
    std::vector<Place> m_places; ///< by cell
    std::unordered_map<Cell, std::pair<std::uint32_t, std::uint32_t>, CellHash> m_cells;
    std::vector<Description> m_descriptions; ///< one a place
    std::unordered_map<const TAVIK::Compound*, Around> m_residues;
};

} // namespace rotamer
