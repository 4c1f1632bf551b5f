// Reads what can be found, in pieces.
#pragma once

#include "AtomNameWalk.h"
#include "ByClass.h"
#include "FindIndex.h"
#include "FindPositions.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Makes the index of the data space and takes, on the way, the positions, if these are asked for.
///
/// Items may be changed and made between two pieces: then the index may be of no one time, and is
/// to be read again. After an item was destroyed a reading may only be destroyed, too. GUI thread.
class FindIndexReading : private TAVIK::AtomNameVisitor {
public:
    /// Of about so many atoms and residues, if that is known. Takes positions if `values` are
    /// given: those that were read before.
    FindIndexReading(std::size_t atoms, std::size_t residues, const FindValues* values);
    FindIndexReading(const FindIndexReading&) = delete;
    FindIndexReading& operator=(const FindIndexReading&) = delete;
    ~FindIndexReading() override = default;

    /// Reads about so many items more; returns whether there may be others.
    bool advance(std::size_t items);
    /// The positions that were taken are no longer right.
    void dropPositions() { m_positions.reset(); }
    /// With positions: those, after the last piece.
    std::optional<FindPositions>& positions() { return m_positions; }
    /// The index, after the last piece.
    std::shared_ptr<const FindIndex> take() { return std::move(m_index); }

private:
    enum class Role : std::uint8_t { Residue, Chain, Group, Other };
    /// What is around the next atom.
    struct Level {
        std::size_t length;  ///< of the path before it
        std::uint32_t chain; ///< before it
    };
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    static Role roleOf(const TAVIK::Compound* item);

    bool Enter(TAVIK::Compound* composite, std::string_view part) override;
    void Leave() override;
    void Visit(TAVIK::Compound* atom, std::string_view name) override;
    void takePositions();
    std::uint32_t placeOf(std::string_view path);
    FindIndex::Residue& add(TAVIK::Compound* item, std::string_view place, std::string_view label);
    void beginResidue(TAVIK::Compound* item, std::string_view label);
    void endResidue();
    void beginLoose();
    FindIndex::Kind kindOf(TAVIK::Compound* item, std::string_view name);

    std::shared_ptr<FindIndex> m_index;
    std::optional<FindPositions> m_positions;
    ByClass<Role> m_roles;
    std::vector<Level> m_levels; ///< around the last atom
    std::string m_path;
    std::uint32_t m_chain = none;
    std::uint32_t m_place = none;
    std::size_t m_residueLevel = 0; ///< of the residue around, from 1; 0 for none
    TAVIK::AtomNameWalk m_walk;
};

} // namespace workbench
