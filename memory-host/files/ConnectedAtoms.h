// Which atoms the connections of a file name, whatever letters of alternative locations they get.
#pragma once

#include "SavedTables.h"

#include <gemmi/model.hpp>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace memory_host {

/// Finds the atoms of connections among those that are saved.
class ConnectedAtoms {
public:
    /// The first model of the structure has the atoms as they are saved. Their serial numbers are
    /// their indices in `model`, plus 1.
    ConnectedAtoms(const gemmi::Structure& structure, const SavedModel& model);

    /// Indices of the atoms that are connected: one pair, unless the connection names an atom
    /// without its alternative location. Those that the file does not have are none of them.
    std::vector<std::pair<std::uint32_t, std::uint32_t>>
    pairsOf(const gemmi::Connection& connection) const;

private:
    char letterInFile(std::uint32_t atom) const { return m_model.atoms[atom].details.alternative; }
    std::vector<std::uint32_t> named(const gemmi::AtomAddress& address) const;

    const SavedModel& m_model;
    std::unordered_map<std::string, const gemmi::Residue*> m_residues; ///< that connections name
};

} // namespace memory_host
