// The selection of a composite's children, without reading any of them.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <cstddef>
#include <cstdint>

namespace TAVIK {

struct SelectedChildren {
    /// How many children can be told of.
    static constexpr std::size_t most = 64;

    /// Bit i is what the i-th child, from ChildBegin() on, answers to IsSelected(); bits beyond the
    /// children are 0.
    std::uint64_t marks = 0;
    /// Another number than before whenever children of the composite came or went since.
    std::uint32_t version = 0;
};

/// Tells which children of a composite are selected, where they are at most SelectedChildren::most
/// and none of them is null, a composite or a set. Returns false, and leaves `told` alone, for
/// other composites and for items that are none; a host may do so for any. The cost does not depend
/// on the number of children.
HOST_EXPORT bool GetSelectedChildren(Compound* composite, SelectedChildren& told);

} // namespace TAVIK
