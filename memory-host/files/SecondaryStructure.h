// Helices and strands of residues some of which are gone.
#pragma once

#include <gemmi/model.hpp>

#include <vector>

namespace memory_host {

/// Brings the ends of helices and strands to the first and last of their residues that are left in
/// the structure's first model, and takes out those of which none is. `before` are the chains that
/// the file has.
void trimSecondaryStructure(gemmi::Structure& structure, const std::vector<gemmi::Chain>& before);

} // namespace memory_host
