// Residues as gemmi knows them.
#pragma once

#include <gemmi/model.hpp>

#include <string>

namespace memory_host {

/// What tells a residue from others, as far as files name it.
inline std::string residueKey(const std::string& chain, const gemmi::ResidueId& residue) {
    return chain + ' ' + residue.str();
}

/// Whether gemmi can write the number of a residue.
inline bool isWritable(const gemmi::SeqId& id) {
    return id.num.has_value() && *id.num > -1000;
}

} // namespace memory_host
