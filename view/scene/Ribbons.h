// The ribbons of what was read, made again only where they changed.
#pragma once

#include "Contents.h"
#include "Styles.h"
#include "ribbon/Ribbon.h"

#include <array>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <vector>

namespace view {

/// The atom that a ribbon passes in a residue of a polymer: CA of an amino acid, P of a nucleotide,
/// or C4' where there is none; of alternative atoms the one that is shown. noAtom without any.
std::uint32_t guideOf(const Contents& contents, const Marks& marks, std::size_t residue);

/// For one thread at a time.
class Ribbons {
public:
    /// A mesh for each chain, in the colours and with the ids of the atoms that it passes: CA of
    /// amino acids, P of nucleotides, or C4' where there is none. A residue is shown where that
    /// atom is. Of alternative atoms the shown ones count. Null after a stop request; what was made
    /// until then need not be made again.
    const std::vector<std::shared_ptr<const Mesh>>*
    meshes(const std::shared_ptr<const Contents>& contents, const Marks& marks,
           const Styles& styles, const std::stop_token& stop = {});

private:
    /// The atoms that decide on a residue's structure: N, CA, C, O; their indices.
    using Backbone = std::array<std::uint32_t, 4>;

    // These return false after a stop request.
    bool renew(const std::shared_ptr<const Contents>& contents, const Marks& marks,
               const Styles& styles, const RibbonStyle& style, const std::stop_token& stop);
    bool assign(const Contents& contents, const std::vector<Backbone>& backbones,
                const std::stop_token& stop);
    bool makeMeshes(const Marks& marks, const Styles& styles, const std::stop_token& stop);

    std::shared_ptr<const Contents> m_contents;
    std::vector<Backbone> m_backbones;            ///< of which the structures are
    std::vector<SecondaryStructure> m_structures; ///< one a residue of the contents
    RibbonStyle m_style;
    std::vector<std::vector<RibbonResidue>> m_chains; ///< of which the meshes are, one by one
    std::vector<std::shared_ptr<const Mesh>> m_meshes;
};

} // namespace view
